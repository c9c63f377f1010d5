#include "tools/measureflights/measure.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace kst::tool {

namespace {

constexpr double playDelaySeconds = static_cast<double>(playDelayTicks) / ticksPerSecond;
/// Only this much of the line round the expected moment counts, so that a holding aircraft is not held
/// against an earlier round.
constexpr double windowSeconds = 45.0;
/// Between places that are equally near to within this, the one nearer in time counts.
constexpr double sameDistanceM = 0.5;
/// On a line that moves slower than this, a lead or lag in time means nothing.
constexpr double slowestForTimeKt = 5.0;
/// Frames farther apart are no neighbours: the object was not recorded between them.
constexpr double longestStepSeconds = 2.0;
/// The speed that explains a step is the highest told within this time.
constexpr double speedWindowSeconds = 15.0;
constexpr double secondsPerHour = 3600.0;
/// An object is created, taken over and left to settle before it flies.
constexpr double appearingSeconds = 6.0;

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

double metresBetween(LatLon a, LatLon b) {
    const Metres way = metresFrom(a, b);
    return std::hypot(way.east, way.north);
}

Spread spreadOf(std::vector<double>& values) {
    Spread spread;
    spread.count = values.size();
    if (values.empty()) {
        return spread;
    }
    std::sort(values.begin(), values.end());
    spread.median = values[values.size() / 2];
    spread.p95 = values[std::min(values.size() - 1, values.size() * 95 / 100)];
    spread.max = values.back();
    return spread;
}

/// Where on the line an object is.
struct OnLine {
    double distanceM = std::numeric_limits<double>::infinity();
    double lagS = 0.0;
    double speedKt = 0.0;
    double altFt = 0.0;
    bool onGround = false;
};

using Points = std::vector<TrackPoint>;

Points::const_iterator firstAfter(const Points& points, double time) {
    return std::upper_bound(points.begin(), points.end(), time,
                            [](double t, const TrackPoint& point) { return t < point.time; });
}

/// The place on the piece from a to b that is nearest to `position`, which should be passed at `expected`.
OnLine onPiece(const TrackPoint& a, const TrackPoint& b, LatLon position, double expected) {
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
    place.lagS = expected - (a.time + share * seconds);
    place.speedKt = seconds > 0.0 ? length / metresPerNm / seconds * secondsPerHour : 0.0;
    place.altFt = a.altFt + share * (b.altFt - a.altFt);
    place.onGround = a.onGround || b.onGround;
    return place;
}

/// The nearest place on the target's line; nothing when the line does not reach the expected moment.
std::optional<OnLine> placeOnLine(const Points& line, const TrackPoint& shown) {
    const double expected = shown.time - playDelaySeconds;
    if (line.size() < 2 || expected < line.front().time || expected > line.back().time) {
        return std::nullopt;
    }
    auto from = firstAfter(line, expected - windowSeconds);
    from -= from == line.begin() ? 0 : 1;
    OnLine best;
    for (auto a = from; a + 1 != line.end() && a->time <= expected + windowSeconds; ++a) {
        const OnLine place = onPiece(*a, *(a + 1), shown.position, expected);
        const bool nearer = place.distanceM < best.distanceM - sameDistanceM;
        const bool asNear = place.distanceM < best.distanceM + sameDistanceM;
        if (nearer || (asNear && std::abs(place.lagS) < std::abs(best.lagS))) {
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

/// Values of one phase, or of one object, before they become figures.
struct Samples {
    std::vector<double> fromLine;
    std::vector<double> timeOff;
    std::vector<double> lag;
    std::vector<double> altitudeOff;
    Step worstStep;
    std::size_t objects = 0;
};

void noteStep(Step& worst, const Step& step) {
    if (step.overM > worst.overM) {
        worst = step;
    }
}

class Pair {
public:
    Pair(const ShownObject& object, const Target& target, Samples& air, Samples& ground, Step& appearing)
        : object_(object), target_(target), air_(air), ground_(ground), appearing_(appearing) {}

    ObjectFigures measure() {
        ObjectFigures figures;
        figures.object = &object_;
        figures.target = &target_;
        const TrackPoint* last = nullptr;
        for (const TrackPoint& point : object_.points) {
            if (last != nullptr) {
                figures.withoutTrack += step(*last, point) ? 0U : 1U;
            }
            place(point);
            last = &point;
        }
        air_.objects += inAir_ ? 1U : 0U;
        ground_.objects += onGround_ ? 1U : 0U;
        figures.samples = own_.fromLine.size();
        figures.fromLineM = spreadOf(own_.fromLine);
        figures.timeOffS = spreadOf(own_.timeOff);
        figures.worstStep = own_.worstStep;
        return figures;
    }

private:
    void place(const TrackPoint& point) {
        const auto found = placeOnLine(target_.points, point);
        if (!found || found->onGround != point.onGround) {
            return;
        }
        (point.onGround ? onGround_ : inAir_) = true;
        for (Samples* samples : {point.onGround ? &ground_ : &air_, &own_}) {
            samples->fromLine.push_back(found->distanceM);
            if (found->speedKt >= slowestForTimeKt) {
                samples->timeOff.push_back(std::abs(found->lagS));
                samples->lag.push_back(found->lagS);
            }
            if (!point.onGround) {
                samples->altitudeOff.push_back(std::abs(point.altFt - found->altFt));
            }
        }
    }

    /// False when the target's line does not reach this moment, so that no speed explains a step.
    bool step(const TrackPoint& from, const TrackPoint& to) {
        const double expected = to.time - playDelaySeconds;
        const Points& line = target_.points;
        if (line.empty() || expected < line.front().time || expected > line.back().time) {
            return false;
        }
        const double seconds = to.time - from.time;
        if (seconds <= 0.0 || seconds > longestStepSeconds) {
            return true;
        }
        Step step;
        step.stepM = metresBetween(from.position, to.position);
        step.explainedM = highestSpeedKt(line, expected) * metresPerNm / secondsPerHour * seconds;
        step.overM = std::max(0.0, step.stepM - step.explainedM);
        step.seconds = seconds;
        step.tailNumber = object_.tailNumber;
        step.time = to.time;
        if (to.time - object_.points.front().time <= appearingSeconds) {
            noteStep(appearing_, step);
            return true;
        }
        noteStep(own_.worstStep, step);
        noteStep((to.onGround ? ground_ : air_).worstStep, step);
        return true;
    }

    const ShownObject& object_;
    const Target& target_;
    Samples& air_;
    Samples& ground_;
    Step& appearing_;
    Samples own_;
    bool inAir_ = false;
    bool onGround_ = false;
};

PhaseFigures figuresOf(Samples& samples) {
    PhaseFigures figures;
    figures.objects = samples.objects;
    figures.fromLineM = spreadOf(samples.fromLine);
    figures.timeOffS = spreadOf(samples.timeOff);
    figures.medianLagS = spreadOf(samples.lag).median;
    figures.altitudeOffFt = spreadOf(samples.altitudeOff);
    figures.worstStep = samples.worstStep;
    return figures;
}

using Names = std::unordered_multimap<std::string, const Target*>;

/// The target that an object shows: of those that bear its tail number, the one nearest to it at the
/// beginning.
const Target* targetOf(const ShownObject& object, const Names& names) {
    const Target* nearest = nullptr;
    double nearestM = std::numeric_limits<double>::infinity();
    const auto [begin, end] = names.equal_range(object.tailNumber);
    for (auto name = begin; name != end; ++name) {
        const Points& line = name->second->points;
        const TrackPoint& shown = object.points.front();
        const auto next = firstAfter(line, shown.time - playDelaySeconds);
        const double metres =
            metresBetween((next == line.end() ? line.back() : *next).position, shown.position);
        if (metres < nearestM) {
            nearest = name->second;
            nearestM = metres;
        }
    }
    return nearest;
}

} // namespace

Measured measure(const Flights& flights) {
    Names names;
    for (const Target& target : flights.targets) {
        if (!target.callsign.empty()) {
            names.emplace(target.callsign, &target);
        }
        if (!target.registration.empty() && target.registration != target.callsign) {
            names.emplace(target.registration, &target);
        }
    }
    Measured measured;
    measured.targets = flights.targets.size();
    Samples air;
    Samples ground;
    for (const ShownObject& object : flights.objects) {
        if (object.tailNumber.ends_with('*')) {
            ++measured.parked;
            continue;
        }
        ++measured.objects;
        const Target* target = targetOf(object, names);
        if (target == nullptr) {
            ++measured.unmatched;
            continue;
        }
        measured.byObject.push_back(Pair(object, *target, air, ground, measured.appearing).measure());
        measured.withoutTrack += measured.byObject.back().withoutTrack;
    }
    measured.air = figuresOf(air);
    measured.ground = figuresOf(ground);
    return measured;
}

} // namespace kst::tool
