#pragma once

// Great-circle geometry on the sphere of 3437.746770784939 nm radius.

#include "model/units.h"

namespace kst {

/// Great-circle distance in nautical miles, by the haversine formula.
double gf_distanceNm(LatLon a, LatLon b);

/// Initial bearing from a to b, radians, 0 to 2 pi.
double gf_bearing(LatLon a, LatLon b);

/// The point `feet` away from p on `bearing` (radians).
LatLon gf_destination(LatLon p, double bearing, double feet);

/// Signed shortest angle from one heading to another, radians, within plus or minus pi.
double gf_angleDiff(double from, double to);

/// The same heading within 0 to 2 pi (2 pi excluded), radians.
double wrapHeading(double heading);

/// The same longitude within plus or minus 180, degrees.
double wrapLongitude(double lon);

} // namespace kst
