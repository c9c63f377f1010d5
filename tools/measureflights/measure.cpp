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
