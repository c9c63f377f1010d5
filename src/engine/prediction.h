#pragma once

// How a target moves: legs between track points, the flight laws of approach and departure, the intake of
// feed positions and what happens when none come. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Plans the next leg: called when the front point is due.
void nextPosMain(LiveAc& ac);
/// Moves the aircraft by one tick.
void lf_stepAc(LiveAc& ac);
/// The simulator reports ground contact.
void lf_touchDown(LiveAc& ac);
/// Begins a departure: lights, flaps, drift limits.
void lf_startDeparture(LiveAc& ac);
/// Pitch of the climb law for a vertical speed, radians, negative is nose up.
double climbLawPitch(double vsFpm);
/// Changes the phase and keeps the one left.
void setPhase(LiveAc& ac, AcPhase phase);

/// Judges an accepted feed position by the aircraft's phase and takes it into the track, or drops it.
void lf_addPosition(LiveAc& ac, TrackPoint msg);
/// Invents a further point where the feed has none. False when the aircraft's story is over; `reason` then
/// says why.
bool lf_extendTrack(LiveAc& ac);

/// Configures an object that has just settled; its state becomes `Live`.
void lf_initialConfig(LiveAc& ac);
/// Lights, engines and flaps of a parked aircraft.
void lf_parkLights(AcBase& ac);

} // namespace kst
