#include "tools/measureflights/measure.h"

#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace kst::tool {

namespace {

/// On a line that moves slower than this, a lead or lag in time means nothing.
constexpr double slowestForTimeKt = 5.0;
/// Frames farther apart are no neighbours: the object was not recorded between them.
constexpr double longestStepSeconds = 2.0;
/// An object is created, taken over and left to settle before it flies.
constexpr double appearingSeconds = 6.0;

using Points = std::vector<TrackPoint>;

void noteStep(Step& worst, const Step& step) {
    if (step.overM > worst.overM) {
        worst = step;
    }
}

/// Holds one object against its target.
class Pair {
public:
    Pair(const ShownObject& object, const Target& target, Measured& all)
        : all_(all), own_{&object, &target, {}} {}

    ObjectFigures measure() {
        const TrackPoint* last = nullptr;
        for (const TrackPoint& point : own_.object->points) {
            if (last != nullptr) {
                step(*last, point);
            }
            place(point);
            last = &point;
        }
        all_.air.objects += inAir_ ? 1U : 0U;
        all_.ground.objects += onGround_ ? 1U : 0U;
        return std::move(own_);
    }

private:
    void place(const TrackPoint& point) {
        const auto found = placeOnLine(own_.target->points, point.time, point.position);
        if (!found || found->onGround != point.onGround) {
            return;
        }
        (point.onGround ? onGround_ : inAir_) = true;
        for (PathFigures* path : {point.onGround ? &all_.ground : &all_.air, &own_.path}) {
            path->fromLineM.push_back(found->distanceM);
            if (found->speedKt >= slowestForTimeKt) {
                path->lagS.push_back(found->lagS);
                path->timeOffS.push_back(std::abs(found->lagS));
            }
            if (!point.onGround) {
                path->altitudeOffFt.push_back(std::abs(point.altFt - found->altFt));
            }
        }
    }

    void step(const TrackPoint& from, const TrackPoint& to) {
        const double expected = to.time - playDelaySeconds;
        const Points& line = own_.target->points;
        if (line.empty() || expected < line.front().time || expected > line.back().time) {
            ++all_.withoutTrack; // no speed explains a step
            return;
        }
        const double seconds = to.time - from.time;
        if (seconds <= 0.0 || seconds > longestStepSeconds) {
            return;
        }
        Step step;
        step.stepM = metresBetween(from.position, to.position);
        step.explainedM = highestSpeedKt(line, expected) * metresPerNm / secondsPerHour * seconds;
        step.overM = std::max(0.0, step.stepM - step.explainedM);
        step.seconds = seconds;
        step.tailNumber = own_.object->tailNumber;
        step.time = to.time;
        if (to.time - own_.object->points.front().time <= appearingSeconds) {
            noteStep(all_.appearing, step);
            return;
        }
        noteStep(own_.path.worstStep, step);
        noteStep((to.onGround ? all_.ground : all_.air).worstStep, step);
    }

    Measured& all_;
    ObjectFigures own_;
    bool inAir_ = false;
    bool onGround_ = false;
};

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
        const double metres =
            metresBetween(pointAt(line, shown.time - playDelaySeconds).position, shown.position);
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
        measured.byObject.push_back(Pair(object, *target, measured).measure());
    }
    return measured;
}

} // namespace kst::tool
