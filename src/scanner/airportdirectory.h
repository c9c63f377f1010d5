#pragma once

#include "model/units.h"

#include <optional>
#include <string>
#include <string_view>

namespace kst {

struct DirectoryAirport {
    std::string code; ///< ICAO code
    std::string name;
    LatLon position;
    double altitudeFt = 0.0;
};

/// Reads the world directory of airports. A missing or broken file is logged; the directory is then empty.
/// Worker.
void gf_readAirportDirectory();
/// The closest airport to the position, or nothing with an empty directory.
std::optional<DirectoryAirport> gf_closestAirport(LatLon position);
std::optional<DirectoryAirport> gf_airportByCode(std::string_view code);

} // namespace kst
