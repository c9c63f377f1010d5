#pragma once

// What an airport parking file holds: one airport and its stands.

#include "model/parkpos.h"

#include <string>
#include <vector>

namespace kst {

/// How much is known about what stands where at an airport, 0 to 100 each; -1 when unknown.
struct QualityFactors {
    int Qf_real = -1; ///< from observations of aircraft seen to arrive on a stand
    int Qf_soft = -1; ///< from observations of aircraft near a stand

    friend bool operator==(const QualityFactors&, const QualityFactors&) = default;
};

/// One airport and its stands. Read from an airport parking file, or made from scenery.
struct AirportFile {
    std::string icao;
    std::string airport_name;
    std::string BGLpath;   ///< the scenery file the airport came from; written for an unknown publisher only
    std::string publisher; ///< "stock", "simaddon", a publisher's name, or "unknown"
    int RT_traffic_week = 0; ///< the week of recorded traffic that the observations were taken from
    QualityFactors quality;
    int altitude = 0; ///< elevation, feet
    std::vector<ParkPos> stands;
    bool handmade = false; ///< the stands of a learned file stand in place of the archived ones
};

} // namespace kst
