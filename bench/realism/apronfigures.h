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
    std::string what; ///< who stops where and when
    bool parked = false;
    bool stays = false;      ///< until its recording goes on, or to the end
    double fromStandM = 0.0; ///< while parked, as is the next
    double headingOffDeg = 0.0;
    std::string instead; ///< what it did when it did not park or stay

    bool good() const;
};

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
