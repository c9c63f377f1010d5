#pragma once

// The loaded airport and its table of stands. Worker only.

#include "model/airportfile.h"

#include <vector>

namespace kst {

/// The one airport whose stands are in use; empty when none is loaded.
AirportFile& loadedAirport();
/// Forgets the loaded airport with all its stands.
void clearLoadedAirport();
/// Whether an airport file has been loaded, and not been forgotten since. Any thread.
bool airportLoaded();
/// Told by the loader of airport files.
void setAirportLoaded();

/// Every stand of the loaded airport in file order; empty when none is loaded.
std::vector<ParkPos>& parkPositions();
/// The stand with this number, nullptr when there is none.
ParkPos* standBySid(std::uint32_t sid);
/// The stand's name for a log line: its id, "sid==0?" for 0, "unknown" for a number not in the table.
std::string standName(std::uint32_t sid);

/// Numbers the stands 1 to n in table order and works out which of them overlap.
void numberStands(std::vector<ParkPos>& stands);

} // namespace kst
