#include "engine/spawning.h"

#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/removal.h"
#include "engine/tables.h"
#include "engine/unmatched.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <cmath>

namespace kst {

namespace {

// How long before its time a target enters: one that moves on the ground, and any other.
constexpr std::int32_t rollingLeadTicks = 300;
constexpr std::int32_t usualLeadTicks = 100;

// Near a user on the ground.
constexpr double userMovingKt = 8.0;
constexpr double targetMovingKt = 8.0;
constexpr double heldDistanceNm = 500.0 * nmPerMetre;
constexpr double clearDistanceNm = 150.0 * nmPerMetre;

// The runway ahead of a user who lands or takes off.
constexpr double runwayDistanceNm = 1.5;
constexpr double runwayHeightFt = 1000.0;
constexpr double runwayHalfWidthFt = 500.0;

constexpr std::size_t creationQueueLimit = 11;

constexpr std::size_t longestCallsign = 8;

bool isDue(const TrackPoint& front) {
    const bool rolling = !front.airborne && front.gsKt != 0.0;
    const std::int32_t lead = rolling ? rollingLeadTicks : usualLeadTicks;
    return updateCount.load(std::memory_order_relaxed) >= front.dueTick - lead;
}

bool hasGroundAndAir(const LiveAc& ac) {
    const bool firstAirborne = ac.track.front().airborne;
    return std::ranges::any_of(ac.track,
                               [&](const TrackPoint& point) { return point.airborne != firstAirborne; });
}

bool waitsForUserOnGround(const LiveAc& ac) {
    const TrackPoint& front = ac.track.front();
    const double distanceNm = gf_distanceNm(userData.position(), front.position());
    if (ac.heldForUser) {
        if (userData.groundSpeedKt > userMovingKt) {
            return true;
        }
        if (!front.airborne && (front.gsKt > targetMovingKt || distanceNm < heldDistanceNm)) {
            return true;
        }
    }
    return COLLISION_USER_GND && !front.airborne && distanceNm < clearDistanceNm;
}

/// Whether the place where the aircraft was last shown lies on the runway that the user is about to use.
bool onRunwayOfUser(const LiveAc& ac) {
    const LatLon user = userData.position();
    const LatLon place = ac.simState.position();
    const double distanceNm = gf_distanceNm(user, place);
    if (distanceNm > runwayDistanceNm || userData.heightAglFt >= runwayHeightFt) {
        return false;
    }
    return distanceFromLineFt(distanceNm, gf_bearing(user, place), userData.heading) <= runwayHalfWidthFt;
}

bool waitsForUserInAir(LiveAc& ac) {
    if (!COLLISION_USER_AIR) {
        return false;
    }
    if (ac.track.front().airborne) {
        if (!lf_inUserApproachPath(ac)) {
            return false;
        }
    } else if (!ac.heldForUser && !onRunwayOfUser(ac)) {
        return false;
    }
    ac.heldForUser = true;
    return true;
}

bool liveLimitReached() {
    const int limit = MAX_LIVE;
    if (limit < 0) {
        return false;
    }
    const auto live = std::ranges::count(liveAcs, AcState::Live, &LiveAc::state);
    return static_cast<std::size_t>(live) + spawnList.size() + liveCreateQueueSize() >=
           static_cast<std::size_t>(limit);
}

/// Takes operator, type and use of the airframe from the reference database, if it knows the registration.
void takeAirframe(LiveAc& ac) {
    if (ac.regcode.empty()) {
        return;
    }
    for (const RegcodeText& spelling : gf_regcodeVariants(ac.regcode)) {
        const auto known = gf_regcodeRecord(spelling);
        if (!known) {
            continue;
        }
        ac.airline = known->operatorCode.empty() ? known->airline : known->operatorCode;
        if (!known->model.empty()) {
            ac.acType = known->model;
        }
        ac.cargo = known->cargo;
        if (!isValidCallsign(ac.callsign)) {
            ac.callsign = ac.regcode;
        }
        return;
    }
}

bool isReplacedGhost(const LiveAc& ac) {
    return ac.callsign.ends_with('_') &&
           std::ranges::find(ghostCallsigns, ac.callsign) != ghostCallsigns.end();
}

/// Who the target is decides whether it may enter; `None` if it may.
Reason refusalByIdentity(LiveAc& ac) {
    if (const std::string blocked = BLOCK_CALLSIGN.get(); !blocked.empty() && blocked == ac.callsign) {
        return Reason::BlockedByUser;
    }
    takeAirframe(ac);
    if (!isValidCallsign(ac.callsign)) {
        return Reason::InvalidCallsign;
    }
    if (ac.airline.empty()) {
        ac.airline = "PVT";
    }
    if (unmatchedTargets.contains(unmatchedKey(ac))) {
        return Reason::NoLivery;
    }
    if (ac.callsign.ends_with('_') && lf_hasRealTarget(ac.callsign)) {
        return Reason::GhostOfPresentTarget;
    }
    return Reason::None;
}

/// What keeps the target waiting for now; `None` if nothing does.
Reason waitFor(LiveAc& ac) {
    if (hasGroundAndAir(ac)) {
        return Reason::MixedGroundAndAir;
    }
    if (userOnGround ? waitsForUserOnGround(ac) : waitsForUserInAir(ac)) {
        return Reason::HeldForUser;
    }
    if (liveCreateQueueSize() >= creationQueueLimit && ac.phase == AcPhase::Unknown) {
        return Reason::CreationQueueFull;
    }
    return Reason::None;
}

} // namespace

bool isValidCallsign(std::string_view callsign) {
    return !callsign.empty() && callsign != "@@@@@@@@" && callsign.size() <= longestCallsign;
}

void updateBufferAc(LiveAc& ac) {
    if (ac.track.empty()) {
        refuseTarget(ac, Reason::EmptyTrack);
        return;
    }
    if (!isDue(ac.track.front())) {
        return;
    }
    if (ac.track.size() == 1) {
        refuseTarget(ac, Reason::FellSilentInBuffer);
        return;
    }
    if (isReplacedGhost(ac)) {
        refuseTarget(ac, Reason::GhostReplaced);
        return;
    }
    if (const Reason wait = waitFor(ac); wait != Reason::None) {
        holdTarget(ac, wait);
        return;
    }
    if (liveLimitReached() &&
        lf_removeFarthest(gf_distanceNm(userData.position(), ac.track.front().position()))) {
        refuseTarget(ac, Reason::FarthestAtLimit);
        return;
    }
    if (const Reason refusal = refusalByIdentity(ac); refusal != Reason::None) {
        refuseTarget(ac, refusal);
        return;
    }
    spawnLiveAc(ac);
}

} // namespace kst
