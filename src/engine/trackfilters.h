#pragma once

// Which feed positions a moving aircraft's track takes. Each may correct the position; false rejects it.
// Worker only.

#include "model/aircraft.h"

namespace kst {

/// The jitter filter: tells standing from moving.
bool lf_filterPosition(const LiveAc& ac, TrackPoint& msg);
/// Data have come back while invented points were flown.
bool lf_resumeFromDeadReckoning(LiveAc& ac, const TrackPoint& msg);
/// An aircraft that is landing never turns back: drops points that lie behind the position.
bool lf_filterApproachPosition(LiveAc& ac, TrackPoint& msg);
/// Ends dead reckoning: the replay may drift until it has found the feed's time again.
void endDeadReckoning(LiveAc& ac);

} // namespace kst
