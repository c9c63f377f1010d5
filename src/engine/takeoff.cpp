#include "engine/takeoff.h"

#include "core/log.h"
#include "engine/categories.h"
#include "engine/configuration.h"
#include "engine/curves.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "engine/standselection.h"
#include "engine/tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace kst {

namespace {

constexpr double rollingKt = 43.0;
constexpr double climbingFpm = 256.0;
constexpr double leastLiftFt = 0.1;
constexpr double climbedOutAglFt = 800.0;

// Counts of `groundCountdown` after lift-off at which more of the climb rate is flown.
constexpr int liftOffCount = 0;
constexpr int fifthCount = -100;
constexpr int halfCount = -200;
constexpr int fullCount = -300;

/// How much of the leg's climb rate is flown at this count.
double climbShare(int count) {
    if (count >= liftOffCount) {
        return 0.0;
    }
    if (count > fifthCount) {
        return 1.0 / 10.0;
    }
    if (count > halfCount) {
        return 1.0 / 5.0;
    }
    return count > fullCount ? 1.0 / 2.0 : 1.0;
}

void rotate(LiveAc& ac) {
    ac.onGround = false;
    if (ac.simState.pitch > ac.rotatePitch) {
        ac.simState.pitch += ac.dPitch;
    }
}

void climbOut(LiveAc& ac) {
    SimState& sim = ac.simState;
    sim.bank += ac.dBank;
    if (sim.pitch > ac.climbPitch && ac.climbOutTicks > 0) {
        sim.pitch += (ac.climbPitch - ac.rotatePitch) / ac.climbOutTicks;
    }
    sim.altFt += ac.dAlt * climbShare(ac.groundCountdown);
    if (ac.groundCountdown == fullCount) {
        lf_setGear(ac, false);
    }
    const bool climbPitchReached = sim.pitch <= ac.climbPitch || ac.climbOutTicks <= 0;
    if (ac.groundCountdown < fullCount && climbPitchReached) {
        ac.dPitch = 0.0;
        if (ac.heightAgl >= climbedOutAglFt) {
            setThrottleByCategory(ac, 3);
            setPhase(ac, AcPhase::Air);
            ac.groundCountdown = 1;
        }
    }
}

} // namespace

bool lf_isFast(const LiveAc& ac) {
    const double takeOffSpeedKt = categoryLimits(ac.category).takeOffSpeedKt;
    return std::all_of(ac.track.begin() + 1, ac.track.end(),
                       [&](const TrackPoint& point) { return point.gsKt >= takeOffSpeedKt; });
}

bool lf_allAirborne(const LiveAc& ac) {
    return std::all_of(ac.track.begin() + 1, ac.track.end(),
                       [](const TrackPoint& point) { return point.airborne; });
}

void checkTakeOff(LiveAc& ac) {
    if (!ac.departing || ac.phase == AcPhase::TakeOff || !(ac.track.front().gsKt >= rollingKt)) {
        return;
    }
    const bool climbing = std::all_of(ac.track.begin() + 1, ac.track.end(),
                                      [](const TrackPoint& point) { return point.vsFpm > climbingFpm; });
    const bool airborne = lf_allAirborne(ac);
    if (climbing && airborne) {
        const double rise = ac.track[1].altFt - ac.simState.altFt;
        ac.dAlt = std::max(rise, leastLiftFt) / lf_stepsToNext(ac);
        lf_takeOff(ac);
    } else if (climbing || (airborne && lf_isFast(ac))) {
        ac.dAlt = ac.maxClimbStep;
        lf_takeOff(ac);
    }
}

void lf_takeOff(LiveAc& ac) {
    SimState& sim = ac.simState;
    ac.groundCountdown = ac.rotateTicks;
    ac.dPitch = ac.rotateTicks > 0 ? (ac.rotatePitch - sim.pitch) / ac.rotateTicks : 0.0;
    sim.bank = 0.0;
    ac.dBank = 0.0;
    if (!ac.departing) {
        lf_startDeparture(ac);
    }
    setPhase(ac, AcPhase::TakeOff);
    clearCurve(ac);
    ac.dHeading = 0.0;
    // A flare or a lowering nose that was still under way would hold the altitude in the climb.
    ac.flaring = false;
    ac.flareStage = 0;
    if (ac.rollingOut) {
        ac.rollingOut = false;
        ac.landing = false;
        ac.landed = false;
        setThrottleByCategory(ac, 4);
        setSpoilers(ac, spoilersExtended);
        lf_setFlaps(ac, 1);
    }
}

void lf_startDeparture(LiveAc& ac) {
    if (ac.towed) {
        logLine(fmt::format("towed aircraft takes-off? {}", describe(ac)));
    }
    ac.departing = true;
    lf_setThrottle(ac, 0);
    setSpoilers(ac, spoilersRetracted);
    lf_setFlaps(ac, 1);
    ac.landing = false;
    ac.landed = false;
    ac.goAroundDone = false;
    sendLights(ac, light_sets::departure);
    widenDriftLimits(ac);
    if (!ac.airline.empty()) {
        lf_learnSoft(ac, true);
    }
}

void stepTakeOff(LiveAc& ac) {
    if (ac.groundCountdown > std::numeric_limits<int>::min()) {
        --ac.groundCountdown;
    }
    if (ac.groundCountdown >= 1) {
        rotate(ac);
    } else {
        climbOut(ac);
    }
}

} // namespace kst
