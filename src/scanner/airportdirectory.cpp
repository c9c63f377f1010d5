#include "scanner/airportdirectory.h"

namespace kst {

void gf_readAirportDirectory() {}

std::optional<DirectoryAirport> gf_closestAirport(LatLon) {
    return std::nullopt;
}

std::optional<DirectoryAirport> gf_airportByCode(std::string_view) {
    return std::nullopt;
}

} // namespace kst
