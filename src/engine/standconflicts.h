#pragma once

// Who may have a stand. An aircraft that still sends positions keeps it against one that does not. Worker
// only.

#include "model/aircraft.h"
#include "model/parkpos.h"

namespace kst {

/// A newcomer for a stand, tried against each aircraft of the table.
struct StandClaim {
    const ParkPos& stand;   ///< the stand it wants
    const LiveAc& newcomer; ///< who wants it
    std::uint32_t occupied; ///< number of the stand that is looked at: its own, or a neighbour's
    bool mayStay = true;    ///< the newcomer may have the stand
};

/// The aircraft on the wanted stand itself gives way or refuses the newcomer. True ends the walk.
bool lf_clearForStand(StandClaim& claim, LiveAc& ac);
/// An aircraft on a neighbour stand refuses a newcomer that would touch it. True ends the walk.
bool lf_clearForNeighbour(StandClaim& claim, LiveAc& ac);
/// Removes the static aircraft on the stand, and those on neighbours that the live one would touch.
void checkStandOrExcludedIsOccupiedByStaticAndRemove(const LiveAc& ac, const ParkPos& stand);
/// A taxiing aircraft looks for a stand where its track ends, takes it from whoever is there, and begins to
/// roll onto it. `searching` is true for an aircraft on dead reckoning that has landed.
void lf_claimStand(LiveAc& ac, bool searching);
/// Holds the number of parked aircraft to the wanted one; `extra` live aircraft are about to park.
void lf_checkMaxPark(int extra);

} // namespace kst
