#pragma once

// Arrival on a stand, and what a position heard from a parked aircraft means. Worker only.

#include "model/aircraft.h"
#include "model/parkpos.h"

namespace kst {

/// Lays the last leg onto a stand. `standLat`, `standLon` and `standHeading` are set already and the track
/// holds its front point only.
void lf_routeToStand(LiveAc& ac, const ParkPos& stand);
/// A `Parking` aircraft has run out of points: it parks, goes on taxiing, or finds the stand taken.
void lf_arriveAtStand(LiveAc& ac);
/// Whether a position of a parked aircraft shows that it moves: true if it is to enter the track. May remove
/// the aircraft.
bool lf_parkedPositionCheck(LiveAc& ac, TrackPoint& msg);
/// A parked aircraft starts to move.
void lf_parkedAgain(LiveAc& ac);

} // namespace kst
