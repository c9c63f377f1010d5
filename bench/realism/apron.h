#pragma once

// One scene on the apron through the whole program in virtual time, all its aircraft at once.

#include "bench/realism/apronscenes.h"
#include "model/aircraft.h"
#include "model/parkpos.h"
#include "model/reasons.h"
#include "tools/measureflights/flights.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kst::bench {

/// An aircraft on the ground, ten times a second.
struct ApronSample {
    double at = 0.0; ///< seconds since the scene's world began
    LatLon position; ///< of the simulator's object
    double heading = 0.0;
    double turnDeg = 0.0;   ///< the largest turn in one tick since the last sample
    double turnShare = 0.0; ///< the same as a share of the fastest turn that its size class allows
    std::uint32_t sid = 0;
    AcPhase phase = AcPhase::Unknown;
    bool rolling = false;  ///< takes off or has landed
    bool coasting = false; ///< on invented points
};

/// Its object leaves the simulator.
struct Leaving {
    double at = 0.0;
    Reason reason = Reason::None;
    AcPhase phase = AcPhase::Unknown;
};

struct PlayedAircraft {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string type; ///< empty for a vehicle
    double halfSpanM = 0.0;
    std::vector<tool::TrackPoint> line; ///< what the feed told
    std::vector<ApronSample> samples;   ///< on the ground only
    std::vector<Leaving> leavings;
    Reason refused = Reason::None; ///< by the buffer, the last time
    bool shown = false;
};

struct PlayedApron {
    std::vector<PlayedAircraft> aircraft;
    std::vector<ParkPos> stands; ///< as they are at the end
    double end = 0.0;            ///< seconds
};

/// `stands` holds the scene's <ICAO>.csv. Static aircraft are off; the user is high above.
PlayedApron playApron(const ApronScene& scene, const std::filesystem::path& stands);

} // namespace kst::bench
