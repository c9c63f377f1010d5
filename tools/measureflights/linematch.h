#pragma once

// Where on the recorded line a whole flight was, moment by moment. A line that loops, crosses itself or runs
// up and down a circuit has several places that are equally near; the right one is that which continues the
// way along the line.

#include "tools/measureflights/line.h"

#include <optional>
#include <vector>

namespace kst::tool {

/// A moment of a flight that is to be found on the line.
struct ShownPlace {
    double at = 0.0; ///< in the line's seconds
    LatLon position;
    bool anew = false; ///< another object than before: nothing links it to the last place
};

/// The places on the line that together lie nearest to the flight while time on the line runs on as it does
/// for the flight. Nothing for moments that the line does not reach 30 s earlier. Both in order of time.
std::vector<std::optional<OnLine>> placesOnLine(const std::vector<TrackPoint>& line,
                                                const std::vector<ShownPlace>& shown);

} // namespace kst::tool
