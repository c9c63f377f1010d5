#pragma once

// How an aircraft leaves its stand: straight ahead, or pushed back and turned. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Lays the track of a push back: straight out, then perhaps a turn. Nothing when the stand is gone.
void lf_pushBack(LiveAc& ac);
/// Lays the track of a departure straight ahead.
void lf_pullOutStraight(LiveAc& ac);
/// At the end of each leg of a push back. True when the push is over.
bool advancePushBack(LiveAc& ac);

} // namespace kst
