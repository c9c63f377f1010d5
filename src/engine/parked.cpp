#include "engine/parked.h"

#include "core/clock.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/curves.h"
#include "engine/legs.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/standconflicts.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "engine/ticks.h"
#include "engine/trackfilters.h"
#include "parking/stands.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

namespace kst {

namespace {

constexpr std::int32_t shortestRouteTicks = 100;
constexpr std::int32_t settleTicks = 50;
constexpr double onStandNm = 2.0 * nmPerMetre;

// How far a parked aircraft's positions may lie from its stand.
constexpr double standRadiusNm = 85.0 * nmPerMetre;
constexpr double arrivalRadiusNm = 170.0 * nmPerMetre;
constexpr double goneNm = 200.0 * nmPerMetre;
constexpr double driftStepNm = 3.0 * nmPerMetre;
constexpr int driftsToLeave = 3;

/// Moving again sooner than this after a landing is being towed, ticks, by size class; 0 where none is towed.
constexpr std::array<std::int32_t, categoryCount> towedWithinTicks = {0, 90000, 150000, 360000, 0, 0};

LatLon standPosition(const AcBase& ac) {
    return {ac.standLat, ac.standLon};
}

bool learnable(const LiveAc& ac) {
    return !ac.airline.empty() && ac.standCargo == ac.cargo;
}

void recordArrival(LiveAc& ac) {
    if (learnable(ac) && lf_addRealParkPosOption(ac.sid, ac, false, ac.parkStamp, false)) {
        lf_noteLearner(ac.hexid, ac.parkStamp);
        lf_checkMaxPark(0);
    }
}

void recordDeparture(LiveAc& ac) {
    const DayHH now = nowDayHH();
    if (learnable(ac) && lf_addRealParkPosOption(ac.sid, ac, true, now, true)) {
        lf_noteLearner(ac.hexid, now);
    }
}

/// A position within the stand's surroundings: true if the drift adds up to a movement.
bool driftedAway(LiveAc& ac, double distanceNm) {
    if (ac.lastParkDist == 0.0) {
        ac.firstParkDist = distanceNm;
        ac.lastParkDist = distanceNm;
        ac.awayCount = 0;
        return false;
    }
    if (distanceNm < ac.lastParkDist + driftStepNm) {
        if (distanceNm <= ac.lastParkDist - driftStepNm) {
            ac.awayCount = 0;
        }
        return false;
    }
    ++ac.awayCount;
    ac.lastParkDist = distanceNm;
    const double away = distanceNm - ac.firstParkDist;
    return away > ac.halfSpanNm || (ac.awayCount >= driftsToLeave && away >= ac.halfSpanNm / 2.0);
}

void startMoving(LiveAc& ac, TrackPoint& msg) {
    msg.stationary = false;
    ac.moveOffSeen = true;
    if (ac.prevPhase == AcPhase::Parked) {
        return;
    }
    lf_parkedAgain(ac);
    setPhase(ac, AcPhase::Parked);
}

} // namespace

void lf_routeToStand(LiveAc& ac, const ParkPos& stand) {
    clearCurve(ac);
    TrackPoint& back = ac.track.back();
    const std::int32_t frontDue = ac.track.front().dueTick;
    const double gsKt = ac.pushSpeedKt;
    const std::int32_t ticks =
        std::max(travelTicks(gf_distanceNm(back.position(), standPosition(ac)), gsKt), shortestRouteTicks);
    back.gsKt = gsKt;

    TrackPoint arrival;
    arrival.lat = ac.standLat;
    arrival.lon = ac.standLon;
    arrival.roll = ac.simState.bank;
    arrival.altFt = ac.simState.altFt;
    arrival.gsKt = gsKt;
    arrival.tasKt = gsKt;
    arrival.trackDeg = stand.heading * degPerRad;
    arrival.stationary = back.position() == arrival.position();
    arrival.dueTick = laterTick(frontDue, ticks);
    arrival.headingFromFeed = ac.track.front().headingFromFeed;

    TrackPoint stop = arrival;
    stop.gsKt = 0.0;
    stop.tasKt = 0.0;
    stop.stationary = true;
    stop.dueTick = laterTick(frontDue, std::int64_t{settleTicks} + ticks);

    ac.track.push_back(arrival);
    ac.track.push_back(stop);
    ac.targetHeading = stand.heading;
    // A parking aircraft turns anyway; what its taxi leg meant to turn is over.
    ac.turnOnly = false;
    if (ac.reckonLeft > 0) {
        endDeadReckoning(ac);
    }
}

void lf_arriveAtStand(LiveAc& ac) {
    ParkPos* stand = standBySid(ac.sid);
    if (stand != nullptr && stand->liveParked) {
        ac.reckonLeft = 1;
        lf_removeAc(ac, Reason::StandTakenOnArrival);
        // The removal frees the stand, but the other aircraft holds it.
        stand->liveParked = true;
        return;
    }
    if (gf_distanceNm(ac.simState.position(), standPosition(ac)) > onStandNm) {
        setPhase(ac, AcPhase::Taxi);
        return;
    }
    setPhase(ac, AcPhase::Parked);
    if (stand != nullptr) {
        stand->liveParked = true;
    }
    ac.parkStamp = nowDayHH();
    if (ac.towed && LOG) {
        logIndented(fmt::format("towed aircraft {} parks", describe(ac)));
    }
    ac.track.front().stationary = true;
    ac.parkedSince = wallTicks100ns();
    ac.lastParkDist = 0.0;
    ac.awayCount = 0;
    lf_markCargoStand(ac);
    lf_parkLights(ac);
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} arrived at stand", standName(ac.sid), ac.callsign));
    }
    spawnedIds.push_back(ac.hexid);
    recordArrival(ac);
}

bool lf_parkedPositionCheck(LiveAc& ac, TrackPoint& msg) {
    ac.feedWhileParked = true;
    const double distanceNm = gf_distanceNm(standPosition(ac), msg.position());
    const double radiusNm = ac.prevPhase == AcPhase::Parking ? arrivalRadiusNm : standRadiusNm;
    if (distanceNm <= radiusNm) {
        ac.parkedSince = wallTicks100ns();
        if (!driftedAway(ac, distanceNm)) {
            ac.moveOffSeen = false;
            return false;
        }
        startMoving(ac, msg);
        return true;
    }
    if (ac.phase == AcPhase::Parking) {
        setPhase(ac, AcPhase::Taxi);
        msg.stationary = false;
        return true;
    }
    if (distanceNm > goneNm) {
        if (ac.state != AcState::Live) {
            return true;
        }
        lf_removeAc(ac, Reason::LeftStandFar);
        return false;
    }
    startMoving(ac, msg);
    return true;
}

void lf_parkedAgain(LiveAc& ac) {
    if (ac.reckonLeft > 0) {
        if (ac.phase == AcPhase::Parked) {
            TrackPoint& front = ac.track.front();
            if (ac.landed) {
                const std::int64_t stood = std::int64_t{presentTick()} - front.dueTick + weekTicks;
                ac.towed = stood < towedWithinTicks[static_cast<std::size_t>(ac.category)];
                ac.landed = false;
            }
            front.dueTick = laterTick(presentTick(), 1);
        }
        endDeadReckoning(ac);
    }
    recordDeparture(ac);
    if (ParkPos* stand = standBySid(ac.sid)) {
        stand->liveParked = false;
    }
}

} // namespace kst
