#pragma once

// The worker thread: start-up, the run, and what the exit needs to know of it.

namespace kst {

/// Starts a worker, after the earlier one has ended. User interface thread.
void startWorker();
/// Blocks until the present worker has left everything it does. Whoever waits has seen to it that it is asked
/// to stop. Exit thread.
void waitForWorkerEnd();
/// Joins the worker's thread at the end of the process.
void joinWorker();

/// Body of the worker thread: start-up, then the run.
void lf_startUpKestrane();

} // namespace kst
