#include "standins/simulator/usermotion.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kst::standin {

namespace {

constexpr double secondsPerMinute = 60.0;

} // namespace

void UserMotion::hold() {
    straight(0.0, 0.0);
}

void UserMotion::straight(double speedKt, double vsFpm) {
    speedKt_ = speedKt;
    vsFpm_ = vsFpm;
    points_.clear();
}

void UserMotion::follow(std::vector<UserPoint> points) {
    points_ = std::move(points);
    scriptSeconds_ = 0.0;
    speedKt_ = 0.0;
    vsFpm_ = 0.0;
}

void UserMotion::advanceScript(Aircraft& user) {
    auto next = std::find_if(points_.begin(), points_.end(),
                             [&](const UserPoint& point) { return point.atSeconds > scriptSeconds_; });
    if (next == points_.begin()) {
        return;
    }
    const UserPoint& from = *std::prev(next);
    onGround_ = from.onGround;
    Placement& place = user.place;
    if (next == points_.end()) {
        place.lat = from.lat;
        place.lon = from.lon;
        place.altFt = from.altFt;
        speedKt_ = 0.0;
        vsFpm_ = 0.0;
        return;
    }
    const double legSeconds = next->atSeconds - from.atSeconds;
    const double share = (scriptSeconds_ - from.atSeconds) / legSeconds;
    place.lat = std::lerp(from.lat, next->lat, share);
    place.lon = from.lon + std::remainder(next->lon - from.lon, 360.0) * share;
    place.altFt = std::lerp(from.altFt, next->altFt, share);
    const double metres = groundDistanceM(from.lat, from.lon, next->lat, next->lon);
    if (metres > 1.0) {
        const double dLon = std::remainder(next->lon - from.lon, 360.0) * std::cos(from.lat * radPerDeg);
        place.headingRad = wrapHeading(std::atan2(dLon, next->lat - from.lat));
    }
    speedKt_ = metres / metresPerNm / legSeconds * secondsPerHour;
    vsFpm_ = (next->altFt - from.altFt) / legSeconds * secondsPerMinute;
}

void UserMotion::advance(Aircraft& user, const Terrain& terrain, double seconds) {
    Placement& place = user.place;
    if (points_.empty()) {
        moveOverGround(place.lat, place.lon, place.headingRad,
                       speedKt_ * metresPerNm / secondsPerHour * seconds);
        place.altFt += vsFpm_ / secondsPerMinute * seconds;
    } else {
        scriptSeconds_ += seconds;
        advanceScript(user);
    }
    if (onGround_)
        place.altFt = terrain.heightFt(place.lat, place.lon) + user.sizes.cgToGroundFt;
    user.groundSpeedKt = speedKt_;
    user.airspeedKt = speedKt_;
    user.vsFps = onGround_ ? 0.0 : vsFpm_ / secondsPerMinute;
}

} // namespace kst::standin
