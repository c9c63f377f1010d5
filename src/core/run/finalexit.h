#pragma once

namespace kst {

/// Makes `gf_requestExit` carry exits out on a thread of their own. Process start.
void installExit();
/// The operator closed the window: asks for the end of the process, also while a restart is under way. Any
/// thread.
void requestClose();
/// Waits for the exit thread at the end of the process.
void joinExit();

} // namespace kst
