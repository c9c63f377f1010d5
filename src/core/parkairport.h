#pragma once

#include "model/units.h"

#include <optional>
#include <string>

namespace kst {

/// The one airport whose ground traffic and stands are shown now.
struct ParkAirportFacts {
    std::string code; ///< ICAO code
    std::string name;
    LatLon position;
    double elevationFt = 0.0;
};

/// What the feed's filter needs of it on every line.
struct ParkAirportPlace {
    LatLon position;
    double elevationFt = 0.0;
};

/// Sets or forgets the park airport. Worker, and tests.
void setParkAirport(const std::optional<ParkAirportFacts>& airport);
/// A copy, or nothing when no airport is chosen. Any thread; takes a lock.
std::optional<ParkAirportFacts> parkAirport();
/// Position and elevation alone. Any thread; takes a lock and allocates nothing.
std::optional<ParkAirportPlace> parkAirportPlace();

} // namespace kst
