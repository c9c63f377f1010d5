#pragma once

// Static parked aircraft: the population of the park airport's stands. Worker only.

namespace kst {

/// Creates the next waiting static aircraft, if there is one.
void lf_parkStatic();
/// Starts the adjustment of the population to the present half hour: the second round of a renewal.
void lf_startParkingRenewal();
/// Removes what occupies the stand under the user.
void lf_clearUserStand();
/// Saves what was learned at the park airport and forgets it: the end of a run.
void lf_saveAndCloseAirport();
/// Whether a park airport is loaded and has stands.
bool parkAirportLoaded();
/// Enables or disables the controls of the parking population.
void enableParkingControls(bool enabled);

} // namespace kst
