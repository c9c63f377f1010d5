#include "engine/simreplies.h"

#include "catalogue/matching.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/parkinglink.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/tables.h"
#include "model/simconnect.h"
#include "parking/stands.h"
#include "simlink/flightplans.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <vector>

namespace kst {

namespace {

// Object ids below this one are the simulator's own.
constexpr std::uint32_t firstObjectId = 3;

// An object settles for two seconds. At both toggle counts its lights change over, which leaves them as they
// were and makes the simulator take later settings.
constexpr std::int32_t settleTicks = 200;
constexpr std::int32_t firstToggleTick = 50;
constexpr std::int32_t secondToggleTick = 100;

constexpr double smallestCgFt = 1.0;
constexpr double largestCgFt = 35.0;
constexpr double lowestStaticPitch = -1.0 * radPerDeg;
constexpr double highestStaticPitch = 2.5 * radPerDeg;
constexpr double usualStaticPitch = 0.012217304763960306; // 0.7 degrees

constexpr std::uint32_t lastStaticHexid = 10000;

std::vector<SimCommand> pendingObjects;

void applyLiveCreated(const SimCommand& command) {
    LiveAc* ac = liveByHexid(command.id);
    if (ac != nullptr && lf_applyCreated(*ac, command)) {
        pendingObjects.push_back(command);
    }
}

void applyStaticCreated(const SimCommand& command) {
    // The object is known from now on, so that the end of a run can take it out before it has settled.
    if (StaticAc* ac = staticByHexid(command.id); ac != nullptr) {
        ac->objectId = command.objectId;
        countHappening(Happening::Created);
    }
    pendingObjects.push_back(command);
}

void applyHeightReport(const SimCommand& command) {
    LiveAc* ac = liveByObjectId(command.objectId);
    if (ac == nullptr || !std::isfinite(command.value1) || !std::isfinite(command.value2)) {
        return;
    }
    if (command.id == 1 && !ac->onGround && ac->groundCountdown <= 1) {
        lf_touchDown(*ac);
    }
    ac->heightAgl = command.value2;
    ac->groundAltFt = command.value1;
    const bool rotating = ac->groundCountdown >= 2;
    if (ac->onGround || rotating) {
        ac->simState.altFt = ac->cgHeightFt + command.value1;
    }
}

void applySizes(const SimCommand& command) {
    LiveAc* ac = liveByObjectId(command.objectId);
    if (ac == nullptr) {
        return;
    }
    if (command.value1 >= smallestCgFt && command.value1 <= largestCgFt) {
        ac->cgHeightFt = command.value1;
    } else if (LOG) {
        logLine(fmt::format("{}: static CG {:.1F}ft wrong?", describe(*ac), command.value1));
    }
    const bool usable = command.value2 > lowestStaticPitch && command.value2 <= highestStaticPitch;
    ac->staticPitch = usable ? command.value2 : usualStaticPitch;
}

void applyRefused(std::uint32_t hexid) {
    if (hexid > lastStaticHexid) {
        if (LiveAc* ac = liveByHexid(hexid); ac != nullptr) {
            noteReason(*ac, Reason::CreationRefused);
            gf_liveryCreateFailed(*ac);
            releaseStand(*ac);
            deleteRecord(*ac);
        }
    } else if (StaticAc* ac = staticByHexid(hexid); ac != nullptr) {
        noteReason(*ac, Reason::CreationRefused);
        gf_liveryCreateFailed(*ac);
        deleteRecord(*ac);
    }
}

void apply(const SimCommand& command) {
    switch (command.kind) {
    case SimCommand::Kind::LiveCreated:
        applyLiveCreated(command);
        break;
    case SimCommand::Kind::StaticCreated:
        applyStaticCreated(command);
        break;
    case SimCommand::Kind::Removed:
        lf_applyRemoved(command.objectId);
        break;
    case SimCommand::Kind::HeightReport:
        applyHeightReport(command);
        break;
    case SimCommand::Kind::Sizes:
        applySizes(command);
        break;
    case SimCommand::Kind::CreationRefused:
        applyRefused(command.id);
        break;
    }
}

void settleLive(SimCommand& command) {
    LiveAc* ac = liveByHexid(command.id);
    // Removed or replaced while it settled: nothing is left to configure.
    const bool stillAwaited =
        ac != nullptr && ac->state == AcState::Requested && ac->objectId == command.objectId;
    if (!stillAwaited) {
        command.counter = -1;
        return;
    }
    if (command.counter < settleTicks) {
        if (!lf_transmitEvent(command.objectId, simconnect::AllLightsToggle, 0)) {
            logLine("SimConnect gf_allLightsToggle fails");
        }
        return;
    }
    lf_initialConfig(*ac);
    command.counter = -1;
    if (ac->removeWhenCreated) {
        lf_removeAc(*ac, ac->reason);
    }
}

void settleStatic(SimCommand& command) {
    StaticAc* ac = staticByHexid(command.id);
    command.counter = -1;
    if (ac == nullptr || ac->state != AcState::Requested) {
        return;
    }
    ac->state = AcState::Live;
    ac->objectId = command.objectId;
    lf_parkLights(*ac);
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} parked", standName(ac->sid), ac->callsign));
    }
    if (ac->removeWhenCreated) {
        lf_removeAc(*ac, ac->reason);
    }
}

