#pragma once

// Points that the feed did not give. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Invents one point beyond the front one, by what the aircraft is doing; `n` points are then still allowed.
void lf_deadReckon(LiveAc& ac, int n);

} // namespace kst
