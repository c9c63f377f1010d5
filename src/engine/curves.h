#pragma once

// A corner on the ground is a quadratic Bezier curve from where the aircraft is, round the second point, to
// the third; in a flat frame of metres north and east of its start. Worker only.

#include "model/aircraft.h"

#include <optional>

namespace kst {

struct CurvePoint {
    LatLon position;
    double heading = 0.0; ///< radians, direction of travel
};

bool curveActive(const LiveAc& ac);
void clearCurve(LiveAc& ac);
/// Builds the curve round the second point and erases that point. Nothing with fewer than three points, or at
/// a pole, where the frame has no east.
void lf_buildCurve(LiveAc& ac);
/// Position and heading at progress `t`; nothing outside 0 to 1 or without a curve.
std::optional<CurvePoint> lf_evalCurve(const LiveAc& ac, double t);

} // namespace kst
