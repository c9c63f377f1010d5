#pragma once

// The line through a target's positions, and where on it something flies that should be there 30 seconds
// later. Shared by whatever holds a flown path against what the feed told.

#include "tools/measureflights/flights.h"

#include <limits>
#include <optional>
#include <vector>

namespace kst::tool {

inline constexpr double playDelaySeconds = static_cast<double>(playDelayTicks) / ticksPerSecond;
inline constexpr double secondsPerHour = 3600.0;

/// Of a set of values; zeros where there is none.
struct Spread {
    std::size_t count = 0;
    double min = 0.0;
    double median = 0.0;
    double p95 = 0.0;
    double max = 0.0;
};
Spread spreadOf(std::vector<double> values);

double metresBetween(LatLon a, LatLon b);

/// Where on the line an object is.
struct OnLine {
    double distanceM = std::numeric_limits<double>::infinity();
    double time = 0.0; ///< of the line
    double lagS = 0.0; ///< behind the line's time plus 30 seconds; negative is ahead
    double speedKt = 0.0;
    double altFt = 0.0;
    bool onGround = false; ///< one end of the piece is
};

/// The nearest place on each piece of the line that is passed within so many seconds of the moment at which
/// what is shown at `at` should be on it, in order; none when the line does not reach that moment. `line` in
/// order of time.
std::vector<OnLine> placesNear(const std::vector<TrackPoint>& line, double at, LatLon position,
                               double windowS);

/// The nearest of all places within 45 s of the expected moment: for a single place, or one far from others.
std::optional<OnLine> placeOnLine(const std::vector<TrackPoint>& line, double at, LatLon position);

/// The highest speed that the line tells within 15 s of this time, knots.
double highestSpeedKt(const std::vector<TrackPoint>& line, double time);

/// The place on the line at this moment, straight between its points, held at its ends. `line` is not empty.
TrackPoint pointAt(const std::vector<TrackPoint>& line, double time);

} // namespace kst::tool
