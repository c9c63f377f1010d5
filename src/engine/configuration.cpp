#include "engine/configuration.h"

#include "core/parameters.h"
#include "core/random.h"
#include "engine/prediction.h"
#include "model/simconnect.h"

#include <array>

namespace kst {

namespace {

constexpr std::array<std::uint32_t, 5> throttleValues = {0, 4914, 8191, 11468, 16383};
constexpr std::array<std::uint32_t, 4> flapsValues = {0, 3072, 10240, 16383};
constexpr int fullThrottle = 4;
constexpr std::uint32_t parkedCabinPercent = 90;
constexpr double landingLightsFt = 10000.0;
constexpr double cabinLightsAglFt = 2000.0;
constexpr double fullPercent = 100.0;

/// Object 0 is the user's own aircraft: nothing meant for a record without an object may reach it.
void queueFor(const AcBase& ac, std::uint32_t event, std::uint32_t value) {
    if (ac.objectId != 0) {
        lf_queueEvent({ac.objectId, event, value});
    }
}

void sendControls(const AcBase& ac, double spoilers, double throttle) {
    if (ac.objectId != 0 && ac.category != Category::Light) {
        lf_setControls(ac.objectId, spoilers, throttle, throttle);
    }
}

} // namespace

void lf_setThrottle(AcBase& ac, int level) {
    if (level < 0 || level > fullThrottle || ac.throttleLevel == level) {
        return;
    }
    ac.throttleLevel = level;
    queueFor(ac, simconnect::ThrottleSet, throttleValues[static_cast<std::size_t>(level)]);
}

void setThrottleByCategory(AcBase& ac, int level) {
    lf_setThrottle(ac, ac.category == Category::Rotorcraft ? fullThrottle : level);
}

void lf_setFlaps(AcBase& ac, int level) {
    if (ac.category == Category::Rotorcraft || level < 0 ||
        static_cast<std::size_t>(level) >= flapsValues.size() || ac.flapsLevel == level) {
        return;
    }
    ac.flapsLevel = level;
    queueFor(ac, simconnect::FlapsSet, flapsValues[static_cast<std::size_t>(level)]);
}

void lf_setGear(const AcBase& ac, bool down) {
    if (ac.category != Category::Rotorcraft) {
        queueFor(ac, simconnect::GearSet, down ? 1 : 0);
    }
}

void setSpoilers(const AcBase& ac, std::uint32_t handle) {
    if (ac.category != Category::Rotorcraft) {
        queueFor(ac, simconnect::SpoilersSet, handle);
    }
}

void startEngines(const AcBase& ac) {
    queueFor(ac, simconnect::EngineAutoStart, 0);
}

void stopEngines(const AcBase& ac) {
    queueFor(ac, simconnect::EngineAutoShutdown, 0);
}

void sendLights(const AcBase& ac, const Lights& lights) {
    if (ac.objectId != 0) {
        lf_setLights(ac.objectId, lights);
    }
}

void sendCabinLights(const AcBase& ac, bool on) {
    if (ac.objectId != 0) {
        lf_setCabinLights(ac.objectId, on);
    }
}

void brakeWithReverse(const AcBase& ac) {
    // These models reverse on a lever below idle, the others on full power with the spoilers out.
    sendControls(ac, fullPercent, ac.fsltlLivery ? -fullPercent : fullPercent);
}

void releaseBrakes(const AcBase& ac) {
    sendControls(ac, 0.0, 0.0);
}

void lf_initialConfig(LiveAc& ac) {
    const bool airborne = !ac.track.empty() && ac.track.front().airborne;
    setSpoilers(ac, spoilersRetracted);
    if (airborne) {
        startEngines(ac);
        const bool low = ac.track.front().altFt <= landingLightsFt;
        sendLights(ac, {.nav = true,
                        .beacon = true,
                        .landing = low,
                        .taxi = false,
                        .strobes = true,
                        .logo = low,
                        .cabin = ac.heightAgl >= cabinLightsAglFt});
    } else {
        const bool parked = ac.phase == AcPhase::Parked;
        const bool taxiing = ac.phase == AcPhase::Taxi;
        if (parked) {
            stopEngines(ac);
        } else {
            startEngines(ac);
        }
        sendLights(ac, {.nav = !parked || NAV_LIGHTS_WHILE_PARKED.get(),
                        .beacon = !parked,
                        .landing = false,
                        .taxi = taxiing,
                        .strobes = false,
                        .logo = true,
                        .cabin = true});
        setThrottleByCategory(ac, 0);
        lf_setFlaps(ac, taxiing ? 1 : 0);
    }
    ac.state = AcState::Live;
}

void lf_parkLights(AcBase& ac) {
    lf_setThrottle(ac, 0);
    lf_setFlaps(ac, 0);
    stopEngines(ac);
    const bool cabin = !ac.standCargo && (!RANDOM || chance(parkedCabinPercent));
    sendLights(ac, {.nav = NAV_LIGHTS_WHILE_PARKED.get(),
                    .beacon = false,
                    .landing = false,
                    .taxi = false,
                    .strobes = false,
                    .logo = true,
                    .cabin = cabin});
}

} // namespace kst
