#pragma once

// What the simulator answered about our objects, applied to the tables. Worker only.

#include "model/aircraft.h"
#include "model/simobjects.h"

#include <cstddef>
#include <cstdint>

namespace kst {

/// An object of this live aircraft exists: takes its id, its height and what it needs from the simulator.
/// False when the object is not to settle.
bool lf_applyCreated(LiveAc& ac, const SimCommand& command);

/// One tick of an object that settles. After two seconds it is configured and its record is `Live`; the
/// counter is below 0 from then on.
void lf_settleObject(SimCommand& command);

/// The object has left the simulator: its record goes, or returns to the buffer if it was respawning.
void lf_applyRemoved(std::uint32_t objectId);

/// Objects that settle now.
std::size_t settlingObjectCount();

/// Forgets the objects that settle.
void resetSimReplies();

} // namespace kst
