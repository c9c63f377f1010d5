#pragma once

namespace kst {

/// One run: waits for the simulator, then for RealTraffic, starts the readers and works until asked to stop.
/// Worker.
void lf_runKestrane();

/// Asks the simulator's dispatch thread to stop and waits until it has. Exit thread.
void stopSimClient();

} // namespace kst
