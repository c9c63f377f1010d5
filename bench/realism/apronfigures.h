#pragma once

// What a spectator on the apron would say: figures over many scenes, beside the naive replay.

#include "bench/realism/figures.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kst::bench {

enum class ApronStage { Taxi, Roll, PushBack, Parking, Parked, Count };
inline constexpr auto apronStageCount = static_cast<std::size_t>(ApronStage::Count);

/// Seconds in which the wing circles of two overlap, by pair, while both are recorded.
using Overlaps = std::map<std::string, double>;

/// A stop on a stand that the recording shows.
struct StandStop {
    std::string name;     ///< scene and callsign
    std::string stand;    ///< nearest to where it stops
    std::string parkedOn; ///< empty when it did not park
    std::string instead;  ///< what it did when it did not park
    double fromStandM = 0.0;
    double headingOffDeg = 0.0;
    double recordedFromStandM = 0.0;
    bool standsFromStart = false; ///< of its recording
    bool leaves = false;          ///< moves away again in the recording
    bool stays = false;           ///< is parked until its recording goes on, or to the end
};

inline constexpr double parkedWithinM = 2.0;
inline constexpr double parkedWithinDeg = 1.0;

struct ApronFigures {
    int scenes = 0;
    int aircraft = 0;
    int shown = 0;
    std::array<StageFigures, apronStageCount> stages;
    Overlaps flown;
    Overlaps naive;
    Overlaps flownPast; ///< one of the two is parked
    Overlaps naivePast;
    Overlaps parked; ///< both are
    std::vector<StandStop> stops;
    std::map<Reason, int> leftWhileRecorded;
    std::vector<std::string> whoLeft; ///< while recorded
    std::map<Reason, int> neverShown;

    void add(const std::string& scene, const PlayedScene& played);
};

/// Why a target was never shown; the live tables do not tell.
std::string_view refusalText(Reason reason);

std::string tableOf(const ApronFigures& figures);

/// How badly a scene goes, to find the worst: its farthest from the recorded line while it taxies, metres,
/// and 100 for each stop that does not end on its stand.
double badness(const ApronFigures& figures);

} // namespace kst::bench
