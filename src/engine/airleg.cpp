#include "engine/airleg.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "engine/approach.h"
#include "engine/categories.h"
#include "engine/configuration.h"
#include "engine/groundleg.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "engine/ticks.h"

#include <fmt/format.h>

#include <numeric>

namespace kst {

namespace {

constexpr double ticksPerMinute = 60.0 * ticksPerSecond;
constexpr double touchdownSpeedKt = 100.0; ///< of a leg onto the runway without a speed

// The climb law.
constexpr double levelPitchDeg = -3.0;
constexpr double fpmPerPitchStep = 600.0;
constexpr double pitchStepDeg = 2.2;
constexpr double steepestClimbFpm = 2400.0;
constexpr double steepestDescentFpm = -3000.0;

// Descent on an approach.
constexpr double shortFinalAglFt = 100.0;
constexpr double shortFinalFpm = -600.0;
constexpr double shallowestDescentFpm = -601.0;
constexpr double fpmPerHectopascal = 6.0;
constexpr double flatAltitudeAglFt = 1000.0;
constexpr double flatVerticalSpeedSumFpm = 100.0;

// Near the ground, outside an approach.
constexpr double initialClimbAglFt = 1000.0;
constexpr double leastInitialClimbFt = 0.2; ///< per tick

// A flying aircraft on a track that says ground.
constexpr double climbingTrackSumFpm = 100.0;
constexpr double leastTakeOffClimbFpm = 601.0;
constexpr std::size_t firstAirbornePlace = 3;
constexpr std::size_t lastAirbornePlace = 10;

// Where the feed's own heading is followed, feet above ground.
constexpr double feedHeadingLandingAglFt = 2000.0;
constexpr double feedHeadingAglFt = 1000.0;

double ftPerTick(double fpm) {
    return fpm / ticksPerMinute;
}

void timeFlightLeg(LiveAc& ac) {
    const TrackPoint& front = ac.track[0];
    double speedKt = lf_meanSpeed(ac);
    if (ac.landing && !ac.track[1].airborne) {
        speedKt = front.gsKt > 0.0 ? front.gsKt : touchdownSpeedKt;
    }
    lf_setDueTick(ac, std::max(travelTicks(legDistanceNm(ac), speedKt), shortestLegTicks));
}

/// The leg climbs or descends at this rate, whatever the altitudes of the feed say.
void flyVerticalSpeed(LiveAc& ac, double fpm) {
    ac.track[1].vsFpm = fpm;
    ac.vsTarget = fpm;
    ac.dAlt = ftPerTick(fpm);
}

double altitudeStepToSecond(const LiveAc& ac) {
    return (ac.track[1].altFt - ac.simState.altFt) / lf_stepsToNext(ac);
}

void descendToRunway(LiveAc& ac) {
    const int pressure = qnh.load(std::memory_order_relaxed);
    const auto airport = parkAirportPlace();
    if (airport && pressure <= standardQnh) {
        ac.dAlt = (airport->elevationFt - ac.simState.altFt) / lf_stepsToNext(ac);
    } else {
        flyVerticalSpeed(ac, pressure > standardQnh ? lf_descentRate(ac) : shallowestDescentFpm);
    }
    lf_setGear(ac, true);
}

void setAltitudeRateInFlight(LiveAc& ac) {
    const TrackPoint& front = ac.track[0];
    const TrackPoint& second = ac.track[1];
    const double step = altitudeStepToSecond(ac);
    if (!ac.landing) {
        const bool low = ac.heightAgl <= initialClimbAglFt;
        ac.dAlt = std::min(low ? std::max(step, leastInitialClimbFt) : step, ac.maxClimbStep);
        return;
    }
    const bool flatFeed = front.altFt == second.altFt && ac.heightAgl <= flatAltitudeAglFt &&
                          front.vsFpm + second.vsFpm <= flatVerticalSpeedSumFpm;
    if (flatFeed) {
        flyVerticalSpeed(ac, lf_descentRate(ac));
    } else {
        ac.dAlt = step;
    }
}

void setAltitudeRate(LiveAc& ac) {
    const bool fromAir = ac.track[0].airborne;
    const bool toAir = ac.track[1].airborne;
    if (fromAir && toAir) {
        setAltitudeRateInFlight(ac);
    } else if (fromAir) {
        descendToRunway(ac);
    } else if (toAir) {
        lf_climbToNextPoint(ac);
    } else {
        lf_descentFromTrack(ac);
    }
}

void setPitchRate(LiveAc& ac) {
    if (ac.phase == AcPhase::TakeOff) {
        return;
    }
    const double limit = categoryLimits(ac.category).pitchRateDeg * radPerDeg;
    const double rate = (climbLawPitch(ac.track[1].vsFpm) - ac.simState.pitch) / lf_stepsToNext(ac);
    ac.dPitch = std::clamp(rate, -limit, limit);
}

/// Looks ahead: at the end of the leg the aircraft is on the heading of the next one. Only near the ground
/// does it take the feed's own heading.
double turnOfLeg(const LiveAc& ac) {
    const TrackPoint& second = ac.track[1];
    const double followBelow = ac.landing ? feedHeadingLandingAglFt : feedHeadingAglFt;
    if (second.headingFromFeed && second.roll && second.heading && ac.heightAgl < followBelow) {
        return gf_angleDiff(ac.simState.heading, *second.heading);
    }
    return lf_turnAngleAhead(ac);
}

void setTurnAndBank(LiveAc& ac) {
    const double n = lf_stepsToNext(ac);
    const double turn = turnOfLeg(ac);
    ac.dHeading = turn / n;
    const TrackPoint& second = ac.track[1];
    if (second.roll) {
        ac.dBank = (*second.roll - ac.simState.bank) / n;
        return;
    }
    const CategoryLimits& limits = categoryLimits(ac.category);
    const double maxBank = limits.maxBankDeg * radPerDeg;
    const double maxRate = limits.bankRateDeg * radPerDeg;
    const double target = -std::clamp(turn, -maxBank, maxBank);
    ac.dBank = std::clamp((target - ac.simState.bank) / n, -maxRate, maxRate);
}

} // namespace

double climbLawPitch(double vsFpm) {
    const double effective =
        vsFpm >= 0.0 ? std::min(vsFpm, steepestClimbFpm) : std::max(vsFpm, steepestDescentFpm) / 2.0;
    return (levelPitchDeg - effective / fpmPerPitchStep * pitchStepDeg) * radPerDeg;
}

void nextPosAir(LiveAc& ac) {
    if (!ac.track[1].stationary) {
        timeFlightLeg(ac);
    } else if (ac.category == Category::Rotorcraft) {
        lf_timeTaxiLeg(ac);
    }
}

void lf_setupAirStep(LiveAc& ac) {
    if (ac.phase != AcPhase::TakeOff && ac.phase != AcPhase::Air) {
        setPhase(ac, AcPhase::Air);
    }
    ac.airspeedTarget = ac.track[1].tasKt;
    ac.vsTarget = ac.track[1].vsFpm;
    // The flare owns altitude and pitch.
    if (ac.flareStage == 0) {
        setAltitudeRate(ac);
        setPitchRate(ac);
    }
    setTurnAndBank(ac);
    configureByAltitude(ac);
}

void lf_climbToNextPoint(LiveAc& ac) {
    ac.dAlt = std::clamp(altitudeStepToSecond(ac), 0.0, ac.maxClimbStep);
}

double lf_descentRate(const LiveAc& ac) {
    if (ac.heightAgl <= shortFinalAglFt) {
        return shortFinalFpm;
    }
    const double fed = (ac.track[0].vsFpm + ac.track[1].vsFpm) / 2.0;
    const double correction = (qnh.load(std::memory_order_relaxed) - standardQnh) * fpmPerHectopascal;
    return std::min(fed - correction, shallowestDescentFpm);
}

void lf_descentFromTrack(LiveAc& ac) {
    const double sum =
        std::accumulate(ac.track.begin(), ac.track.end(), 0.0,
                        [](double total, const TrackPoint& point) { return total + point.vsFpm; });
    if (ac.landing || sum <= climbingTrackSumFpm) {
        flyVerticalSpeed(ac, lf_descentRate(ac));
        lf_setGear(ac, true);
        return;
    }
    const std::size_t lastPlace = std::min(ac.track.size() - 1, lastAirbornePlace);
    for (std::size_t place = firstAirbornePlace; place <= lastPlace; ++place) {
        if (findAirborneData(ac, place)) {
            lf_setGear(ac, true);
            return;
        }
    }
    flyVerticalSpeed(ac, std::max(ac.track[1].vsFpm, leastTakeOffClimbFpm));
    lf_setGear(ac, true);
}

bool findAirborneData(LiveAc& ac, std::size_t index) {
    try {
        if (index < 2 || ac.track.size() < index || !ac.track[index - 1].airborne) {
            return false;
        }
        ac.track.erase(ac.track.begin() + 1, ac.track.begin() + static_cast<std::ptrdiff_t>(index) - 1);
        timeFlightLeg(ac);
        // The leg ends elsewhere now.
        aimAtSecond(ac);
        lf_climbToNextPoint(ac);
        return true;
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: index:{} {}", "findAirborneData", index, error.what()));
        return false;
    }
}

} // namespace kst
