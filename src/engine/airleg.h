#pragma once

// Legs in the air: their time, and how altitude, pitch, bank and heading change along them. Worker only.

#include "model/aircraft.h"

#include <cstddef>

namespace kst {

/// Times the leg to the second point.
void nextPosAir(LiveAc& ac);
/// Sets the rates of the leg and the configuration for its height.
void lf_setupAirStep(LiveAc& ac);

/// Climbs to the second point, no faster than the size class can; never descends.
void lf_climbToNextPoint(LiveAc& ac);
/// The rate at which an approach descends, feet per minute, -600 or steeper: from the feed's vertical speeds,
/// corrected for pressure.
double lf_descentRate(const LiveAc& ac);
/// A flying aircraft whose track says ground: finds where the track flies on, or brings it down.
void lf_descentFromTrack(LiveAc& ac);
/// Skips the track to the point at this place, counted from 1, if it is airborne. False if it is not.
bool findAirborneData(LiveAc& ac, std::size_t index);

} // namespace kst
