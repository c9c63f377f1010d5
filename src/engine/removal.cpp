#include "engine/removal.h"

#include "core/log.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

bool isHoldReason(Reason reason) {
    return reason == Reason::HeldForUser || reason == Reason::CreationQueueFull ||
           reason == Reason::MixedGroundAndAir || reason == Reason::NoFreeStand;
}

void removeObject(AcBase& ac, Reason reason) {
    noteReason(ac, reason);
    const bool removalUnderWay = ac.state == AcState::Respawning;
    ac.state = AcState::Removing;
    if (ac.objectId == 0) {
        logLine(fmt::format("removing act {} with objectid=0 ?", describe(ac)));
    } else if (!removalUnderWay) {
        queueObjectRemoval(ac.objectId);
    }
}

} // namespace

void noteReason(AcBase& ac, Reason reason) {
    ac.reason = reason;
    countReason(reason);
}

void noteDroppedRecord(LiveAc& ac, Reason reason) {
    countReason(reason);
    if (!isHoldReason(ac.reason)) {
        ac.reason = reason;
    }
}

void refuseTarget(LiveAc& ac, Reason reason) {
    noteReason(ac, reason);
    ac.erase = true;
}

void holdTarget(LiveAc& ac, Reason reason) {
    if (ac.reason != reason) {
        noteReason(ac, reason);
    }
    ac.track.erase(ac.track.begin());
}

void releaseStand(const LiveAc& ac) {
    if (ParkPos* stand = ac.sid != 0 ? standBySid(ac.sid) : nullptr; stand != nullptr) {
        stand->liveParked = false;
    }
}

void lf_removeAc(LiveAc& ac, Reason reason) {
    if (ac.state == AcState::Buffered) {
        refuseTarget(ac, reason);
        return;
    }
    if (ac.state == AcState::Removing) {
        return;
    }
    releaseStand(ac);
    removeObject(ac, reason);
}

// A static aircraft never marks its stand as taken by a live one, so it has nothing to release.
void lf_removeAc(StaticAc& ac, Reason reason) {
    if (ac.state == AcState::Buffered) {
        noteReason(ac, reason);
        ac.erase = true;
        return;
    }
    if (ac.state != AcState::Removing) {
        removeObject(ac, reason);
    }
}

bool lf_cancelLiveCreation(LiveAc& ac, Reason reason) {
    noteReason(ac, reason);
    const auto cleared = std::ranges::find(spawnList, ac.hexid);
    const bool waiting = cleared != spawnList.end();
    if (waiting) {
        spawnList.erase(cleared);
    }
    if (!waiting && !takeBackLiveCreation(ac.hexid)) {
        ac.removeWhenCreated = true;
        return false;
    }
    releaseStand(ac);
    deleteRecord(ac);
    return true;
}

void lf_removeAllLive(Reason reason) {
    // A record that is deleted leaves its place to the last one, which is looked at next.
    for (std::size_t i = 0; i < liveAcs.size();) {
        LiveAc& ac = liveAcs[i];
        const bool awaitsObject = ac.state == AcState::Requested && ac.objectId == 0;
        if (awaitsObject && lf_cancelLiveCreation(ac, reason)) {
            continue;
        }
        if (!awaitsObject) {
            lf_removeAc(ac, reason);
        }
        ++i;
    }
}

void lf_removeAllStatic(Reason reason) {
    for (std::size_t i = 0; i < staticAcs.size();) {
        StaticAc& ac = staticAcs[i];
        const bool awaitsObject = ac.state == AcState::Requested && ac.objectId == 0;
        if (awaitsObject) {
            noteReason(ac, reason);
            if (lf_cancelStaticCreation(ac.callsign)) {
                continue;
            }
            ac.removeWhenCreated = true;
        } else {
            lf_removeAc(ac, reason);
        }
        ++i;
    }
}

} // namespace kst
