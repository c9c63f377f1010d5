#pragma once

// The operator's window: created before the worker, alive for the whole process. User interface thread.

#include <functional>
#include <memory>

namespace kst {

/// What the window asks of the process.
struct WindowHooks {
    std::function<void()> startWorker;    ///< the posted message 32769: start a worker, ending an earlier one
    std::function<void()> closeRequested; ///< the close button
};

/// Creates window and controls at the stored position and makes it the display's sink. False when it cannot
/// be made.
bool createMainWindow(WindowHooks hooks);
/// Runs until the process is to end: on the posted message 32770 the position is saved and the loop ends.
int runMainWindow();
void destroyMainWindow();

} // namespace kst
