#pragma once

// What the files of the selection of stands share: whether an aircraft fits, and whether it was seen there
// before. Worker only.

#include "model/aircraft.h"
#include "model/parkpos.h"

#include <string_view>

namespace kst {

/// The callsign without the mark of a ghost.
constexpr std::string_view withoutGhostMark(std::string_view callsign) {
    return callsign.ends_with('_') ? callsign.substr(0, callsign.size() - 1) : callsign;
}

/// Whether the wings fit the stand, give or take 1.8 m.
bool fitsStand(const LiveAc& ac, const ParkPos& stand);

/// Whether this flight, or its operator with its type, was really seen on the stand.
/// False without callsign.
bool wasSeenOn(const ParkPos& stand, const LiveAc& ac);

/// Forgets the stand that was found under the user.
void forgetUserStand();

} // namespace kst
