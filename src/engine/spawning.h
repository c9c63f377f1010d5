#pragma once

// From the buffer into the simulator: the gates a target passes, and what changes its identity. Worker only.

#include "model/aircraft.h"
#include "model/feedmessage.h"

#include <string_view>

namespace kst {

/// Once a tick for each buffered record: may drop points, refuse the target (`erase`) or spawn it.
void updateBufferAc(LiveAc& ac);
/// Decides how the target enters: in the air, on a stand, on a taxiway. Needs at least two points.
void spawnLiveAc(LiveAc& ac);
/// Takes identity and route of a feed record. False if the record must not be added to the track.
bool lf_updateIdentity(LiveAc& ac, const FeedMessage& rec);
/// Removes the object to create it again under the record's new identity.
void liveryRespawn(LiveAc& ac);
/// Removes the ghost of this callsign, if there is one.
void lf_removeGhostOf(std::string_view callsign);
/// Whether a real target stands behind this ghost callsign.
bool lf_hasRealTarget(std::string_view ghostCallsign);
bool isValidCallsign(std::string_view callsign);

} // namespace kst
