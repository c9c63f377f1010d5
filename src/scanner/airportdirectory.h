#pragma once

// The airports of the world by code and position. Filled once by the worker at start-up, read-only on any
// thread afterwards.

#include "model/units.h"

#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// One airport of the directory.
struct AirportEntry {
    std::string code;      ///< ICAO code, or a national one of 3 or 4 characters
    std::string iata;      ///< may be empty
    double latitude = 0.0; ///< degrees
    double longitude = 0.0;
    double alt = 0.0; ///< elevation, feet

    LatLon position() const { return {latitude, longitude}; }
};

/// Reads airports/airports_p3d.xml; once it has been read, later calls do nothing. Returns whether the
/// directory has entries. Throws UserErrorException 88 when the file is missing or broken. Worker.
bool lf_readAirports();

/// The airport of this code, to the letter; nullptr for none. It stays where it is to the end of the process.
const AirportEntry* gf_airportByCode(std::string_view code);

/// The airport at the position: the closest within 5 nm, or its close neighbour when that has the nearest
/// stand. nullptr for none. With a neighbour, the files of both are looked for, which may ask the server.
/// Worker.
const AirportEntry* gf_closestAirport(LatLon position);

/// The two airports that `gf_closestAirport` chooses between.
struct AirportsNear {
    const AirportEntry* best = nullptr;   ///< the closest within 5 nm, nullptr for none
    const AirportEntry* second = nullptr; ///< the one that `best` pushed out last, nullptr for none
};
/// The look through the directory alone.
AirportsNear lf_airportsNear(const std::vector<AirportEntry>& directory, LatLon position);

} // namespace kst
