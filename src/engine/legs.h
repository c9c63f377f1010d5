#pragma once

// A track is a chain of legs. A leg runs from the track's front point to its second and takes until the
// second's due time; the aircraft always aims from where it really is, so that the error of one leg vanishes
// in the next. Worker only.

#include "model/aircraft.h"

#include <cstdint>

namespace kst {

/// Plans the leg to the second point and drops the front one. Needs at least two points.
void nextPos(LiveAc& ac);

/// Moves the second point's due time to `ticks` from now, as far as the drift limits let it leave the feed's
/// time.
void lf_setDueTick(LiveAc& ac, std::int32_t ticks);
/// Ticks left until the second point is due, at least 25.
std::int32_t lf_stepsToNext(const LiveAc& ac);
/// Mean ground speed of the leg in knots; from distance and time where the feed gives no speed.
double lf_meanSpeed(const LiveAc& ac);
/// Angle from the present heading to the leg after this one, radians, clockwise positive; 0 where the track
/// ends with this leg.
double lf_turnAngleAhead(const LiveAc& ac);

/// Feed time of the leg in ticks, at least 25.
std::int32_t feedTicks(const LiveAc& ac);
/// Distance from front to second point, nautical miles.
double legDistanceNm(const LiveAc& ac);
/// Position change per tick, so that the aircraft is at the second point when it is due.
void aimAtSecond(LiveAc& ac);
/// Lowers drift limits that were widened, a step towards their first value.
void decayDriftLimits(LiveAc& ac);
/// Widens the drift limits for a manoeuvre, or for fresh data after a silence: 30 seconds both, behind the
/// feed 50 seconds while departing.
void widenDriftLimits(LiveAc& ac);

} // namespace kst
