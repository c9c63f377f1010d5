#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>

namespace kst::tool {

namespace {

/// Only this much of the line round the expected moment counts, so that a holding aircraft is not held
/// against an earlier round.
constexpr double windowSeconds = 45.0;
/// Between places that are equally near to within this, the one nearer in time counts.
constexpr double sameDistanceM = 0.5;
/// The speed that explains a step is the highest told within this time.
constexpr double speedWindowSeconds = 15.0;

struct Metres {
    double east = 0.0;
    double north = 0.0;
};

Metres metresFrom(LatLon origin, LatLon point) {
    const double perDegree = 60.0 * metresPerNm;
    double lon = point.lon - origin.lon;
    lon -= 360.0 * std::round(lon / 360.0);
    return {lon * perDegree * std::cos(origin.lat * radPerDeg), (point.lat - origin.lat) * perDegree};
}

using Points = std::vector<TrackPoint>;

Points::const_iterator firstAfter(const Points& points, double time) {
    return std::upper_bound(points.begin(), points.end(), time,
                            [](double t, const TrackPoint& point) { return t < point.time; });
}

/// The place on the straight piece from a to b nearest to `position`, which should be passed at `expected`.
OnLine placeOnPiece(const TrackPoint& a, const TrackPoint& b, LatLon position, double expected) {
    const Metres toA = metresFrom(position, a.position);
    const Metres toB = metresFrom(position, b.position);
    const double east = toB.east - toA.east;
    const double north = toB.north - toA.north;
    const double length = std::hypot(east, north);
    const double seconds = b.time - a.time;
    double share = seconds > 0.0 ? std::clamp((expected - a.time) / seconds, 0.0, 1.0) : 0.0;
    if (length > sameDistanceM) {
        share = std::clamp(-(toA.east * east + toA.north * north) / (length * length), 0.0, 1.0);
    }
    OnLine place;
    place.distanceM = std::hypot(toA.east + share * east, toA.north + share * north);
    place.time = a.time + share * seconds;
    place.lagS = expected - place.time;
    place.speedKt = seconds > 0.0 ? length / metresPerNm / seconds * secondsPerHour : 0.0;
    place.altFt = a.altFt + share * (b.altFt - a.altFt);
    place.onGround = a.onGround || b.onGround;
    return place;
}

} // namespace

Spread spreadOf(std::vector<double> values) {
    if (values.empty()) {
        return {};
    }
    std::sort(values.begin(), values.end());
    return {values.size(), values.front(), values[values.size() / 2],
            values[std::min(values.size() - 1, values.size() * 95 / 100)], values.back()};
}

double metresBetween(LatLon a, LatLon b) {
    const Metres way = metresFrom(a, b);
    return std::hypot(way.east, way.north);
}

std::vector<OnLine> placesNear(const Points& line, double at, LatLon position, double windowS) {
    const double expected = at - playDelaySeconds;
    std::vector<OnLine> places;
    if (line.size() < 2 || expected < line.front().time || expected > line.back().time) {
        return places;
    }
    auto a = firstAfter(line, expected - windowS);
    a -= a == line.begin() ? 0 : 1;
    for (; a + 1 != line.end() && a->time <= expected + windowS; ++a) {
        places.push_back(placeOnPiece(*a, *(a + 1), position, expected));
    }
    return places;
}

std::optional<OnLine> placeOnLine(const Points& line, double at, LatLon position) {
    std::optional<OnLine> best;
    for (const OnLine& place : placesNear(line, at, position, windowSeconds)) {
        const bool nearer = !best || place.distanceM < best->distanceM - sameDistanceM;
        const bool asNear = !best || place.distanceM < best->distanceM + sameDistanceM;
        if (nearer || (asNear && std::abs(place.lagS) < std::abs(best->lagS))) {
            best = place;
        }
    }
    return best;
}

double highestSpeedKt(const Points& line, double time) {
    auto point = firstAfter(line, time - speedWindowSeconds);
    point -= point == line.begin() ? 0 : 1;
    double speed = 0.0;
    for (; point != line.end(); ++point) {
        speed = std::max(speed, point->gsKt);
        if (point->time > time + speedWindowSeconds) {
            break;
        }
    }
    return speed;
}

TrackPoint pointAt(const Points& line, double time) {
    const auto after = firstAfter(line, time);
    if (after == line.begin() || after == line.end()) {
        return after == line.end() ? line.back() : line.front();
    }
    const TrackPoint& a = *(after - 1);
    const TrackPoint& b = *after;
    const double share = (time - a.time) / (b.time - a.time);
    const double lon = std::remainder(b.position.lon - a.position.lon, 360.0);
    TrackPoint point = a;
    point.time = time;
    point.position = {a.position.lat + share * (b.position.lat - a.position.lat),
                      a.position.lon + share * lon};
    point.altFt = a.altFt + share * (b.altFt - a.altFt);
    point.gsKt = a.gsKt + share * (b.gsKt - a.gsKt);
    return point;
}

} // namespace kst::tool
