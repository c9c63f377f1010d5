#pragma once

// Where and when a recorded target stands still on the ground.

#include "bench/realism/recordings.h"

#include <vector>

namespace kst::bench {

struct RecordedStop {
    double begin = 0.0; ///< in the time of the line
    double end = 0.0;
    LatLon place;
    bool fromStart = false; ///< the line begins with it
    bool leaves = false;    ///< the target is farther away later on
};

/// Every stay of 20 s or more on one spot, as far as a rounding feed tells, in order. At the line's end a
/// shorter one counts too.
std::vector<RecordedStop> stopsOf(const Line& line);

} // namespace kst::bench
