#include "engine/approach.h"

#include "core/geodesy.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/categories.h"
#include "engine/configuration.h"
#include "engine/legs.h"
#include "engine/tables.h"

namespace kst {

namespace {

constexpr double lightSetsFt = 10000.0;
constexpr double jetApproachAglFt = 2050.0;
constexpr double otherApproachAglFt = 625.0;
constexpr double cleanAglFt = 2400.0;
constexpr double secondFlapsAglFt = 2000.0;

constexpr double descendingFpm = -250.0;
constexpr double climbPowerFpm = 400.0;
constexpr double flapsFpm = 100.0;
constexpr double goAroundFpm = 600.0;
constexpr double approachRangeNm = 10.0;

bool nearParkAirport(const LiveAc& ac) {
    const auto airport = parkAirportPlace();
    return airport && gf_distanceNm(airport->position, ac.simState.position()) <= approachRangeNm;
}

void beginApproach(LiveAc& ac) {
    setThrottleByCategory(ac, 1);
    lf_setFlaps(ac, 3);
    lf_setGear(ac, true);
    spawnedIds.push_back(ac.hexid);
    ac.landing = true;
    ac.goAroundDone = false;
    ac.standLat = 0.0;
    ac.standLon = 0.0;
    ac.standHeading = 0.0;
    ac.sid = 0;
    ac.standCargo = false;
    ac.groundCountdown = 1;
    widenDriftLimits(ac);
}

void goAround(LiveAc& ac) {
    decayDriftLimits(ac);
    setThrottleByCategory(ac, 4);
    lf_setGear(ac, false);
    ac.goAroundDone = true;
    ac.landing = false;
    lf_setFlaps(ac, 0);
    if (ac.flareStage != 0) {
        ac.flareStage = 0;
        flareActive = false;
    }
}

} // namespace

void configureByAltitude(LiveAc& ac) {
    if (ac.track.front().altFt < lightSetsFt) {
        if (!ac.lowLights) {
            ac.lowLights = true;
            ac.highLights = false;
            sendLights(ac, light_sets::low);
        }
        const double approachAglFt = isJetCategory(ac.category) ? jetApproachAglFt : otherApproachAglFt;
        if (ac.heightAgl > approachAglFt) {
            lf_highConfig(ac);
        } else {
            lf_lowConfig(ac);
        }
    } else if (!ac.highLights && ac.phase != AcPhase::TakeOff) {
        // A take-off from a high airport keeps its gear and flaps until it has climbed out.
        ac.highLights = true;
        ac.lowLights = false;
        sendLights(ac, light_sets::high);
        setThrottleByCategory(ac, 3);
        lf_setGear(ac, false);
        lf_setFlaps(ac, 0);
    }
}

void lf_highConfig(LiveAc& ac) {
    const double vsFpm = ac.track.front().vsFpm;
    decayDriftLimits(ac);
    sendCabinLights(ac, true);
    ac.departing = false;
    ac.landing = false;
    if (vsFpm <= descendingFpm && ac.throttleLevel == 3) {
        setThrottleByCategory(ac, 2);
    } else if (vsFpm > climbPowerFpm && ac.throttleLevel == 4) {
        setThrottleByCategory(ac, 3);
    }
    if (ac.heightAgl >= cleanAglFt) {
        lf_setGear(ac, false);
        lf_setFlaps(ac, 0);
        return;
    }
    if (vsFpm > flapsFpm) {
        return;
    }
    if (ac.flapsLevel == 0) {
        lf_setFlaps(ac, 1);
    } else if (ac.flapsLevel == 1 && ac.heightAgl < secondFlapsAglFt) {
        lf_setFlaps(ac, 2);
    }
}

void lf_lowConfig(LiveAc& ac) {
    const double vsFpm = ac.track.front().vsFpm;
    sendCabinLights(ac, false);
    if (vsFpm <= descendingFpm) {
        if (!ac.landing && nearParkAirport(ac)) {
            beginApproach(ac);
        }
        return;
    }
    // The take-off has its own moments for power, gear and flaps.
    if (ac.goAroundDone || ac.phase == AcPhase::TakeOff) {
        return;
    }
    if (vsFpm > goAroundFpm || (ac.landing && !nearParkAirport(ac))) {
        goAround(ac);
    }
}

} // namespace kst
