#pragma once

// Getting at an airport parking file, on this machine or on the download server.

#include <filesystem>
#include <string>
#include <string_view>

namespace kst {

/// Whether a location of `gf_locateApf` is a local path, not one on the server.
bool isLocalLocation(std::string_view location);
/// The address of a location on the server.
std::string airportFileUrl(std::string_view location);
/// Fetches a location on the server into the file. Returns success; a failure is logged.
bool fetchAirportFile(std::string_view location, const std::filesystem::path& path);

} // namespace kst
