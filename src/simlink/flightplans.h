#pragma once

#include "model/aircraft.h"

#include <filesystem>

namespace kst {

/// Creates the folder of flight plan files below the output folder. Returns whether it exists afterwards;
/// throws std::filesystem::filesystem_error.
bool lf_prepareFlightPlanFolder();
/// Removes it with its contents; an error is logged.
void gf_removeFlightPlanFolder();
/// Writes "{objectId}.pln" for the aircraft and hands it to the simulator; sets `flightPlanLoaded`. Nothing
/// without both origin and destination. Worker.
void lf_setFlightPlan(LiveAc& ac);
/// Deletes the aircraft's file if one was loaded. Worker.
void lf_deleteFlightPlan(const LiveAc& ac);
/// The file's text for this aircraft.
std::string flightPlanText(const LiveAc& ac);
std::filesystem::path flightPlanPath(std::uint32_t objectId);

} // namespace kst
