#pragma once

// The last feet of an approach and the first of the rollout: flown by the simulator's height above ground,
// not by feed points. Worker only.

#include "model/aircraft.h"

namespace kst {

/// A nose-up pitch in the flare goes no further than this, radians.
inline constexpr double flarePitch = -4.0 * radPerDeg;

/// Each tick low on final: moves the flare on by one stage when its height is reached.
void lf_flare(LiveAc& ac);
/// Each tick after touchdown while the nose comes down.
void stepNoseDown(LiveAc& ac);
/// Each ground leg of the landing roll: cleans up as the aircraft slows, ends it when the runway is left.
void lf_rollout(LiveAc& ac);

} // namespace kst
