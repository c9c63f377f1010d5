#include "engine/spawning.h"

#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

LiveAc* presentWithCallsign(std::string_view callsign) {
    const auto found = std::ranges::find_if(
        liveAcs, [&](const LiveAc& ac) { return ac.callsign == callsign && ac.state != AcState::Removing; });
    return found != liveAcs.end() ? &*found : nullptr;
}

void takeIfGiven(std::string& field, const std::string& given) {
    if (!given.empty() && given != field) {
        field = given;
    }
}

/// A first value is taken at once. Returns whether the record contradicts the value held.
bool differs(std::string& field, const std::string& given, bool& same) {
    if (given.empty()) {
        return false;
    }
    if (field.empty()) {
        field = given;
        same = false;
        return false;
    }
    return field != given;
}

/// Takes a route of the record that is new. Returns whether the route is the same as before.
bool lf_mergeRoute(LiveAc& ac, const FeedMessage& rec) {
    bool same = true;
    const bool otherDestination = differs(ac.destination, rec.destination, same);
    const bool otherOrigin = differs(ac.origin, rec.origin, same);
    if (!otherDestination || !otherOrigin) {
        return same;
    }
    // A flight whose feed shows a return to its origin at this airport stays the flight it is.
    const auto airport = parkAirport();
    if (airport && ac.origin == airport->code && rec.destination == ac.origin) {
        return same;
    }
    ac.destination = rec.destination;
    ac.origin = rec.origin;
    if (ac.onGround && ac.phase != AcPhase::Parking && ac.phase != AcPhase::Parked) {
        setPhase(ac, AcPhase::Taxi);
        ac.targetHeading = ac.simState.heading;
    }
    return false;
}

/// The feed gives the aircraft another callsign. False when the real target of that ghost is here.
bool takeCallsign(LiveAc& ac, const FeedMessage& rec) {
    ac.callsign = rec.callsign;
    ac.primaryCallsign = rec.callsign;
    ac.coupledCallsign.clear();
    if (!ac.callsign.ends_with('_')) {
        lf_removeGhostOf(ac.callsign);
        return true;
    }
    return !lf_hasRealTarget(ac.callsign);
}

void takeBufferedIdentity(LiveAc& ac, const FeedMessage& rec) {
    takeIfGiven(ac.destination, rec.destination);
    takeIfGiven(ac.origin, rec.origin);
    takeIfGiven(ac.callsign, rec.callsign);
    takeIfGiven(ac.regcode, rec.registration);
}

} // namespace

bool lf_hasRealTarget(std::string_view ghostCallsign) {
    if (!ghostCallsign.empty()) {
        ghostCallsign.remove_suffix(1);
    }
    return presentWithCallsign(ghostCallsign) != nullptr;
}

void lf_removeGhostOf(std::string_view callsign) {
    const std::string ghostCallsign = std::string(callsign) + '_';
    LiveAc* ghost = presentWithCallsign(ghostCallsign);
    if (ghost == nullptr) {
        return;
    }
    if (LOG) {
        if (ghost->phase == AcPhase::Parked) {
            logLine(fmt::format("{:8}: {:8} is a ghost and will be removed, continue with {}",
                                standName(ghost->sid), ghostCallsign, callsign));
        } else {
            logLine(fmt::format("          {:8} is a ghost and will be removed, continue with {}",
                                ghostCallsign, callsign));
        }
    }
    if (std::ranges::find(ghostCallsigns, ghostCallsign) == ghostCallsigns.end()) {
        ghostCallsigns.push_back(ghostCallsign);
    }
    lf_removeAc(*ghost, Reason::GhostReplaced);
}

bool lf_updateIdentity(LiveAc& ac, const FeedMessage& rec) {
    if (ac.departing || ac.landing) {
        return true;
    }
    if (ac.state == AcState::Buffered) {
        takeBufferedIdentity(ac, rec);
        return true;
    }
    if (ac.state != AcState::Live || ac.phase == AcPhase::PushBack || ac.reckonLeft > 0) {
        return true;
    }
    const bool sameRoute = lf_mergeRoute(ac, rec);
    if (ac.regcode.empty()) {
        ac.regcode = rec.registration;
    }
    const bool newCallsign =
        !rec.callsign.empty() && rec.callsign != ac.callsign && rec.callsign != ac.regcode;
    if (newCallsign) {
        if (!takeCallsign(ac, rec)) {
            noteReason(ac, Reason::GhostOfPresentTarget);
            return false;
        }
    } else if (sameRoute) {
        return true;
    }
    if (!GUID_CHANGES) {
        return true;
    }
    logLine(fmt::format("          {} respawns", describe(ac)));
    liveryRespawn(ac);
    return false;
}

void liveryRespawn(LiveAc& ac) {
    TrackPoint& front = ac.track.at(0);
    TrackPoint here = front;
    if (ac.phase == AcPhase::Parked) {
        ac.track.resize(1);
        front.stationary = true;
        front.trackDeg = ac.simState.heading * degPerRad;
        here.stationary = true;
    } else {
        here.lat = ac.simState.lat;
        here.lon = ac.simState.lon;
        here.altFt = ac.simState.altFt;
        here.roll = ac.simState.bank;
        front.stationary = front.position() == ac.simState.position();
    }
    here.dueTick = updateCount.load(std::memory_order_relaxed) + 1;
    ac.track.insert(ac.track.begin(), here);
    ac.state = AcState::Respawning;
    ac.respawnHeading = ac.simState.heading;
    noteReason(ac, Reason::RespawnForIdentity);
    queueObjectRemoval(ac.objectId);
}

} // namespace kst
