#include "engine/conflicts.h"

#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kst {

namespace {

// Share by which the half spans are widened before two aircraft count as touching.
constexpr double userLiveMargin = 1.15;
constexpr double staticMargin = 1.1;

// The user's runway: below this height, this near, this close to the line of the user's heading.
constexpr double runwayUserHeightFt = 500.0;
constexpr double runwayDistanceNm = 1.0;
constexpr double runwayHalfWidthFt = 50.0;

// Head-on in the air.
constexpr double headOnDistanceNm = 4.0;
constexpr double headOnAltitudeFt = 1000.0;
constexpr double headOnHalfWidthFt = 700.0;

// A target that would appear ahead of the user.
constexpr double approachDistanceNm = 6.0;
constexpr double approachAltitudeFt = 3000.0;
constexpr double approachHalfWidthFt = 4000.0;

// An aircraft counts as farther than another only by more than this.
constexpr double fartherByNm = 0.1;

LatLon positionAtLastCheck;

double halfSpanOfUserNm() {
    // Until the simulator has named the user's aircraft it is taken for the largest there is.
    return userHalfSpanNm().value_or(maxHalfWingSpan());
}

LatLon standPosition(const StaticAc& ac) {
    return {ac.standLat, ac.standLon};
}

bool standsInUsersWay(double distanceNm, double bearing) {
    return userData.heightAglFt < runwayUserHeightFt && distanceNm <= runwayDistanceNm &&
           distanceFromLineFt(distanceNm, bearing, userData.heading) <= runwayHalfWidthFt;
}

bool fliesAtUser(const LiveAc& ac, double distanceNm, double bearing) {
    return distanceNm <= headOnDistanceNm &&
           std::abs(ac.simState.altFt - userData.altitudeFt) < headOnAltitudeFt &&
           distanceFromLineFt(distanceNm, bearing, ac.simState.heading) <= headOnHalfWidthFt;
}

bool touchesUser(LatLon place, double halfSpanNm, double margin) {
    return gf_distanceNm(place, userData.position()) <= (halfSpanNm + halfSpanOfUserNm()) * margin;
}

} // namespace

double distanceFromLineFt(double distanceNm, double bearing, double heading) {
    return distanceNm * std::sin(std::abs(gf_angleDiff(heading, bearing))) * feetPerNm;
}

bool lf_checkAirCollision(LiveAc& ac) {
    if (ac.state != AcState::Live) {
        return false;
    }
    const LatLon user = userData.position();
    const LatLon place = ac.simState.position();
    const double distanceNm = gf_distanceNm(user, place);
    const double bearing = gf_bearing(user, place);
    const bool conflict =
        ac.onGround ? standsInUsersWay(distanceNm, bearing) : fliesAtUser(ac, distanceNm, bearing);
    if (conflict) {
        lf_removeAc(ac, Reason::ConflictWithUser);
    }
    return conflict;
}

void lf_checkGroundCollision() {
    const LatLon user = userData.position();
    const bool moved = user != positionAtLastCheck;
    positionAtLastCheck = user;
    const auto live = std::ranges::find_if(liveAcs, [](const LiveAc& ac) {
        return ac.onGround && ac.state == AcState::Live &&
               touchesUser(ac.simState.position(), ac.halfSpanNm, userLiveMargin);
    });
    if (live != liveAcs.end()) {
        lf_removeAc(*live, Reason::ConflictWithUser);
        return;
    }
    if (!moved) {
        return;
    }
    const auto parked = std::ranges::find_if(staticAcs, [](const StaticAc& ac) {
        return ac.state == AcState::Live && touchesUser(standPosition(ac), ac.halfSpanNm, staticMargin);
    });
    if (parked != staticAcs.end()) {
        lf_removeAc(*parked, Reason::ConflictWithUser);
    }
}

bool lf_inUserApproachPath(const LiveAc& ac) {
    const TrackPoint& front = ac.track.front();
    const LatLon user = userData.position();
    const double distanceNm = gf_distanceNm(user, front.position());
    if (distanceNm > approachDistanceNm ||
        std::abs(front.altFt - userData.altitudeFt) >= approachAltitudeFt) {
        return false;
    }
    const double bearing = gf_bearing(user, front.position());
    return distanceFromLineFt(distanceNm, bearing, ac.targetHeading) <= approachHalfWidthFt;
}

