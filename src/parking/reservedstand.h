#pragma once

// The stand of the loaded airport that is kept free for the user. Worker only.

#include <string>

namespace kst {

/// Chooses the reserved stand of the airport that was just loaded: the one that the head of the park list
/// names, if that is this airport and the stand exists. Shows it.
void chooseReservedStand();

/// Marks the reserved stand and the one under the user in the table of stands.
void lf_markReservedStands();

/// Another stand is kept free from now on; the aircraft on it is removed.
void changeReservedStand(const std::string& standId);

/// Removes what occupies the reserved stand: a static aircraft, else a parked live one.
void lf_clearUserStand();

/// Forgets the reserved stand: the airport is closed.
void resetReservedStand();

} // namespace kst
