#pragma once

// Short stops at the end of a track are taken out, so that the replay does not halt for each of them. Worker
// only.

#include "model/aircraft.h"

#include <cstddef>

namespace kst {

/// Examines a stop of up to five standing points at the end of the track; `pos` is the new moving position.
void removeSmallStop(LiveAc& ac, LatLon pos);
/// Drops the `num` - 1 last points unless the stop was a real one: 15 seconds or more, and moved on since.
void checkStops(LiveAc& ac, std::size_t num, LatLon pos);

} // namespace kst