bool lf_removeFarthest(double distanceNm) {
    LiveAc* farthest = nullptr;
    double best = distanceNm;
    for (LiveAc& ac : liveAcs) {
        if (ac.state != AcState::Live) {
            continue;
        }
        const double distance = gf_distanceNm(userData.position(), ac.simState.position());
        if (distance > best + fartherByNm) {
            best = distance;
            farthest = &ac;
        }
    }
    if (farthest == nullptr) {
        return true;
    }
    lf_removeAc(*farthest, Reason::LiveLimit);
    return false;
}

void lf_trimLiveCount() {
    const int limit = MAX_LIVE;
    if (limit < 0) {
        return;
    }
    const auto live = std::ranges::count(liveAcs, AcState::Live, &LiveAc::state);
    for (auto excess = live - limit; excess > 0; --excess) {
        lf_removeFarthest(-1.0);
    }
}

SameFlight::SameFlight(const LiveAc& live) : ac(live), callsignStem(live.callsign) {
    if (!callsignStem.empty()) {
        callsignStem.remove_suffix(1);
    }
}

bool lf_checkSameFlight(const SameFlight& flight, const StaticAc& staticAc) {
    const LiveAc& live = flight.ac;
    if (staticAc.state != AcState::Live) {
        return false;
    }
    const std::string_view where = live.onGround ? "on ground" : "airborne";
    if (!live.regcode.empty() && live.regcode == staticAc.regcode) {
        if (LOG) {
            logLine(fmt::format("{:8}: {:8} {} removed, new {} {} has same regcode {}",
                                standName(staticAc.sid), staticAc.callsign, staticAc.regcode, where,
                                live.callsign, live.regcode));
        }
        return true;
    }
    const auto shows = [&](std::string_view callsign) {
        return !callsign.empty() &&
               (callsign == staticAc.primaryCallsign || callsign == staticAc.coupledCallsign);
    };
    if (!shows(live.callsign) && !shows(live.coupledCallsign) &&
        !(live.callsign.ends_with('_') && shows(flight.callsignStem))) {
        return false;
    }
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} \"{} {}\" removed, new {} {} \"{} {}\" has {} callsign",
                            standName(staticAc.sid), staticAc.callsign, staticAc.primaryCallsign,
                            staticAc.coupledCallsign, where, live.callsign, live.primaryCallsign,
                            live.coupledCallsign,
                            staticAc.primaryCallsign == live.callsign ? "same" : "coupled"));
    }
    return true;
}

void lf_removeStaticTwin(const LiveAc& ac) {
    const auto sameCallsign = [&](const StaticAc& parked) {
        return parked.callsign.size() == ac.callsign.size() + 1 && parked.callsign.ends_with('*') &&
               parked.callsign.starts_with(ac.callsign);
    };
    const auto twin = std::ranges::find_if(staticAcs, [&](const StaticAc& parked) {
        return parked.state == AcState::Live &&
               (sameCallsign(parked) || (!ac.regcode.empty() && parked.regcode == ac.regcode));
    });
    if (twin != staticAcs.end()) {
        lf_removeAc(*twin, Reason::ConflictWithLive);
    }
}

void lf_checkStaticCollision(const LiveAc& ac) {
    const LatLon place = ac.simState.position();
    const auto close = std::ranges::find_if(staticAcs, [&](const StaticAc& parked) {
        return parked.state == AcState::Live && gf_distanceNm(place, standPosition(parked)) <=
                                                    (ac.halfSpanNm + parked.halfSpanNm) * staticMargin;
    });
    if (close == staticAcs.end()) {
        return;
    }
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} removed for collision avoidance with live {}", standName(close->sid),
                            close->callsign, ac.callsign));
    }
    lf_removeAc(*close, Reason::ConflictWithLive);
}

bool lf_cancelStaticCreation(const std::string& callsign) {
    std::uint32_t hexid = 0;
    if (!takeBackStaticCreation(callsign, hexid)) {
        return false;
    }
    if (StaticAc* ac = staticByHexid(hexid); ac != nullptr) {
        deleteRecord(*ac);
    }
    return true;
}

void resetConflicts() {
    positionAtLastCheck = {};
}

} // namespace kst
