#pragma once

namespace kst {

/// Reads parameters, creates folders, reads the reference database and the airport directory, finds the
/// simulator and RealTraffic, sets the controls for a new run. Worker. Throws what has to end the start.
void lf_initialise();

/// Clamps the entered range and derives the working range from it.
void lf_takeEnteredRange();

} // namespace kst
