#pragma once

// Learned airport files: what was observed here, laid over the airport's own file. Worker only.

#include "model/airportfile.h"

#include <filesystem>
#include <string_view>

namespace kst {

/// Where the learned file of an airport lies whose own file `gf_locateApf` found at `location`. An empty
/// location gives an empty path.
std::filesystem::path lf_learnedApfPath(std::string_view location, std::string_view publisher);

/// Merges the learned file over the airport's stands, or puts its stands in their place when it is handmade,
/// and takes over the settings that it holds. A file that cannot be parsed is set aside. Throws
/// UserErrorException at an id that stands twice in a handmade file.
void lf_readLearned(const std::filesystem::path& path, AirportFile& airport);

/// How much is known about the stands of the loaded airport.
QualityFactors gf_qualityFactor();

/// Writes the learned file of the loaded airport and tells the user.
void lf_saveLearned();

/// Whether the airport's stock file shows that its add-on's stands can be learned off line. Asks the server.
bool gf_stockIsSuitable(std::string_view icao);

} // namespace kst
