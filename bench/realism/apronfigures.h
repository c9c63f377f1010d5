#pragma once

// What a spectator on the apron would say: figures over many scenes, beside the naive replay.

#include "bench/realism/apron.h"

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kst::bench {

enum class ApronStage { Taxi, Roll, PushBack, Parking, Parked, Naive, Count };
inline constexpr auto apronStageCount = static_cast<std::size_t>(ApronStage::Count);

struct ApronStageFigures {
    double seconds = 0.0;
    std::vector<double> fromLineM;
    double worstFromLineM = 0.0;
    double turnDeg = 0.0;   ///< in one tick
    double turnShare = 0.0; ///< of three times the size class's rate
    int reversals = 0;
    std::string whereFromLine;
    std::string whereTurn;
    std::string whereReversal;
};

/// Time in which two wing circles on the move overlap.
struct Overlap {
    double seconds = 0.0;
    double afterRecording = 0.0;         ///< seconds more, in which the recording of one of the two has ended
    std::map<std::string, double> pairs; ///< seconds by pair, while both are recorded
};

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
    std::array<ApronStageFigures, apronStageCount> stages;
    Overlap flown;
    Overlap naive;
    Overlap flownPast; ///< one of the two is parked
    Overlap naivePast;
    Overlap parked; ///< both are
    std::vector<StandStop> stops;
    std::map<Reason, int> leftWhileRecorded;
    std::vector<std::string> whoLeft; ///< while recorded
    std::map<Reason, int> leftAfterwards;
    std::map<Reason, int> neverShown;

    void add(const ApronScene& scene, const PlayedApron& played);
};

inline constexpr std::array<std::string_view, 8> phaseNames = {
    "pushed", "after its push", "taxiing", "taking off", "in the air", "parking", "parked", "undecided"};

/// Why a target was never shown; the live tables do not tell.
std::string_view refusalText(Reason reason);

/// nullptr when there is none with this number.
const ParkPos* standOf(const std::vector<ParkPos>& stands, std::uint32_t sid);

std::string tableOf(ApronFigures& figures);

/// How badly a scene goes, to find the worst: its farthest from the recorded line while it taxies, metres,
/// and 100 for each stop that does not end on its stand.
double badness(const ApronFigures& figures);

/// Every sample of a scene as CSV, for a look at a single aircraft.
std::string pathsOf(const PlayedApron& played);

} // namespace kst::bench
