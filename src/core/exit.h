#pragma once

#include "model/exitreason.h"

#include <functional>

namespace kst {

/// The one way to end a run, from any thread. Does nothing while an exit is under way; otherwise stores the
/// reason and starts the exit on a thread of its own. `seconds` is the wait before the new start of a
/// restart.
void gf_requestExit(ExitReason reason, int seconds);

/// Who carries an exit out: called by `gf_requestExit` once `exitRequested` and `exitReason` are set, on the
/// caller's thread. Set once at process start (core/run), and by tests.
void setExitHandler(std::function<void(int seconds)> handler);

} // namespace kst
