#pragma once

// What other threads ask of the worker because only it may touch the aircraft and stand tables. Drained at
// the start of each pass of the worker's loop (core/run).

#include "model/units.h"

#include <string>
#include <vector>

namespace kst {

struct WorkerRequest {
    enum class Kind {
        StoreUserStand, ///< keep the stand under the stopped user for the next visit
        UserMoved,      ///< find the stand under this position and show it
        NavLights,      ///< send the nav lights setting to all parked aircraft
        ApplyLiveLimit, ///< remove the farthest aircraft beyond the live limit
        AutoRange,      ///< work out the automatic range now
        SetDestination  ///< the airport `code` at `position` is the new destination
    };
    Kind kind;
    LatLon position{};
    std::string code{};
};

/// Any thread. A request replaces one of its kind that still waits.
void askWorker(const WorkerRequest& request);

/// Takes all waiting requests into `requests`, which is cleared first. Worker.
void takeWorkerRequests(std::vector<WorkerRequest>& requests);

} // namespace kst
