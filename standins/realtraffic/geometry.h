#pragma once

// Great-circle geometry of the stand-in, degrees and nautical miles, on a sphere of 3440.065 nm (6371 km).

#include "model/units.h"

namespace kst::standin {

double distanceNm(LatLon a, LatLon b);
/// Initial course from a to b, degrees, 0 to 360; 0 for equal points.
double courseDeg(LatLon a, LatLon b);
/// The point `nm` from `from` on `courseDegrees`.
LatLon moved(LatLon from, double courseDegrees, double nm);
/// The same angle within 0 to 360 (360 excluded).
double wrapped360(double degrees);
/// Signed shortest turn between two courses, within plus or minus 180.
double turnDeg(double from, double to);

} // namespace kst::standin
