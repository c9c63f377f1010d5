#pragma once

// Which airport's stands are in use now: the one the user stands on, or the one that comes in sight. Worker.

namespace kst {

/// The periodic check which airport is the park airport now, and the load of the one that was chosen at the
/// check before. `showMessageLine` tells the user what is being worked out. Throws what the load throws.
void gf_checkForParkAirportUpdates(bool showMessageLine);

/// Forgets what was chosen, at the end of a run.
void resetParkAirportChoice();

} // namespace kst
