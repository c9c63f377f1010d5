#pragma once

// What is played: recorded flights, each by itself, and scenes on an apron with all their traffic.

#include "model/units.h"
#include "standins/realtraffic/trafficsource.h"
#include "tools/measureflights/flights.h"

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace kst::bench {

using Reports = std::vector<standin::TrafficReport>;
using Line = std::vector<tool::TrackPoint>;

struct Airport {
    std::string code;
    LatLon position;
    double elevationFt = 0.0;
};

/// One flight, or one scene on an apron: all traffic round the one airport of `airports`.
struct Recording {
    std::string name; ///< of a flight: file, callsign and the second of the file at which it begins;
                      ///< of a scene: file, that second and the airport
    Reports reports;  ///< in order of time, the first at 0
    std::vector<Airport> airports;  ///< those that it uses or passes low
    int qnh = 1013;                 ///< that fits its pressure altitudes at its airports
    std::vector<double> landings;   ///< seconds at which a flight is on the ground for the first time
    std::vector<double> departures; ///< and in the air for the first time
};

/// The flights of every *.csv of the folder that last a minute and have ten points at least. `dataFolder`
/// holds the lists of airports and types. Throws std::runtime_error for a folder without tracks.
std::vector<Recording> readFlights(const std::filesystem::path& tracks,
                                   const std::filesystem::path& dataFolder);

// What scenes are made with as well.

using Types = std::set<std::string, std::less<>>;

/// All traffic of each *.csv of the folder, and the file's name. Throws std::runtime_error when there is
/// none.
void forEachFile(const std::filesystem::path& tracks,
                 const std::function<void(const std::string& name, Reports& all)>& take);
/// The airports with a code of four letters.
std::vector<Airport> readAirports(const std::filesystem::path& dataFolder);
/// The designators of the list of types.
Types readTypes(const std::filesystem::path& dataFolder);
/// The program shows known types only: an unknown one flies as a usual one of its speed.
void giveType(Reports& reports, const Types& types);
/// Cut where nothing is told for minutes.
std::vector<Reports> cutAtSilences(const Reports& reports);
/// Lets the first report be at 0 and returns when it was.
double beginAtZero(Reports& reports);
/// Whether two successive reports of a target, one of them on the ground, show how it landed or lifted off.
bool isContact(const standin::TrafficReport& before, const standin::TrafficReport& after);
/// The pressure that brings altitudes told at contacts to the airport's elevation; 1013 without any.
int qnhFitting(const std::vector<double>& elevationMinusPressureFt);

/// The airport nearest to the place.
const Airport* nearestAirport(const std::vector<Airport>& airports, LatLon place);

} // namespace kst::bench
