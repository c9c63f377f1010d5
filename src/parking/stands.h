#pragma once

// The table of stands of the loaded airport. Worker only.

#include "model/parkpos.h"

#include <vector>

namespace kst {

/// Every stand of the loaded airport in file order; empty when none is loaded.
std::vector<ParkPos>& parkPositions();
/// The stand with this number, nullptr when there is none.
ParkPos* standBySid(std::uint32_t sid);
/// The stand's name for a log line: its id, "sid==0?" for 0, "unknown" for a number not in the table.
std::string standName(std::uint32_t sid);

} // namespace kst
