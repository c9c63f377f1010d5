#pragma once

// Recorded flights, cut into single ones: a target that is silent for minutes is another flight afterwards.

#include "model/units.h"
#include "standins/realtraffic/trafficsource.h"

#include <filesystem>
#include <set>
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
    std::vector<double>
        landings; ///< seconds at which the recording shows it on the ground for the first time
    std::vector<double> departures; ///< and in the air for the first time
};

/// The flights of every *.csv of the folder that last a minute and have ten points at least. `dataFolder`
/// holds the lists of airports and types. Throws std::runtime_error for a folder without tracks.
std::vector<RecordedFlight> readRecordings(const std::filesystem::path& tracks,
                                           const std::filesystem::path& dataFolder);

/// Every *.csv of the folder. Throws std::runtime_error when there is none.
std::set<std::filesystem::path> trackFiles(const std::filesystem::path& tracks);

/// The designators of a list of types.
std::set<std::string, std::less<>> knownTypes(const std::filesystem::path& file);
/// The program shows known types only: an unknown one flies as a usual one of its speed.
void giveType(std::vector<standin::TrafficReport>& reports, const std::set<std::string, std::less<>>& types);

/// Whether two successive reports of a target, one of them on the ground, show how it landed or lifted off.
bool isContact(const standin::TrafficReport& before, const standin::TrafficReport& after);
/// The pressure that brings altitudes told at contacts to the airport's elevation; 1013 without any.
int qnhFitting(std::vector<double>& elevationMinusPressureFt);

/// The airport nearest to the place.
const Airport* nearestAirport(const std::vector<Airport>& airports, LatLon place);

} // namespace kst::bench
