#pragma once

// The operator's window: created before the worker, alive for the whole process. User interface thread.

#include <functional>

namespace kst {

/// Numbers posted to the window.
inline constexpr int startWorkerMessage = 32769;
inline constexpr int quitMessage = 32770;

/// What the window asks of the process.
struct WindowHooks {
    std::function<void()> startWorker;    ///< on `startWorkerMessage`: start a worker, ending an earlier one
    std::function<void()> closeRequested; ///< the close button, or a signal to end
};

/// Creates window and controls at the stored position and makes it the display's sink. False when it cannot
/// be made.
bool createMainWindow(WindowHooks hooks);
/// Runs until the process is to end: on `quitMessage` the position is saved and the loop ends. Returns the
/// process's result.
int runMainWindow();
/// From here on the display has no window; a thread that still writes to it does no harm.
void destroyMainWindow();

} // namespace kst
