#include "engine/curves.h"

#include "core/geodesy.h"

#include <cmath>
#include <limits>

namespace kst {

namespace {

constexpr double metresPerDegree = 111132.95;
/// Nearer to a pole than this the frame has no east.
constexpr double smallestCosine = 1e-6;

double eastMetresPerDegree(const LiveAc& ac) {
    return metresPerDegree * std::cos(ac.curveOrigin.lat * radPerDeg);
}

} // namespace

bool curveActive(const LiveAc& ac) {
    return !std::isnan(ac.curveEndNorth) && !std::isnan(ac.curveEndEast) &&
           !std::isnan(ac.curveControlNorth) && !std::isnan(ac.curveControlEast);
}

void clearCurve(LiveAc& ac) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    ac.curveEndNorth = none;
    ac.curveEndEast = none;
    ac.curveControlNorth = none;
    ac.curveControlEast = none;
    ac.curveT = 0.0;
}

void lf_buildCurve(LiveAc& ac) {
    if (ac.track.size() < 3) {
        return;
    }
    ac.curveOrigin = ac.simState.position();
    const double eastFactor = eastMetresPerDegree(ac);
    if (!(eastFactor > metresPerDegree * smallestCosine)) {
        return;
    }
    const TrackPoint& front = ac.track[0];
    const TrackPoint& second = ac.track[1];
    TrackPoint& third = ac.track[2];
    if (third.gsKt == 0.0) {
        third.gsKt = (front.gsKt + second.gsKt) / 2.0;
    }
    ac.curveControlNorth = (second.lat - ac.curveOrigin.lat) * metresPerDegree;
    ac.curveControlEast = wrapLongitude(second.lon - ac.curveOrigin.lon) * eastFactor;
    ac.curveEndNorth = (third.lat - ac.curveOrigin.lat) * metresPerDegree;
    ac.curveEndEast = wrapLongitude(third.lon - ac.curveOrigin.lon) * eastFactor;
    ac.track.erase(ac.track.begin() + 1);
}

std::optional<CurvePoint> lf_evalCurve(const LiveAc& ac, double t) {
    if (!(t >= 0.0 && t <= 1.0) || !curveActive(ac)) {
        return std::nullopt;
    }
    const double v = 1.0 - t;
    const double north = 2.0 * t * v * ac.curveControlNorth + t * t * ac.curveEndNorth;
    const double east = 2.0 * t * v * ac.curveControlEast + t * t * ac.curveEndEast;
    const double directionNorth =
        2.0 * t * (ac.curveEndNorth - ac.curveControlNorth) + 2.0 * v * ac.curveControlNorth;
    const double directionEast =
        2.0 * t * (ac.curveEndEast - ac.curveControlEast) + 2.0 * v * ac.curveControlEast;
    const LatLon position{ac.curveOrigin.lat + north / metresPerDegree,
                          wrapLongitude(ac.curveOrigin.lon + east / eastMetresPerDegree(ac))};
    if (!std::isfinite(position.lat) || !std::isfinite(position.lon)) {
        return std::nullopt;
    }
    return CurvePoint{position, wrapHeading(std::atan2(directionEast, directionNorth))};
}

} // namespace kst
