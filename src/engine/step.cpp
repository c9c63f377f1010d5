#include "core/geodesy.h"
#include "core/log.h"
#include "engine/curves.h"
#include "engine/flare.h"
#include "engine/prediction.h"
#include "engine/takeoff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kst {

namespace {

constexpr double headingTolerance = 0.5 * radPerDeg;
constexpr double furthestProgress = 0.999999;
constexpr double flareAglFt = 400.0;
/// Low enough that the simulator notices the contact.
constexpr double wheelsPressedFt = 0.3;

/// Turns towards a heading by the rate of the leg, the short way, and never past it.
void turnTowards(LiveAc& ac, double heading) {
    const double off = gf_angleDiff(ac.simState.heading, heading);
    if (std::abs(off) > headingTolerance) {
        const double turn = std::min(ac.turnRate, std::abs(off));
        ac.simState.heading = wrapHeading(ac.simState.heading + std::copysign(turn, off));
    }
}

void stepAlongCurve(LiveAc& ac) {
    ac.curveT = std::min(ac.curveStep + ac.curveT, furthestProgress);
    const auto point = lf_evalCurve(ac, ac.curveT);
    if (!point) {
        logLine(fmt::format("{} error in curve at index: {:.2F}", ac.callsign, ac.curveT));
        return;
    }
    ac.simState.lat = point->position.lat;
    ac.simState.lon = point->position.lon;
    // A pushed aircraft moves tail first.
    turnTowards(ac, ac.phase == AcPhase::PushBack ? wrapHeading(point->heading + pi) : point->heading);
}

void moveStraight(LiveAc& ac) {
    ac.simState.lat = std::clamp(ac.simState.lat + ac.dLat, -90.0, 90.0);
    ac.simState.lon += ac.dLon;
}

void stepHorizontally(LiveAc& ac) {
    if (curveActive(ac)) {
        stepAlongCurve(ac);
        return;
    }
    switch (ac.phase) {
    case AcPhase::TakeOff:
    case AcPhase::Air:
    case AcPhase::Parked:
    case AcPhase::Unknown:
        ac.simState.heading = wrapHeading(ac.simState.heading + ac.dHeading);
        moveStraight(ac);
        break;
    case AcPhase::PushBack:
    case AcPhase::AfterPush:
    case AcPhase::Taxi:
    case AcPhase::Parking:
        if (ac.phase == AcPhase::Parking || ac.turnOnly) {
            turnTowards(ac, ac.targetHeading);
        }
        if (ac.phase != AcPhase::AfterPush) {
            moveStraight(ac);
        }
        break;
    }
}

/// The nose rises to the flare's pitch and stays there.
void stepFlarePitch(LiveAc& ac) {
    const double pitch = ac.simState.pitch + ac.dPitch;
    ac.simState.pitch = ac.dPitch < 0.0 ? std::max(pitch, std::min(flarePitch, ac.simState.pitch))
                                        : std::min(pitch, std::max(flarePitch, ac.simState.pitch));
}

/// An aircraft that sinks faster than its ground contact is reported waits for the report on its wheels.
void stayAboveGround(LiveAc& ac) {
    if (!ac.onGround && ac.dAlt < 0.0 && ac.groundAltFt && ac.heightAgl <= flareAglFt) {
        ac.simState.altFt = std::max(ac.simState.altFt, *ac.groundAltFt + ac.cgHeightFt - wheelsPressedFt);
    }
}

void stepVertically(LiveAc& ac) {
    if (ac.heightAgl <= flareAglFt && ac.landing && !ac.onGround) {
        lf_flare(ac);
    }
    if (ac.flaring) {
        stepNoseDown(ac);
        return;
    }
    SimState& sim = ac.simState;
    if (ac.flareStage == 0 && ac.onGround) {
        sim.pitch = ac.staticPitch;
        sim.bank = 0.0;
        return;
    }
    if (ac.flareStage > 0) {
        stepFlarePitch(ac);
    } else {
        sim.pitch += ac.dPitch;
    }
    sim.bank += ac.dBank;
    sim.altFt += ac.dAlt;
    stayAboveGround(ac);
}

} // namespace

void lf_stepAc(LiveAc& ac) {
    stepHorizontally(ac);
    if (ac.phase == AcPhase::TakeOff) {
        stepTakeOff(ac);
    } else {
        stepVertically(ac);
    }
    ac.simState.lon = wrapLongitude(ac.simState.lon);
}

} // namespace kst
