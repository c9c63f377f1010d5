#include "engine/groundleg.h"

#include "core/geodesy.h"
#include "engine/configuration.h"
#include "engine/curves.h"
#include "engine/flare.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "engine/pushback.h"
#include "engine/standconflicts.h"
#include "engine/takeoff.h"
#include "engine/ticks.h"
#include "parking/stands.h"

#include <array>
#include <cmath>

namespace kst {

namespace {

// Corners, degrees between the present heading and the leg after the next point.
constexpr double straightDeg = 3.0;
constexpr double sharpDeg = 45.0;
constexpr double reversalDeg = 160.0;

// A leg of its own in which to brake into a sharp corner.
constexpr double brakingLegNm = 50.0 * nmPerMetre;
constexpr double brakingLegKt = 43.0;
constexpr std::int32_t brakingLegTicks = 600;

// A change of speed that takes two legs.
constexpr double speedChangeKt = 5.0;
constexpr double speedChangeLegNm = 100.0 * nmPerMetre;

// Where a track that ends is searched for a stand.
constexpr double claimSpeedKt = 5.0;
constexpr double claimDistanceNm = 35.0 * nmPerMetre;

// The rate of turn of a leg.
constexpr double turnSlackRatio = 1.2;
constexpr double gentleTurnDeg = 10.0;
constexpr double gentleTurnNm = 30.0 * nmPerMetre;
constexpr double fullTurnDeg = 90.0;
constexpr double sharpTurnDegPerRate = 30.0;
constexpr std::int32_t sharpTurnDriftTicks = 2000;
constexpr double fastestTurnInRates = 3.0;

/// Throttle of a departure roll, by the ground speeds of front and second point.
struct RollPower {
    double frontKt;
    double secondKt;
    int level;
};
constexpr std::array<RollPower, 3> rollPowers = {{{25.0, 30.0, 4}, {20.0, 25.0, 2}, {15.0, 20.0, 1}}};

double angleDeg(double from, double to) {
    return std::abs(gf_angleDiff(from, to)) * degPerRad;
}

bool needsBrakingLeg(const LiveAc& ac) {
    return legDistanceNm(ac) > brakingLegNm && ac.track[0].gsKt <= brakingLegKt &&
           feedTicks(ac) >= brakingLegTicks;
}

void shapeCorner(LiveAc& ac) {
    if (ac.track.size() < 3) {
        // Invented points keep their own speeds.
        if (ac.reckonLeft <= 0) {
            lf_smoothSpeed(ac);
        }
        return;
    }
    if (ac.track[2].stationary) {
        lf_smoothSpeed(ac);
        return;
    }
    const double corner = std::abs(lf_turnAngleAhead(ac)) * degPerRad;
    if (corner > sharpDeg && needsBrakingLeg(ac)) {
        lf_insertMidPoint(ac);
        return;
    }
    const bool returns = ac.track[0].position() == ac.track[2].position();
    if (corner <= straightDeg || corner > reversalDeg || returns) {
        lf_smoothSpeed(ac);
        return;
    }
    lf_buildCurve(ac);
    ac.curveTurnDeg = corner;
}

void setTurnFlag(LiveAc& ac) {
    if (curveActive(ac)) {
        ac.turnOnly = false;
        return;
    }
    ac.turnDeg = angleDeg(ac.simState.heading, ac.targetHeading);
    ac.turnOnly = ac.turnDeg > straightDeg;
}

void lookForStand(LiveAc& ac) {
    const bool justLeftStand = ac.prevPhase == AcPhase::Parked || ac.prevPhase == AcPhase::PushBack ||
                               ac.prevPhase == AcPhase::AfterPush;
    if (!ac.track.back().stationary || ac.phase != AcPhase::Taxi || parkPositions().empty() ||
        (justLeftStand && !ac.towed)) {
        return;
    }
    if (ac.reckonLeft > 0) {
        lf_claimStand(ac, ac.landed);
    } else if (ac.track[1].gsKt <= claimSpeedKt &&
               gf_distanceNm(ac.simState.position(), ac.track.back().position()) <= claimDistanceNm) {
        lf_claimStand(ac, false);
    }
}

void leaveStand(LiveAc& ac) {
    widenDriftLimits(ac);
    if (!ac.moveOffSeen) {
        return;
    }
    const LatLon stand{ac.standLat, ac.standLon};
    const double off = std::round(angleDeg(ac.standHeading, gf_bearing(stand, ac.track.back().position())));
    if (off < fullTurnDeg) {
        lf_pullOutStraight(ac);
    } else {
        lf_pushBack(ac);
    }
    if (ac.phase == AcPhase::Parked) {
        // Its stand is gone, nobody pushes it: it stays, and does not drive off with its nose turned round.
        ac.moveOffSeen = false;
        ac.track.resize(1);
    }
}

/// Fits the rate of turn to the time of the leg: a short leg turns faster, a long one slower.
void scaleTurnRate(LiveAc& ac, double legTicks) {
    const double turn = ac.turnOnly ? ac.turnDeg : ac.curveTurnDeg;
    const double distanceNm = legDistanceNm(ac);
    if (!(turn > 0.0) || !(distanceNm > 0.0)) {
        return;
    }
    const double ratio = legTicks / std::max(std::round(turn / ac.turnRate / 100.0), 1.0);
    if (turn > sharpDeg) {
        ac.turnRate *= std::min(ratio, std::min(turn, fullTurnDeg) / sharpTurnDegPerRate);
        if (turn >= fullTurnDeg) {
            ac.maxLeadTicks = std::max(ac.maxLeadTicks, sharpTurnDriftTicks);
            ac.maxLagTicks = std::max(ac.maxLagTicks, sharpTurnDriftTicks);
        }
        return;
    }
    const double divisor =
        ratio >= turnSlackRatio
            ? std::min({ratio * gentleTurnDeg / turn, ratio * gentleTurnNm / distanceNm, ratio})
            : ratio;
    if (divisor > 0.0) {
        ac.turnRate /= divisor;
    }
}

/// The ticks of the way onto a stand: one too short for its turn at the fastest is rolled that much slower.
std::int32_t ticksOntoStand(LiveAc& ac, std::int32_t wayTicks) {
    const double turn = std::abs(gf_angleDiff(ac.simState.heading, ac.targetHeading));
    const double turnTicks = std::ceil(turn / (ac.baseTurnRate * fastestTurnInRates));
    if (!(turnTicks > wayTicks)) {
        return wayTicks;
    }
    ac.maxLagTicks = std::max(ac.maxLagTicks, sharpTurnDriftTicks);
    return static_cast<std::int32_t>(std::min(turnTicks, double{sharpTurnDriftTicks}));
}

/// The nose is to be in line when the aircraft stops on its stand.
void turnOntoStand(LiveAc& ac) {
    const double turn = std::abs(gf_angleDiff(ac.simState.heading, ac.targetHeading));
    const double needed = turn / lf_stepsToNext(ac);
    ac.turnRate = std::max(ac.turnRate, std::min(needed, ac.baseTurnRate * fastestTurnInRates));
}

void timeStandingLeg(LiveAc& ac) {
    const std::int32_t untilFront = ticksBetween(presentTick(), ac.track[0].dueTick);
    lf_setDueTick(ac, std::max(laterTick(untilFront, feedTicks(ac)), shortestLegTicks));
}

void setRollPower(LiveAc& ac) {
    for (const RollPower& power : rollPowers) {
        if (ac.track[0].gsKt >= power.frontKt || ac.track[1].gsKt >= power.secondKt) {
            setThrottleByCategory(ac, power.level);
            return;
        }
    }
    setThrottleByCategory(ac, 0);
}

void setGroundPower(LiveAc& ac) {
    if (ac.departing) {
        setRollPower(ac);
    } else if (ac.rollingOut) {
        lf_rollout(ac);
    } else {
        setThrottleByCategory(ac, 0);
    }
}

} // namespace

void nextPosGround(LiveAc& ac) {
    switch (ac.phase) {
    case AcPhase::PushBack:
        if (advancePushBack(ac)) {
            lf_timeTaxiLeg(ac);
            return;
        }
        break;
    case AcPhase::AfterPush:
        break;
    case AcPhase::Parked:
        leaveStand(ac);
        if (ac.track.size() < 2) {
            return;
        }
        break;
    case AcPhase::Taxi:
    case AcPhase::TakeOff:
    case AcPhase::Air:
    case AcPhase::Parking:
    case AcPhase::Unknown:
        if (!ac.track[1].stationary) {
            shapeCorner(ac);
        }
        if (!ac.track[1].stationary) {
            setTurnFlag(ac);
        }
        lookForStand(ac);
        break;
    }
    lf_timeTaxiLeg(ac);
}

void lf_timeTaxiLeg(LiveAc& ac) {
    if (ac.track[1].stationary) {
        timeStandingLeg(ac);
        return;
    }
    ac.turnRate = ac.baseTurnRate;
    std::int32_t ticks = std::max(travelTicks(legDistanceNm(ac), lf_meanSpeed(ac)), shortestLegTicks);
    if (ac.phase == AcPhase::Parking) {
        ticks = ticksOntoStand(ac, ticks);
    }
    if (curveActive(ac) || ac.turnOnly) {
        scaleTurnRate(ac, ticks);
    }
    lf_setDueTick(ac, ticks);
    if (ac.phase == AcPhase::Parking) {
        turnOntoStand(ac);
    }
}

void lf_smoothSpeed(LiveAc& ac) {
    const double front = ac.track[0].gsKt;
    const double second = ac.track[1].gsKt;
    if ((front > 0.0 || second > 0.0) && std::abs(front - second) > speedChangeKt &&
        legDistanceNm(ac) >= speedChangeLegNm) {
        lf_insertMidPoint(ac);
    }
}

void lf_insertMidPoint(LiveAc& ac) {
    const TrackPoint& front = ac.track[0];
    const TrackPoint& second = ac.track[1];
    TrackPoint middle = front;
    middle.lat = (front.lat + second.lat) / 2.0;
    middle.lon = wrapLongitude(front.lon + wrapLongitude(second.lon - front.lon) / 2.0);
    middle.gsKt = (front.gsKt + second.gsKt) / 2.0;
    const double altFt = (front.altFt + second.altFt) / 2.0;
    middle.airborne = altFt > 0.0;
    middle.altFt = std::max(altFt, 0.0);
    middle.dueTick = static_cast<std::int32_t>((std::int64_t{front.dueTick} + second.dueTick) / 2);
    middle.stationary = false;
    ac.track.insert(ac.track.begin() + 1, middle);
}

void lf_setupGroundStep(LiveAc& ac) {
    if (ac.phase == AcPhase::Air || ac.phase == AcPhase::Parked) {
        setPhase(ac, AcPhase::Taxi);
    } else {
        setGroundPower(ac);
    }
    if (!ac.rollingOut && !ac.departing) {
        decayDriftLimits(ac);
    }
    // A nose that is still coming down after touchdown is left to do so.
    if (ac.flareStage == 0 && !ac.flaring && ac.phase != AcPhase::TakeOff) {
        ac.simState.pitch = ac.staticPitch;
        ac.dPitch = 0.0;
        ac.simState.bank = 0.0;
        ac.dBank = 0.0;
    }
    if (curveActive(ac)) {
        ac.curveStep = 1.0 / lf_stepsToNext(ac);
    }
    ac.airspeedTarget = ac.phase == AcPhase::PushBack ? -ac.track[1].gsKt : ac.track[1].gsKt;
    checkTakeOff(ac);
}

} // namespace kst
