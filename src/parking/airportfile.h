#pragma once

// Airport parking files: where they are, loading one into the table of stands, writing one. The format is in
// docs/formats.md. Worker only, but for the writer of archive files.

#include "model/airportfile.h"
#include "model/units.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kst {

/// The location of the airport's file, empty if there is none. A location that begins with "airports" is a
/// local path, any other a path on the download server. First hit wins: a link or a file of the user's add-on
/// airports, the same of the ORBX family, the server's stock file. May ask the server.
std::string gf_locateApf(std::string_view icao);

/// Whether `gf_locateApf` would find something. Links are not opened. May ask the server.
bool gf_apfExists(std::string_view icao);

/// Loads the park airport's file into `loadedAirport()`, which the caller has emptied, with the learned file
/// over it, and shows what it holds. A location on the server is fetched first. Returns an error text, empty
/// on success. Throws UserErrorException when the altitude is missing or a stand's id stands there twice.
std::string gf_readApf(const std::string& location);

/// What is written of an airport.
enum class ApfMode {
    Learned = 0, ///< the learned or handmade file, with the present settings of the airport
    Archive = 1  ///< every stand without its observations
};

/// Writes the airport to the file, replaced as a whole: when that fails the old content stays. Logs nothing.
/// For a learned file `airport.stands` are those that differ from the archive. An archive file needs nothing
/// but the record and may be written on any thread. Returns whether it was written.
bool gf_saveApf(const AirportFile& airport, const std::filesystem::path& path, ApfMode mode);

/// The distance in nautical miles from `position` to the nearest stand of the airport's file, and that
/// stand's id; 100.0 when there is no file, no stand, or none nearer. Touches no stand in memory. May ask the
/// server. Never throws.
double gf_readDestApfForClosestStand(std::string_view icao, LatLon position, std::string& standId);

/// The quality factors as the window shows them: "real/soft" while little is known, the real one alone from
/// 45 on, two blanks when both are unknown.
std::string gf_qualityText(QualityFactors quality);

} // namespace kst
