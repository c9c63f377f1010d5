#include "engine/flare.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/configuration.h"
#include "engine/prediction.h"
#include "engine/tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kst {

namespace {

struct FlareStage {
    double aboveGearFt; ///< begins at this height of the wheels
    double dAlt;        ///< feet per tick
    double vsFpm;
};

constexpr std::array<FlareStage, 4> flareStages = {{
    {30.0, -0.1, -601.0},
    {20.0, -0.075, -450.0},
    {10.0, -0.05, -300.0},
    {3.0, -0.025, -150.0},
}};
constexpr int idleStage = 2;

constexpr double runwayLeftDeg = 15.0;
constexpr double slowRolloutKt = 90.0;

/// The height that begins the flare: above the field where that is known, which the simulator's reports lag.
double heightForFlare(LiveAc& ac) {
    if (!ac.flareElevation) {
        if (const auto airport = parkAirportPlace()) {
            ac.flareElevation = airport->elevationFt;
        }
    }
    ac.heightFlare = ac.flareElevation ? ac.simState.altFt - *ac.flareElevation : ac.heightAgl;
    return std::min(ac.heightAgl, ac.heightFlare);
}

void lowerNose(LiveAc& ac) {
    const double ticks = ac.derotateTicks;
    if (ticks > 0.0) {
        ac.dBank = -ac.simState.bank / ticks;
        ac.dPitch = (ac.staticPitch - ac.simState.pitch) / ticks;
    } else {
        logLine(fmt::format("{} ! onGround slots {:.1F}", ac.callsign, ticks));
        ac.dBank = 0.0;
        ac.dPitch = ac.staticPitch;
    }
}

} // namespace

void lf_flare(LiveAc& ac) {
    if (ac.flareStage < 0 || ac.flareStage >= static_cast<int>(flareStages.size())) {
        return;
    }
    const FlareStage& stage = flareStages[static_cast<std::size_t>(ac.flareStage)];
    const bool first = ac.flareStage == 0;
    const double height = first ? heightForFlare(ac) : ac.heightAgl;
    if (!(ac.cgHeightFt + stage.aboveGearFt >= height)) {
        return;
    }
    ac.dAlt = stage.dAlt;
    ac.track.front().vsFpm = stage.vsFpm;
    if (first) {
        ac.dPitch = ac.flareTicks > 0 ? (flarePitch - ac.simState.pitch) / ac.flareTicks : 0.0;
        flareActive = true;
    } else {
        ac.flareElevation.reset();
        if (ac.flareStage == idleStage) {
            lf_setThrottle(ac, 0);
        }
    }
    ++ac.flareStage;
}

void lf_touchDown(LiveAc& ac) {
    if (ac.state == AcState::Removing || ac.phase == AcPhase::TakeOff) {
        return;
    }
    if (ac.flareStage != 0 || ac.landing) {
        ac.flaring = true;
        ac.rollingOut = true;
        flareActive = false;
        ac.touchdownHeading = ac.simState.heading;
        ac.landing = false;
        ac.landed = true;
        setSpoilers(ac, spoilersExtended);
        brakeWithReverse(ac);
        lowerNose(ac);
        spawnedIds.push_back(ac.hexid);
    }
    ac.onGround = true;
    ac.dAlt = 0.0;
    ac.groundCountdown = 1;
}

void stepNoseDown(LiveAc& ac) {
    SimState& sim = ac.simState;
    sim.pitch += ac.dPitch;
    const double bank = sim.bank + ac.dBank;
    // The wings come level and stay so, even where the nose has no way to go.
    sim.bank = bank * sim.bank > 0.0 ? bank : 0.0;
    const bool past = ac.dPitch < 0.0 ? sim.pitch < ac.staticPitch : sim.pitch > ac.staticPitch;
    if (past) {
        sim.pitch = ac.staticPitch;
        sim.bank = 0.0;
        ac.dPitch = 0.0;
        ac.dBank = 0.0;
        ac.flaring = false;
        ac.flareStage = 0;
    }
}

void lf_rollout(LiveAc& ac) {
    const double turnedDeg = std::abs(gf_angleDiff(ac.touchdownHeading, ac.simState.heading)) * degPerRad;
    if (turnedDeg >= runwayLeftDeg) {
        lf_setFlaps(ac, 0);
        ac.rollingOut = false;
        ac.touchdownHeading = 0.0;
        setThrottleByCategory(ac, 0);
        setSpoilers(ac, spoilersRetracted);
        releaseBrakes(ac);
        sendLights(ac, light_sets::afterRollout);
    } else if (ac.track.front().gsKt <= slowRolloutKt) {
        setSpoilers(ac, spoilersRetracted);
        releaseBrakes(ac);
        lf_setFlaps(ac, 1);
    }
}

} // namespace kst
