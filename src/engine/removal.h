#pragma once

// What the rules of the engine share when they refuse, hold back or remove an aircraft: the reason is counted
// and kept in the record. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Counts the reason and keeps it in the record.
void noteReason(AcBase& ac, Reason reason);

/// A feed record of this target was dropped. A target that is held back keeps the reason for that.
void noteDroppedRecord(LiveAc& ac, Reason reason);

/// A buffered target is refused: it leaves the table at the end of this pass.
void refuseTarget(LiveAc& ac, Reason reason);

/// A buffered target has to wait: its oldest point goes and the record stays. Counted once until the reason
/// changes.
void holdTarget(LiveAc& ac, Reason reason);

/// The stand of this aircraft, if it has one, is no longer taken by a live aircraft.
void releaseStand(const LiveAc& ac);

/// Takes back an aircraft that has been asked for but is not yet in the simulator. True if that came in time:
/// the record is deleted. Otherwise it is marked and goes as soon as it is there.
bool lf_cancelLiveCreation(LiveAc& ac, Reason reason);

} // namespace kst
