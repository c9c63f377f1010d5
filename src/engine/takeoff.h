#pragma once

// From the take-off roll to the climb out. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Begins the rotation.
void lf_takeOff(LiveAc& ac);
/// Each ground leg of a departure: rotates once the track says that the aircraft flies.
void checkTakeOff(LiveAc& ac);
/// Every point from the second on is at or above the size class's take-off speed.
bool lf_isFast(const LiveAc& ac);
/// Every point from the second on is airborne.
bool lf_allAirborne(const LiveAc& ac);
/// Each tick in `TakeOff`: rotation, lift-off, climb out.
void stepTakeOff(LiveAc& ac);

} // namespace kst
