#pragma once

// An airport of a few stands in virtual time, what its aircraft report, and what a spectator sees of them.

#include "model/aircraft.h"
#include "scenario/scenarioworld.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kst::test {

inline constexpr LatLon zurich{47.4647, 8.5492};
inline constexpr double zurichFt = 1416.0;
/// The first target of a story.
inline constexpr std::uint32_t firstHexid = 20001;
/// Half the span of an A320.
inline constexpr double halfSpanM = 17.9;
/// Three times the rate of the size class, and rounding.
inline constexpr double fastestTurn = 3.001;

/// The largest turn in one tick of every object on the ground, in rates of its size class.
class TurnWatch {
public:
    void look();
    double largest() const { return largest_; }

private:
    std::map<std::uint32_t, double> headings_; ///< by object
    double largest_ = 0.0;
};

/// Looks at the simulator's aircraft, the user's too, ten times a second.
class Spectator {
public:
    void look(const standin::World& world);
    /// How near to each other any two came; huge if there never were two.
    double closestM() const { return closestM_; }
    /// The fastest that an aircraft on the ground moved, once the program had taken it over.
    double fastestKt() const { return fastestKt_; }
    /// The share of their way on the ground that they went more sideways than ahead or back.
    double sidewaysShare() const { return sidewaysM_ / std::max(wayM_, 1.0); }

private:
    double closestM_ = 1e9;
    struct Seen {
        double atSeconds;
        LatLon place;
    };
    void watchWay(const Seen& last, const standin::Aircraft& aircraft, double atSeconds);

    std::map<std::uint32_t, Seen> last_;
    double fastestKt_ = 0.0;
    double wayM_ = 0.0;
    double sidewaysM_ = 0.0;
    int calls_ = 0;
};

/// What one A320 reports, put together piece by piece, a report each three seconds.
class Way {
public:
    explicit Way(std::string_view callsign = "SWR100", std::uint32_t hexid = firstHexid);
    Way& aircraft(std::string_view type, std::string_view registration);
    Way& at(LatLon place, double altFt = 0.0);
    Way& nose(double headingDeg);
    /// Silence.
    Way& pause(double seconds);
    Way& stand(double seconds);
    Way& move(double bearingDeg, double metres, double kt);
    /// Flies on at this speed, down or up to this altitude.
    Way& fly(double bearingDeg, double metres, double kt, double toFt);
    LatLon place() const { return report_.position; }
    double seconds() const { return report_.at; }
    std::vector<standin::TrafficReport> reports() const { return reports_; }

private:
    Way& report(double seconds, double bearingDeg, double metres, double toFt);

    standin::TrafficReport report_;
    std::vector<standin::TrafficReport> reports_;
};

/// The traffic of all these ways.
std::unique_ptr<standin::TrafficSource> traffic(const std::vector<Way>& ways);

/// One stand of radius 20 m, A1, that looks north; a user in the air nearby unless told.
class Apron {
public:
    explicit Apron(const ScenarioOptions& options = {.user = {47.50, 8.55}, .userAltFt = 8000.0});

    /// Returns the stand's number.
    std::uint32_t addStand(std::string_view id, LatLon place, double radiusM = 20.0);
    /// A static A320 of this flight is to stand there.
    void park(std::uint32_t sid, const std::string& callsign, const std::string& registration = {});
    /// Plays so many seconds. Whether the first target is there then.
    bool play(double seconds);
    const LiveAc& first() const;
    double metresFrom(LatLon place) const;
    double degreesOff(double headingDeg) const;
    /// The tails of the simulator's aircraft within 15 m of this place, with blanks between.
    std::string standingAt(LatLon place);
    bool shows(const std::string& tail) { return world.simulator().findTail(tail) != nullptr; }

    ScenarioWorld world;
    TurnWatch turns;
    Spectator spectator;
    bool pushed = false; ///< the first target was pushed back
};

} // namespace kst::test
