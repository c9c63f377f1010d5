#include "engine/pushback.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "engine/configuration.h"
#include "engine/curves.h"
#include "engine/groundleg.h"
#include "engine/prediction.h"
#include "engine/ticks.h"
#include "parking/stands.h"

#include <fmt/format.h>

namespace kst {

namespace {

constexpr double pushLengthInRadii = 2.5;
constexpr double pullOutInHalfSpans = 2.0;
constexpr double pushTurnDeg = 90.0;
constexpr double firstMoveOffNm = 900.0; ///< farther than any position of the feed
constexpr int straightLegToCome = 2;
constexpr int straightLegDone = 1;
constexpr int pushDone = 0;

void keepFrontOnly(LiveAc& ac) {
    ac.track.erase(ac.track.begin() + 1, ac.track.end());
}

/// An aircraft that has stood still has nothing left of its last turn.
void forgetTurn(LiveAc& ac) {
    ac.targetHeading = ac.simState.heading;
    ac.turnOnly = false;
    ac.turnDeg = 0.0;
}

TrackPoint towPoint(LatLon position, double gsKt, std::int32_t dueTick) {
    TrackPoint point;
    point.lat = position.lat;
    point.lon = position.lon;
    point.gsKt = gsKt;
    point.dueTick = dueTick;
    return point;
}

} // namespace

void lf_pushBack(LiveAc& ac) {
    ac.reckonLeft = 0;
    const ParkPos* stand = standBySid(ac.sid);
    if (stand == nullptr) {
        return;
    }
    const double direction = wrapHeading(ac.standHeading + pi);
    const double gsKt = ac.pushSpeedKt;
    const LatLon start = ac.simState.position();
    const LatLon straightEnd =
        gf_destination(start, direction, stand->radius * pushLengthInRadii * feetPerNm);
    const std::int32_t straightTicks = travelTicks(gf_distanceNm(start, straightEnd), gsKt);
    forgetTurn(ac);
    keepFrontOnly(ac);
    ac.track.front().gsKt = gsKt;
    ac.track.push_back(towPoint(straightEnd, gsKt, laterTick(presentTick(), straightTicks)));
    lf_insertMidPoint(ac);

    const double sideFt = ac.halfSpanNm * feetPerNm;
    const LatLon rightEnd = gf_destination(straightEnd, direction + pi / 2, sideFt);
    const LatLon leftEnd = gf_destination(straightEnd, direction - pi / 2, sideFt);
    const std::int32_t turnTicks = travelTicks(gf_distanceNm(ac.track[1].position(), rightEnd), gsKt);
    const std::int32_t due = laterTick(presentTick(), std::int64_t{straightTicks} / 2 + turnTicks);
    ac.pushSidePoint = towPoint(rightEnd, gsKt, due);
    ac.track.push_back(towPoint(leftEnd, gsKt, due));

    sendLights(ac, light_sets::leavingStand);
    setPhase(ac, AcPhase::PushBack);
    ac.pushKnown = false;
    ac.pushStep = straightLegToCome;
}

void lf_pullOutStraight(LiveAc& ac) {
    ac.moveOffSeen = false;
    ac.reckonLeft = 0;
    const double gsKt = ac.pushSpeedKt;
    const LatLon goal = gf_destination({ac.standLat, ac.standLon}, ac.standHeading,
                                       pullOutInHalfSpans * ac.halfSpanNm * feetPerNm);
    const std::int32_t due =
        laterTick(presentTick(), travelTicks(gf_distanceNm(ac.simState.position(), goal), gsKt));
    keepFrontOnly(ac);
    ac.track.front().gsKt = gsKt;
    ac.track.front().dueTick = due;
    ac.track.push_back(towPoint(goal, gsKt, due));
    setPhase(ac, AcPhase::Taxi);
    forgetTurn(ac);
    sendLights(ac, light_sets::leavingStand);
    startEngines(ac);
    lf_setThrottle(ac, 0);
    lf_setFlaps(ac, 1);
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} pulling out", standName(ac.sid), ac.callsign));
    }
}

bool advancePushBack(LiveAc& ac) {
    --ac.pushStep;
    if (ac.pushStep == straightLegDone && ac.track.size() >= 3) {
        if (!ac.pushKnown) {
            ac.track.pop_back();
            return false;
        }
        if (ac.pushRight) {
            ac.track.back() = ac.pushSidePoint;
        }
        lf_buildCurve(ac);
        ac.curveTurnDeg = pushTurnDeg;
        return false;
    }
    if (ac.pushStep > pushDone) {
        return false;
    }
    ac.targetHeading = ac.simState.heading;
    startEngines(ac);
    lf_setThrottle(ac, 0);
    lf_setFlaps(ac, 1);
    setPhase(ac, AcPhase::AfterPush);
    ac.pushStep = 1;
    ac.moveOffRef = firstMoveOffNm;
    ac.reckonLeft = 0;
    ac.moveOffSeen = false;
    return true;
}

} // namespace kst
