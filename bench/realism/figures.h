#pragma once

// What a spectator, or an engineer, would say of flown paths: figures by stage of flight, over many flights.

#include "bench/realism/play.h"
#include "tools/measureflights/line.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kst::bench {

/// The largest value seen, and where.
struct Worst {
    double value = 0.0;
    std::string where;

    void note(double candidate, const std::string& flight, double at);
};

struct StageFigures {
    double seconds = 0.0;
    std::vector<double> fromLineM;
    std::vector<double> timeOffS;
    Worst lead; ///< seconds
    Worst lag;
    Worst overDrift; ///< beyond the drift limit of the moment, seconds
    Worst fromLine;
    Worst step;      ///< against what the speed explains
    Worst turn;      ///< degrees per second
    Worst turnShare; ///< of the size class's limit, as are the next two
    Worst pitchShare;
    Worst bankShare;
    Worst below; ///< feet below the ground
    double belowSeconds = 0.0;
    int reversals = 0;
    std::string lastReversal;

    void noteReversal(const std::string& flight, double at);
};

/// A line for each of the largest values of a stage.
std::string worstOf(std::string_view stageName, const StageFigures& figures);

struct Touchdown {
    std::string flight;
    double at = 0.0;
    double verticalFpm = 0.0;
    double fromAxisM = -1.0; ///< below 0 where the recording shows no axis
    bool approached = false; ///< otherwise the leg that ends on the ground began before the approach did

    bool gentle() const;
};

struct Figures {
    std::array<StageFigures, stageCount> stages;
    std::vector<Touchdown> touchdowns;
    int liftOffs = 0;
    std::vector<std::size_t> reversals; ///< samples at which one flight turned back

    void add(const std::string& flight, const PlayedAircraft& played, const std::vector<Sample>& samples);
};

/// Tells where successive ways turn back on themselves.
class WayWatch {
public:
    /// The way of this second; true when it turns back on that of the last one. `linked`: nothing interrupts
    /// it.
    bool turnsBack(LatLon from, LatLon to, bool linked);

private:
    double lastWay_ = 0.0;
    bool moved_ = false;
};

/// Long silences of the feed: what is told after one is not held against the flight, nor what it does for a
/// while after.
class Silences {
public:
    explicit Silences(const Line& line);
    /// Whether it is silent there, or was shortly before.
    bool at(double lineTime) const;

private:
    std::vector<std::pair<double, double>> times_;
};

/// Where on the recorded line the flight was at one moment.
struct JudgedPlace {
    const Sample* sample = nullptr;
    tool::OnLine place;
    /// Moving along the line: what it is early or late can be told.
    bool timed() const;
    /// Not on its way back to the line, which may cross it anywhere.
    bool onLine() const;
};

/// Each half second of `samples` for which the recording tells where the flight should be.
std::vector<JudgedPlace> judgedPlaces(const PlayedAircraft& played, const std::vector<Sample>& samples);

/// Seconds beyond the drift limit of the moment; below 0 within it.
double beyondDriftLimit(const JudgedPlace& judged);

/// Turn of the nose on the ground between two frames, in shares of the fastest of the size class.
double groundTurnShare(const PlayedAircraft& played, const Sample& a, const Sample& b);

/// What of a step the speed does not explain any more.
inline constexpr double longestStep = 1.5;

/// The step between two frames against what the speed explains: the highest that is told or shown at that
/// time. 0 where there is none to judge: between two objects, or next to no movement.
double stepRatio(const PlayedAircraft& played, const Sample& a, const Sample& b);

/// How badly a flight flies, to find the worst: its 95th percentile of the distance from the line, metres,
/// and 100 for each step or touchdown beyond its bounds, time in the ground or reversal.
double badness(const Figures& figures);

/// The table of one set of figures, beside those of the ideal aircraft.
std::string tableOf(const Figures& flown, const Figures& ideal);

} // namespace kst::bench
