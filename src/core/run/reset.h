#pragma once

namespace kst {

/// Puts every table, queue, flag and shown value of a run back for the next one. What a restart keeps
/// (targets without a livery, removed ghosts) goes only when none follows. Exit thread with the worker
/// stopped, and tests.
void resetForNextRun(bool restartFollows);

} // namespace kst
