#include "engine/legs.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "engine/airleg.h"
#include "engine/curves.h"
#include "engine/groundleg.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/standselection.h"
#include "engine/ticks.h"

#include <fmt/format.h>

#include <initializer_list>

namespace kst {

namespace {

constexpr std::int32_t calmDriftTicks = 1000;
constexpr std::int32_t driftDecayTicks = 100;
constexpr std::int32_t wideDriftTicks = 3000;
constexpr std::int32_t departureLagTicks = 5000;

/// More invented points than any silence allows: a track that still holds no leg after them never will.
constexpr int mostInventions = 16;

bool samePlace(const TrackPoint& a, const TrackPoint& b) {
    return a.position() == b.position();
}

/// Only a helicopter can stand in the air.
bool wouldStandInTheAir(const LiveAc& ac) {
    return !ac.onGround && ac.category != Category::Rotorcraft &&
           (ac.track[1].stationary || samePlace(ac.track[0], ac.track[1]));
}

void planNextLeg(LiveAc& ac) {
    Reason why = Reason::TrackEnded;
    for (int inventions = 0; inventions < mostInventions; ++inventions) {
        while (ac.track.size() >= 2 && wouldStandInTheAir(ac)) {
            ac.track.erase(ac.track.begin() + 1);
        }
        if (ac.track.size() >= 2) {
            nextPos(ac);
            return;
        }
        if (!lf_extendTrack(ac)) {
            why = ac.reason;
            break;
        }
    }
    // An arrival on a taken stand has removed the aircraft already.
    if (ac.state == AcState::Removing) {
        return;
    }
    if (ac.phase != AcPhase::Parked) {
        lf_learnSoft(ac, ac.phase != AcPhase::Air);
    }
    lf_removeAc(ac, why);
}

/// What the simulator is sent stays a number, whatever the track holds.
void keepRatesFinite(LiveAc& ac) {
    for (double* rate : {&ac.dLat, &ac.dLon, &ac.dPitch, &ac.dBank, &ac.dHeading, &ac.dAlt, &ac.vsTarget,
                         &ac.airspeedTarget, &ac.turnRate, &ac.targetHeading, &ac.curveStep}) {
        if (!std::isfinite(*rate)) {
            *rate = 0.0;
        }
    }
}

} // namespace

void setPhase(LiveAc& ac, AcPhase phase) {
    if (ac.phase != phase) {
        ac.prevPhase = ac.phase;
        ac.phase = phase;
    }
}

void nextPosMain(LiveAc& ac) {
    try {
        planNextLeg(ac);
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "nextPosMain", error.what()));
    }
}

void nextPos(LiveAc& ac) {
    clearCurve(ac);
    if (samePlace(ac.track[0], ac.track[1])) {
        ac.track[1].stationary = true;
    }
    if (!ac.track[1].stationary) {
        ac.targetHeading = gf_bearing(ac.track[0].position(), ac.track[1].position());
    }

    if (ac.onGround) {
        nextPosGround(ac);
    } else {
        nextPosAir(ac);
    }
    if (ac.track.size() < 2) {
        return;
    }

    if (ac.track[1].stationary) {
        ac.dLat = 0.0;
        ac.dLon = 0.0;
        if (!ac.rollingOut && !ac.departing) {
            decayDriftLimits(ac);
        }
    } else {
        aimAtSecond(ac);
        if (ac.onGround) {
            lf_setupGroundStep(ac);
        } else {
            lf_setupAirStep(ac);
        }
    }
    keepRatesFinite(ac);
    if (!ac.track[1].stationary) {
        // The next leg waits for this one to be flown, also where its end was due already: begun earlier, it
        // would cover in its own short time what this one left over.
        ac.track[1].dueTick = laterTick(presentTick(), lf_stepsToNext(ac));
    }
    ac.track.erase(ac.track.begin());
}

void aimAtSecond(LiveAc& ac) {
    const TrackPoint& second = ac.track[1];
    const double n = lf_stepsToNext(ac);
    ac.dLat = (second.lat - ac.simState.lat) / n;
    // The short way round, also across the date line.
    ac.dLon = wrapLongitude(second.lon - ac.simState.lon) / n;
}

void lf_setDueTick(LiveAc& ac, std::int32_t ticks) {
    TrackPoint& second = ac.track[1];
    const std::int64_t now = presentTick();
    const std::int64_t wanted = now + ticks;
    const std::int64_t latest = std::int64_t{second.dueTick} + ac.maxLagTicks;
    const std::int64_t earliest = std::int64_t{second.dueTick} - ac.maxLeadTicks;
    std::int64_t due = wanted;
    if (ac.reckonLeft <= 0) {
        due = wanted > latest ? latest : std::max(wanted, earliest);
    }
    second.dueTick = saturatedTick(std::max(due, now));
}

std::int32_t lf_stepsToNext(const LiveAc& ac) {
    return std::max(ticksBetween(presentTick(), ac.track[1].dueTick), shortestLegTicks);
}

double legDistanceNm(const LiveAc& ac) {
    return gf_distanceNm(ac.track[0].position(), ac.track[1].position());
}

std::int32_t feedTicks(const LiveAc& ac) {
    return std::max(ticksBetween(ac.track[0].dueTick, ac.track[1].dueTick), shortestLegTicks);
}

double lf_meanSpeed(const LiveAc& ac) {
    const TrackPoint& front = ac.track[0];
    const TrackPoint& second = ac.track[1];
    if (front.gsKt == 0.0 && second.gsKt == 0.0) {
        return std::max(legDistanceNm(ac) * ticksPerHour / feedTicks(ac), 1.0);
    }
    return (front.gsKt + second.gsKt) / 2.0;
}

double lf_turnAngleAhead(const LiveAc& ac) {
    // Between two points on one spot there is no direction to turn to.
    if (ac.track.size() < 3 || samePlace(ac.track[1], ac.track[2])) {
        return 0.0;
    }
    return gf_angleDiff(ac.simState.heading, gf_bearing(ac.track[1].position(), ac.track[2].position()));
}

void decayDriftLimits(LiveAc& ac) {
    for (std::int32_t* limit : {&ac.maxLeadTicks, &ac.maxLagTicks}) {
        if (*limit > calmDriftTicks) {
            *limit = std::max(*limit - driftDecayTicks, calmDriftTicks);
        }
    }
}

void widenDriftLimits(LiveAc& ac) {
    ac.maxLeadTicks = wideDriftTicks;
    ac.maxLagTicks = ac.departing ? departureLagTicks : wideDriftTicks;
}

} // namespace kst
