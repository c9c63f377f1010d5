#pragma once

// Legs on the ground: corners, timing, changes of speed, the search for a stand. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Shapes and times the leg to the second point; may change the track.
void nextPosGround(LiveAc& ac);
/// Times the leg to the second point and fits the rate of turn to it.
void lf_timeTaxiLeg(LiveAc& ac);
/// Splits a long leg with a marked change of speed in two.
void lf_smoothSpeed(LiveAc& ac);
/// Inserts a point half way to the second one.
void lf_insertMidPoint(LiveAc& ac);
/// Sets the rates and the power of the leg.
void lf_setupGroundStep(LiveAc& ac);

} // namespace kst
