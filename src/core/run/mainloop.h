#pragma once

namespace kst {

/// Runs passes on a fixed grid of 10 ms until the run is to stop. Worker.
void mainLoop();

/// What `mainLoop` does before its first pass: the counters and the feed's gate.
void beginMainLoop();

/// One pass. False when the run is to stop. Worker, or a test that plays it.
bool lf_workKestrane();

} // namespace kst