void noteParked(LiveAc& ac) {
    ac.parkStamp = nowDayHH();
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} parks", standName(ac.sid), ac.callsign));
    }
    lf_dropParkRequests(ac.sid);
}

} // namespace

void gf_SimCommands() {
    static std::vector<SimCommand> commands;
    try {
        takeSimCommands(commands);
        for (const SimCommand& command : commands) {
            apply(command);
        }
        for (SimCommand& command : pendingObjects) {
            lf_settleObject(command);
        }
        std::erase_if(pendingObjects, [](const SimCommand& command) { return command.counter < 0; });
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "gf_SimCommands", error.what()));
        throw;
    }
}

bool lf_applyCreated(LiveAc& ac, const SimCommand& command) {
    if (command.objectId < firstObjectId) {
        return false;
    }
    ac.objectId = command.objectId;
    ac.heightAgl = command.value2;
    countHappening(Happening::Created);
    if (ac.state == AcState::Removing) {
        // Given up before its object was known.
        queueObjectRemoval(ac.objectId);
        return false;
    }
    if (!ac.track.empty() && !ac.track.front().airborne) {
        ac.onGround = true;
        ac.dAlt = 0.0;
        ac.groundCountdown = 1;
        if (ac.phase == AcPhase::Parked) {
            noteParked(ac);
        }
    }
    lf_setFlightPlan(ac);
    lf_requestSizes(ac.objectId);
    return true;
}

void lf_settleObject(SimCommand& command) {
    const bool live = command.kind == SimCommand::Kind::LiveCreated;
    if (command.counter < settleTicks) {
        ++command.counter;
        if (live && (command.counter == firstToggleTick || command.counter == secondToggleTick)) {
            settleLive(command);
        }
    } else if (live) {
        settleLive(command);
    } else {
        settleStatic(command);
    }
}

void lf_applyRemoved(std::uint32_t objectId) {
    if (LiveAc* ac = liveByObjectId(objectId); ac != nullptr) {
        if (ac->state == AcState::Respawning) {
            ac->state = AcState::Buffered;
            ac->throttleLevel = throttleNotSent;
            ac->flapsLevel = flapsNotSent;
            ac->objectId = 0;
            return;
        }
        if (ac->state != AcState::Removing) {
            noteReason(*ac, Reason::RemovedBySimulator);
            releaseStand(*ac);
        }
        lf_deleteFlightPlan(*ac);
        deleteRecord(*ac);
        return;
    }
    const auto found = std::ranges::find(staticAcs, objectId, &StaticAc::objectId);
    if (objectId != 0 && found != staticAcs.end()) {
        if (found->state != AcState::Removing) {
            noteReason(*found, Reason::RemovedBySimulator);
        }
        deleteRecord(*found);
    }
}

std::size_t settlingObjectCount() {
    return pendingObjects.size();
}

void resetSimReplies() {
    pendingObjects.clear();
}

} // namespace kst
