#pragma once

// What a spectator would notice of a flight, worked out from the simulator's own history of the object and
// from what the feed told of it.

#include "standins/realtraffic/trafficsource.h"
#include "standins/simulator/aircraft.h"

#include <string>
#include <vector>

namespace kst::test {

/// How a flown path lies against the line that the feed reported, 30 seconds later.
struct PathFacts {
    double medianOffLineM = 0.0;
    double p95OffLineM = 0.0;
    double medianLagS = 0.0; ///< behind the feed's time plus 30 seconds; negative is ahead
    double largestLagS = 0.0;
    double largestLeadS = 0.0;
    std::size_t points = 0;
};

/// Points of the history in the air, against the reports of the same target. Reports and history use the same
/// seconds. Empty facts where one of both has fewer than two points.
PathFacts pathFacts(const std::deque<standin::HistoryPoint>& history,
                    const std::vector<standin::TrafficReport>& reports);

/// What no aircraft does.
struct PhysicalFacts {
    double largestStepRatio = 0.0; ///< longest way between two points against what the faster speed explains
    double largestPitchRateDegS = 0.0;
    double largestBankRateDegS = 0.0;
    double largestTurnRateDegS = 0.0;
    double lowestAboveGroundFt = 0.0; ///< of the reference point against where it stands
};
/// `fromSeconds`: what happens before, while the object is created and taken over, does not count.
PhysicalFacts physicalFacts(const standin::Aircraft& aircraft, double fromSeconds);

/// The reports of one target.
std::vector<standin::TrafficReport> reportsOf(const std::vector<standin::TrafficReport>& reports,
                                              const std::string& callsign);

} // namespace kst::test
