#pragma once

// Everything that runs periodically on the worker, gated by the simulator's seconds.

#include "core/workerinbox.h"

#include <cstdint>

namespace kst {

/// Once a simulator second.
void lf_everySecond();
/// What is due at this second besides: each check on its own multiple, so that they do not fall together.
void lf_servePeriods(std::uint32_t tick);
/// Re-reads the park airports if the operator asked for it and no renewal runs.
void lf_serveReRead();
/// The automatic range from the user's state. Sets the working range and shows the value.
void lf_autoRange();
/// Carries out what another thread asked of the worker.
void lf_serveWorkerRequest(const WorkerRequest& request);

} // namespace kst
