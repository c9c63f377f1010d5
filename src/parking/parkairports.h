#pragma once

// Which airport's stands are shown: the list of park airports, the choice by distance and the user's state.

#include "model/units.h"

#include <optional>
#include <string>
#include <string_view>

namespace kst {

/// Reads my_park_airports.txt. False when a line names an airport that is not in the directory. Worker.
bool lf_readMyParkAirports();
/// Reads the list anew for the Re-read button; `message` receives what to show. Worker.
bool lf_reReadParkAirports(bool applyReserved, std::string& message);
/// The periodic check which airport is the park airport now. Worker.
void gf_checkForParkAirportUpdates(bool showMessageLine);
/// A new destination: its airport goes to the head of the list. Worker.
void lf_setDestination(std::string_view code, LatLon position);
/// The distance of the closest park airport from the user; nothing while none is known. Worker.
std::optional<double> closestParkAirportNm();
/// Keeps the stand under the stopped user for the next visit. Worker.
void lf_storeUserStand();

} // namespace kst
