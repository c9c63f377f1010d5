#pragma once

namespace kst {

/// The renewal: adjusts the population of the loaded airport to the present half hour. Decides which parked
/// aircraft stay, removes the others and fills `parkQueue` with those to come. Worker.
void lf_parkingAdjustments();

} // namespace kst
