#include "standins/simulator/terrain.h"

#include <algorithm>
#include <cmath>

namespace kst::standin {

namespace {

constexpr double earthRadiusM = 6371008.8;
/// One hill every third of a degree, some 20 nm: slopes stay below one in a hundred.
constexpr double hillsPerDegree = 3.0;

} // namespace

double groundDistanceM(double latA, double lonA, double latB, double lonB) {
    const double dLat = std::sin((latB - latA) * radPerDeg / 2.0);
    const double dLon = std::sin((lonB - lonA) * radPerDeg / 2.0);
    const double h = dLat * dLat + std::cos(latA * radPerDeg) * std::cos(latB * radPerDeg) * dLon * dLon;
    return 2.0 * earthRadiusM * std::asin(std::sqrt(std::clamp(h, 0.0, 1.0)));
}

void moveOverGround(double& latDeg, double& lonDeg, double bearingRad, double metres) {
    const double delta = metres / earthRadiusM;
    const double lat = latDeg * radPerDeg;
    const double sinLat = std::clamp(
        std::sin(lat) * std::cos(delta) + std::cos(lat) * std::sin(delta) * std::cos(bearingRad), -1.0, 1.0);
    const double dLon = std::atan2(std::sin(bearingRad) * std::sin(delta) * std::cos(lat),
                                   std::cos(delta) - std::sin(lat) * sinLat);
    latDeg = std::asin(sinLat) / radPerDeg;
    lonDeg = std::remainder(lonDeg + dLon / radPerDeg, 360.0);
}

double wrapHeading(double rad) {
    const double wrapped = std::fmod(rad, 2.0 * pi);
    return wrapped < 0.0 ? wrapped + 2.0 * pi : wrapped;
}

void Terrain::setHills(double meanFt, double amplitudeFt) {
    meanFt_ = meanFt;
    amplitudeFt_ = amplitudeFt;
}

void Terrain::addAirport(double lat, double lon, double elevationFt, double flatNm) {
    airports_.push_back({lat, lon, elevationFt, flatNm * metresPerNm});
}

double Terrain::heightFt(double lat, double lon) const {
    const double hills = meanFt_ + amplitudeFt_ * std::sin(lat * 2.0 * pi * hillsPerDegree) *
                                       std::sin(lon * 2.0 * pi * hillsPerDegree);
    const Airport* nearest = nullptr;
    double nearestM = 0.0;
    for (const Airport& airport : airports_) {
        const double distance = groundDistanceM(lat, lon, airport.lat, airport.lon);
        if (nearest == nullptr || distance < nearestM) {
            nearest = &airport;
            nearestM = distance;
        }
    }
    if (nearest == nullptr)
        return hills;
    const double outward = std::clamp(nearestM / nearest->flatM - 1.0, 0.0, 1.0);
    const double smooth = outward * outward * (3.0 - 2.0 * outward);
    return nearest->elevationFt + smooth * (hills - nearest->elevationFt);
}

} // namespace kst::standin
