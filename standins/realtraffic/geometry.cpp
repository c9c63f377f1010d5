#include "geometry.h"

#include <algorithm>
#include <cmath>

namespace kst::standin {

namespace {
constexpr double earthRadiusNm = 3440.065;
}

double distanceNm(LatLon a, LatLon b) {
    const double halfLat = (b.lat - a.lat) * radPerDeg / 2.0;
    const double halfLon = (b.lon - a.lon) * radPerDeg / 2.0;
    const double chord = std::sin(halfLat) * std::sin(halfLat) + std::cos(a.lat * radPerDeg) *
                                                                     std::cos(b.lat * radPerDeg) *
                                                                     std::sin(halfLon) * std::sin(halfLon);
    return 2.0 * earthRadiusNm * std::asin(std::sqrt(std::clamp(chord, 0.0, 1.0)));
}

double courseDeg(LatLon a, LatLon b) {
    const double lon = (b.lon - a.lon) * radPerDeg;
    const double latA = a.lat * radPerDeg;
    const double latB = b.lat * radPerDeg;
    const double east = std::sin(lon) * std::cos(latB);
    const double north = std::cos(latA) * std::sin(latB) - std::sin(latA) * std::cos(latB) * std::cos(lon);
    return wrapped360(std::atan2(east, north) * degPerRad);
}

LatLon moved(LatLon from, double courseDegrees, double nm) {
    const double angle = nm / earthRadiusNm;
    const double course = courseDegrees * radPerDeg;
    const double lat = from.lat * radPerDeg;
    const double newLat =
        std::asin(std::sin(lat) * std::cos(angle) + std::cos(lat) * std::sin(angle) * std::cos(course));
    const double lon = std::atan2(std::sin(course) * std::sin(angle) * std::cos(lat),
                                  std::cos(angle) - std::sin(lat) * std::sin(newLat));
    const double newLon = wrapped360(from.lon + lon * degPerRad + 180.0) - 180.0;
    return {newLat * degPerRad, newLon};
}

double wrapped360(double degrees) {
    const double rest = std::fmod(degrees, 360.0);
    const double turned = rest < 0.0 ? rest + 360.0 : rest;
    return turned >= 360.0 ? 0.0 : turned;
}

double turnDeg(double from, double to) {
    const double turn = wrapped360(to - from);
    return turn > 180.0 ? turn - 360.0 : turn;
}

} // namespace kst::standin
