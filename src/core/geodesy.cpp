#include "core/geodesy.h"

#include <algorithm>
#include <cmath>

namespace kst {

namespace {
constexpr double earthDiameterNm = 6875.493541569878;
constexpr double radPerFoot = 4.787404208238998e-8;

double sinSquared(double x) {
    const double s = std::sin(x);
    return s * s;
}
} // namespace

double gf_distanceNm(LatLon a, LatLon b) {
    const double phi1 = a.lat * radPerDeg;
    const double phi2 = b.lat * radPerDeg;
    const double h = sinSquared((phi2 - phi1) / 2) +
                     std::cos(phi1) * std::cos(phi2) * sinSquared((b.lon - a.lon) * radPerDeg / 2);
    return earthDiameterNm * std::asin(std::sqrt(std::clamp(h, 0.0, 1.0)));
}

double gf_bearing(LatLon a, LatLon b) {
    const double phi1 = a.lat * radPerDeg;
    const double phi2 = b.lat * radPerDeg;
    const double dLambda = (b.lon - a.lon) * radPerDeg;
    return wrapHeading(
        std::atan2(std::sin(dLambda) * std::cos(phi2),
                   std::cos(phi1) * std::sin(phi2) - std::sin(phi1) * std::cos(phi2) * std::cos(dLambda)));
}

LatLon gf_destination(LatLon p, double bearing, double feet) {
    const double phi1 = p.lat * radPerDeg;
    const double delta = feet * radPerFoot;
    const double sinPhi2 = std::clamp(
        std::cos(bearing) * std::cos(phi1) * std::sin(delta) + std::sin(phi1) * std::cos(delta), -1.0, 1.0);
    const double lambda2 =
        p.lon * radPerDeg + std::atan2(std::sin(bearing) * std::sin(delta) * std::cos(phi1),
                                       std::cos(delta) - sinPhi2 * std::sin(phi1));
    return {std::asin(sinPhi2) * degPerRad, wrapLongitude(lambda2 * degPerRad)};
}

double gf_angleDiff(double from, double to) {
    return std::remainder(to - from, 2 * pi);
}

double wrapHeading(double heading) {
    const double wrapped = std::fmod(heading, 2 * pi);
    if (wrapped >= 0) {
        return wrapped;
    }
    // A tiny negative angle rounds up to the full circle.
    const double positive = wrapped + 2 * pi;
    return positive < 2 * pi ? positive : 0.0;
}

double wrapLongitude(double lon) {
    return std::remainder(lon, 360.0);
}

} // namespace kst
