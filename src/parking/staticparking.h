#pragma once

// Static parked aircraft: the loaded airport's population from its first making to its end. The search for
// it is in parkrequests.h, its adjustment every 20 minutes in renewal.h. Worker only.

#include <string>

namespace kst {

/// Loads the park airport's stands. Returns an error text, empty on success. Throws UserErrorException for a
/// file that cannot be right.
std::string lf_readParkedFile();

/// Works out the first population of the airport that was just loaded.
void lf_initialParking();

/// Creates the next aircraft of `parkQueue`, while no other creation waits.
void lf_parkStatic();

/// Removes every static aircraft, and the live ones from their stands; then closes the airport.
void lf_removeAllParked();

/// Saves what was learned at the loaded airport and forgets it.
void lf_closeAirport();

/// Whether a park airport is loaded and has stands.
bool parkAirportLoaded();
/// Enables or disables the controls of the parking population.
void enableParkingControls(bool enabled);

} // namespace kst
