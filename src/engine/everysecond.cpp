// The share of the tables in the work that is done once a second.

#include "engine/pass.h"

#include "core/display.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/standselection.h"
#include "engine/tables.h"

#include <algorithm>

namespace kst {

namespace {

/// One aircraft that has just appeared, approached, landed or parked: what flight it is by the stands, and
/// which static aircraft shows the same flight.
void checkNextSpawned() {
    if (spawnedIds.empty() || liveAcs.empty()) {
        return;
    }
    LiveAc* ac = liveByHexid(spawnedIds.front());
    if (ac == nullptr) {
        return;
    }
    if (!ac->coupledChecked) {
        ac->coupledChecked = true;
        lf_searchForCoupledCsAroundThisTime(nowDayHH(), *ac);
    }
    if (!ac->callsign.empty()) {
        const SameFlight flight(*ac);
        const auto same = std::ranges::find_if(
            staticAcs, [&](const StaticAc& parked) { return lf_checkSameFlight(flight, parked); });
        if (same != staticAcs.end()) {
            lf_removeAc(*same, Reason::ConflictWithLive);
        }
    }
    spawnedIds.pop_front();
}

void flushStatic() {
    if (!flushStaticDue.exchange(false)) {
        return;
    }
    lf_removeAllStatic(Reason::FlushedByUser);
    if (!INITIAL_LOAD_ONLY) {
        INITIAL_LOAD_ONLY.set(true);
        showParameter(INITIAL_LOAD_ONLY);
    }
}

void keepClearOfUser() {
    if (userOnGround) {
        if (COLLISION_USER_GND) {
            lf_checkGroundCollision();
        }
    } else if (COLLISION_USER_AIR) {
        for (LiveAc& ac : liveAcs) {
            if (lf_checkAirCollision(ac)) {
                break;
            }
        }
    }
}

void keepClearOfStatic() {
    if (!COLLISION_LIVE_PARKED_GND || staticAcs.empty()) {
        return;
    }
    for (LiveAc& ac : liveAcs) {
        const bool rolling = ac.phase == AcPhase::Taxi || ac.phase == AcPhase::Parking;
        const bool moved = ac.checkedLat != ac.simState.lat || ac.checkedLon != ac.simState.lon;
        if (!ac.onGround || !rolling || !moved || ac.state != AcState::Live || ac.holding) {
            continue;
        }
        ac.checkedLat = ac.simState.lat;
        ac.checkedLon = ac.simState.lon;
        lf_checkStaticCollision(ac);
    }
}

void removeBlocked() {
    if (!blockCallsignDue.exchange(false)) {
        return;
    }
    const std::string blocked = BLOCK_CALLSIGN.get();
    if (blocked.empty()) {
        return;
    }
    const auto found = std::ranges::find_if(
        liveAcs, [&](const LiveAc& ac) { return ac.state == AcState::Live && ac.callsign == blocked; });
    if (found != liveAcs.end()) {
        lf_removeAc(*found, Reason::BlockedByUser);
    }
}

} // namespace

void lf_everySecondTraffic() {
    checkNextSpawned();
    flushStatic();
    keepClearOfUser();
    keepClearOfStatic();
    removeBlocked();
}

void lf_removeStaticTwins() {
    if (staticAcs.empty()) {
        return;
    }
    for (const LiveAc& ac : liveAcs) {
        if (ac.state == AcState::Live && ac.onGround) {
            lf_removeStaticTwin(ac);
        }
    }
}

} // namespace kst
