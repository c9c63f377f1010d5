#include "core/geodesy.h"
#include "core/parameters.h"
#include "engine/configuration.h"
#include "engine/legs.h"
#include "engine/parked.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/stops.h"
#include "engine/ticks.h"
#include "engine/trackfilters.h"

#include <algorithm>
#include <cmath>

namespace kst {

namespace {

constexpr std::size_t mostPoints = 200;
constexpr double takeOffRollKt = 43.0;

// How far a feed position lies from a pushed back aircraft that has begun to taxi.
constexpr double movedOffInHalfSpans = 2.75;
constexpr double farOffInHalfSpans = 6.0;

/// A position that no aircraft can be at, or that is not one, would end in what the simulator is sent.
bool isPosition(const TrackPoint& point) {
    return std::abs(point.lat) <= 90.0 && std::abs(point.lon) <= 180.0 && std::isfinite(point.altFt) &&
           std::isfinite(point.gsKt) && std::isfinite(point.trackDeg) && std::isfinite(point.vsFpm) &&
           std::isfinite(point.tasKt) && std::isfinite(point.roll.value_or(0.0)) &&
           std::isfinite(point.heading.value_or(0.0));
}

void stopHolding(LiveAc& ac) {
    ac.holding = false;
    ac.holdStartTick = 0;
}

/// The feed of an aircraft that is being pushed back tells which way its nose will point.
void learnPushSide(LiveAc& ac, const TrackPoint& msg) {
    constexpr int straightLegToCome = 2;
    if (STRAIGHT_PBS_ONLY || ac.pushStep != straightLegToCome || (!msg.heading && msg.trackDeg == 0.0)) {
        return;
    }
    const double nose = msg.heading.value_or(msg.trackDeg * radPerDeg);
    ac.pushRight = gf_angleDiff(ac.simState.heading, nose) > 0.0;
    ac.pushKnown = true;
}

/// The real aircraft is still being pushed, farther than the shown one was: its nose points back.
bool isStillPushed(const LiveAc& ac, const TrackPoint& msg) {
    const double way = gf_bearing(ac.simState.position(), msg.position());
    return msg.heading && std::abs(gf_angleDiff(way, *msg.heading)) > pi / 2;
}

/// After a push back: true once the feed's position moves away from the waiting aircraft.
bool hasMovedOff(LiveAc& ac, TrackPoint& msg) {
    const double distanceNm = gf_distanceNm(ac.simState.position(), msg.position());
    const bool movedOff = (distanceNm > ac.halfSpanNm * movedOffInHalfSpans && distanceNm > ac.moveOffRef &&
                           !isStillPushed(ac, msg)) ||
                          distanceNm > ac.halfSpanNm * farOffInHalfSpans;
    if (!movedOff) {
        if (!ac.holding) {
            ac.holding = true;
            ac.holdStartTick = presentTick();
        }
        ac.moveOffRef = distanceNm;
        return false;
    }
    msg.stationary = false;
    if (ac.reckonLeft > 0) {
        ac.track.front().dueTick = laterTick(presentTick(), 1);
        endDeadReckoning(ac);
    }
    ac.pushKnown = false;
    ac.pushStep = 0;
    setPhase(ac, AcPhase::Taxi);
    ac.standLat = 0.0;
    ac.standLon = 0.0;
    ac.standHeading = 0.0;
    ac.sid = 0;
    ac.standCargo = false;
    stopHolding(ac);
    return true;
}

/// Whether the position may enter the track, by what the aircraft is doing.
bool judge(LiveAc& ac, TrackPoint& msg) {
    switch (ac.phase) {
    case AcPhase::Parking:
    case AcPhase::Parked:
        return ac.state >= AcState::Live && lf_parkedPositionCheck(ac, msg);
    case AcPhase::PushBack:
        learnPushSide(ac, msg);
        return false;
    case AcPhase::AfterPush:
        return hasMovedOff(ac, msg);
    case AcPhase::Taxi:
    case AcPhase::TakeOff:
    case AcPhase::Air:
        if (ac.landing || ac.rollingOut) {
            return lf_filterApproachPosition(ac, msg);
        }
        return lf_filterPosition(ac, msg) && (ac.reckonLeft <= 0 || lf_resumeFromDeadReckoning(ac, msg));
    case AcPhase::Unknown:
        return lf_filterPosition(ac, msg);
    }
    return false;
}

void cleanUpStop(LiveAc& ac, const TrackPoint& msg) {
    if (msg.airborne || !ac.track.back().stationary) {
        return;
    }
    if (!msg.stationary) {
        removeSmallStop(ac, msg.position());
        return;
    }
    // A standing aircraft does not pile up points.
    if (std::all_of(ac.track.begin(), ac.track.end(), [](const TrackPoint& p) { return p.stationary; })) {
        ac.track.erase(ac.track.begin() + 1, ac.track.end());
    }
}

/// The feed shows an aircraft on its landing roll in the air again.
void beginTouchAndGo(LiveAc& ac) {
    setPhase(ac, AcPhase::Taxi);
    ac.departing = true;
    lf_setThrottle(ac, 3);
    setSpoilers(ac, spoilersExtended);
    lf_setFlaps(ac, 1);
    ac.landing = false;
    ac.landed = false;
    ac.goAroundDone = false;
    sendLights(ac, light_sets::departure);
    widenDriftLimits(ac);
}

void recogniseDeparture(LiveAc& ac, const TrackPoint& msg) {
    if (ac.state != AcState::Live || !ac.onGround || ac.departing) {
        return;
    }
    const TrackPoint& last = ac.track.back();
    if (ac.rollingOut) {
        if (last.airborne && msg.airborne) {
            beginTouchAndGo(ac);
        }
        return;
    }
    const bool rolls = msg.gsKt >= takeOffRollKt && last.gsKt >= takeOffRollKt;
    if (ac.phase == AcPhase::Taxi && (msg.airborne || rolls)) {
        lf_startDeparture(ac);
    }
}

/// Due times in a track strictly rise.
void keepOrder(const LiveAc& ac, TrackPoint& msg) {
    const std::int32_t lastDue = ac.track.back().dueTick;
    if (lastDue >= msg.dueTick) {
        msg.dueTick = laterTick(lastDue, 1);
    }
}

void takeIn(LiveAc& ac, TrackPoint& msg) {
    if (ac.phase == AcPhase::Unknown) {
        keepOrder(ac, msg);
        ac.track.push_back(msg);
        return;
    }
    cleanUpStop(ac, msg);
    keepOrder(ac, msg);
    recogniseDeparture(ac, msg);
    ac.track.push_back(msg);
    if (ac.track.size() == 2 && ac.track[0].stationary && ac.track[1].stationary) {
        ac.track[0].dueTick = laterTick(presentTick(), 1);
        ac.track[0].gsKt = ac.track[1].gsKt;
    }
}

} // namespace

void lf_addPosition(LiveAc& ac, TrackPoint msg) {
    if (ac.track.size() > mostPoints) {
        lf_removeAc(ac, Reason::TooManyPoints);
        return;
    }
    if (!isPosition(msg)) {
        noteDroppedRecord(ac, Reason::PositionRejected);
        return;
    }
    if (ac.track.empty()) {
        ac.track.push_back(msg);
        return;
    }
    if (ac.holding &&
        gf_distanceNm(msg.position(), ac.track.front().position()) > HOLDING_THRESHOLD_METERS * nmPerMetre) {
        stopHolding(ac);
        lf_removeAc(ac, Reason::HoldingLeftBehind);
        return;
    }
    if (judge(ac, msg)) {
        takeIn(ac, msg);
    } else if (ac.state != AcState::Removing) {
        noteDroppedRecord(ac, Reason::PositionRejected);
    }
}

} // namespace kst
