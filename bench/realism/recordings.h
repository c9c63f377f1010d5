#pragma once

// Recorded flights, cut into single ones: a target that is silent for minutes is another flight afterwards.

#include "model/units.h"
#include "standins/realtraffic/trafficsource.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kst::bench {

struct Airport {
    std::string code;
    LatLon position;
    double elevationFt = 0.0;
};

struct RecordedFlight {
    std::string file;
    std::string name;                            ///< callsign and the second of the file at which it begins
    std::vector<standin::TrafficReport> reports; ///< in order of time, the first at 0
    std::vector<Airport> airports;               ///< those that it uses or passes low
    int qnh = 1013;                              ///< that fits its pressure altitudes at its airports
    int landings = 0;                            ///< that the recording shows to the ground
    int departures = 0;                          ///< that the recording shows from the ground
};

/// The flights of every *.csv of the folder that last a minute and have ten points at least. `dataFolder`
/// holds the lists of airports and types. Throws std::runtime_error for a folder without tracks.
std::vector<RecordedFlight> readRecordings(const std::filesystem::path& tracks,
                                           const std::filesystem::path& dataFolder);

/// The airport nearest to the place.
const Airport* nearestAirport(const std::vector<Airport>& airports, LatLon place);

} // namespace kst::bench
