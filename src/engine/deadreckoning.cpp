#include "engine/deadreckoning.h"

#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/parked.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "engine/ticks.h"
#include "parking/stands.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace kst {

namespace {

constexpr int groundStepSeconds = 3;
constexpr int airStepSeconds = 8;
constexpr int groundPoints = 10;
constexpr int airPoints = 8;
constexpr int parkedPoints = 1;
constexpr int lastPoint = 1;
constexpr int usedUp = -1;

constexpr std::int32_t holdTicks = 3 * ticksPerSecond;
constexpr std::int32_t ticksPerMinute = 60 * ticksPerSecond;
constexpr double neighbourMargin = 1.2;
constexpr double rangeMarginNm = 0.5;

/// An accelerating take-off roll: the next speed by the present one.
struct RollStep {
    double upToKt;
    double nextKt;
    std::optional<double> vsFpm; ///< kept where there is none
};
constexpr double anySpeed = std::numeric_limits<double>::infinity();
constexpr std::array<RollStep, 6> rollSteps = {{{30.0, 40.0, std::nullopt},
                                                {60.0, 80.0, std::nullopt},
                                                {100.0, 110.0, std::nullopt},
                                                {140.0, 150.0, 600.0},
                                                {160.0, 170.0, 1200.0},
                                                {anySpeed, 180.0, 2400.0}}};

/// A braking landing roll: the next speed by the present one.
struct BrakeStep {
    double fromKt;
    double nextKt;
};
constexpr std::array<BrakeStep, 5> brakeSteps = {
    {{140.0, 100.0}, {100.0, 80.0}, {80.0, 60.0}, {60.0, 30.0}, {-anySpeed, 20.0}}};

constexpr double coastFactor = 0.95;
constexpr double landingCoastFactor = 0.90;
constexpr int steadyLandingPoints = 4; ///< the last points of an approach keep their speed
constexpr double slowestCoastKt = 1.0;

constexpr double finalFpm = -667.0;
constexpr double finalFtPerSecond = 10.005;
constexpr double climbOutFpm = 1500.0;
constexpr double climbOutFtPerSecond = 25.0;

bool categoryShown(Category category) {
    switch (category) {
    case Category::Light:
        return LIGHT_AIRCRAFT;
    case Category::HighPerf:
        return HIGH_PERF_AIRCRAFT;
    case Category::Rotorcraft:
        return HELICOPTERS;
    case Category::Buzjets:
    case Category::Large:
    case Category::Heavy:
        break;
    }
    return true;
}

bool endsWith(LiveAc& ac, Reason why) {
    ac.reason = why;
    return false;
}

bool waitsForData(const LiveAc& ac) {
    return ac.phase == AcPhase::AfterPush || (ac.phase == AcPhase::Taxi && !ac.departing && !ac.rollingOut);
}

/// Another aircraft taxies so near that a waiting one would be in its way.
bool standsInTheWay(const LiveAc& ac) {
    return std::any_of(liveAcs.begin(), liveAcs.end(), [&](const LiveAc& other) {
        return other.state == AcState::Live && other.onGround && other.phase == AcPhase::Taxi &&
               other.objectId != ac.objectId &&
               gf_distanceNm(ac.simState.position(), other.simState.position()) <=
                   (ac.halfSpanNm + other.halfSpanNm) * neighbourMargin;
    });
}

/// The aircraft holds its place for three more seconds.
bool holdPosition(LiveAc& ac) {
    if (standsInTheWay(ac)) {
        ac.holding = false;
        ac.holdStartTick = 0;
        return endsWith(ac, Reason::TaxiNeighbourClose);
    }
    if (!ac.holding) {
        ac.holdStartTick = presentTick();
    } else if ((std::int64_t{presentTick()} - ac.holdStartTick) / ticksPerMinute > MAX_HOLDING_MINUTES) {
        return endsWith(ac, Reason::HeldTooLong);
    }
    ac.holding = true;
    TrackPoint hold = ac.track.front();
    hold.dueTick = laterTick(hold.dueTick, holdTicks);
    hold.gsKt = 0.0;
    hold.stationary = true;
    ac.track.push_back(hold);
    ac.reckonLeft = lastPoint;
    return true;
}

/// Whether an aircraft in the air may coast on: not beyond the working range, and not where only the airport
/// is shown.
bool mayCoast(const LiveAc& ac) {
    if (closeAirportMode.load(std::memory_order_relaxed)) {
        return false;
    }
    const LatLon user = userData.position();
    return !positionKnown(user) || gf_distanceNm(user, ac.simState.position()) <
                                       workingRangeNm.load(std::memory_order_relaxed) - rangeMarginNm;
}

bool beginDeadReckoning(LiveAc& ac) {
    if (!categoryShown(ac.category) || (!ac.onGround && !mayCoast(ac))) {
        return endsWith(ac, Reason::TrackEnded);
    }
    int points = airPoints;
    if (ac.onGround) {
        points = ac.phase == AcPhase::Parked ? parkedPoints : groundPoints;
    }
    lf_deadReckon(ac, points);
    return true;
}

void accelerate(TrackPoint& p) {
    const auto step = std::find_if(rollSteps.begin(), rollSteps.end() - 1,
                                   [&](const RollStep& row) { return p.gsKt <= row.upToKt; });
    p.gsKt = step->nextKt;
    p.vsFpm = step->vsFpm.value_or(p.vsFpm);
}

void brake(TrackPoint& p) {
    const auto step = std::find_if(brakeSteps.begin(), brakeSteps.end() - 1,
                                   [&](const BrakeStep& row) { return p.gsKt >= row.fromKt; });
    p.gsKt = step->nextKt;
    p.vsFpm = 0.0;
}

void changeAltitude(TrackPoint& p, double vsFpm, double byFt) {
    p.vsFpm = vsFpm;
    p.altFt += byFt;
    p.airborne = p.altFt > 0.0;
    p.altFt = std::max(p.altFt, 0.0);
}

void moveOn(const LiveAc& ac, TrackPoint& p, int seconds) {
    const double feet = seconds * ticksPerSecond * p.gsKt * feetPerNm / ticksPerHour;
    const LatLon from = p.position();
    const LatLon to = gf_destination(from, ac.simState.heading, feet);
    if (std::isfinite(to.lat) && std::isfinite(to.lon)) {
        p.lat = to.lat;
        p.lon = to.lon;
    }
    p.stationary = p.position() == from;
    if (ac.landing && ac.flareStage == 0) {
        changeAltitude(p, finalFpm, -seconds * finalFtPerSecond);
    } else if (!ac.landing && ac.phase == AcPhase::TakeOff) {
        // The last thing heard may be a point on the ground, which has no altitude.
        p.altFt = p.airborne ? p.altFt : ac.simState.altFt;
        changeAltitude(p, climbOutFpm, seconds * climbOutFtPerSecond);
    }
}

/// Speed and position of the invented point.
void inventMovement(const LiveAc& ac, TrackPoint& p, int n, int seconds) {
    if (p.stationary || ac.phase == AcPhase::Parked || (ac.onGround && !ac.rollingOut && !ac.departing)) {
        p.gsKt = 0.0;
        p.stationary = true;
        return;
    }
    if (!ac.onGround) {
        if (!ac.landing || n >= steadyLandingPoints) {
            p.gsKt = std::max(p.gsKt * (ac.landing ? landingCoastFactor : coastFactor), slowestCoastKt);
        }
    } else if (ac.rollingOut) {
        brake(p);
    } else {
        accelerate(p);
    }
    if (p.gsKt > 0.0) {
        moveOn(ac, p, seconds);
    }
}

} // namespace

bool lf_extendTrack(LiveAc& ac) {
    if (ac.track.empty()) {
        return endsWith(ac, Reason::TrackEnded);
    }
    if (ac.phase == AcPhase::Parking) {
        lf_arriveAtStand(ac);
        if (ac.state == AcState::Removing) {
            return false;
        }
    } else if (waitsForData(ac)) {
        return holdPosition(ac);
    }
    if (ac.reckonLeft < 0) {
        return endsWith(ac, Reason::TrackEnded);
    }
    if (ac.reckonLeft == lastPoint) {
        ac.reckonLeft = usedUp;
        return endsWith(ac, Reason::TrackEnded);
    }
    if (ac.reckonLeft > lastPoint) {
        lf_deadReckon(ac, ac.reckonLeft - 1);
        return true;
    }
    return beginDeadReckoning(ac);
}

void lf_deadReckon(LiveAc& ac, int n) {
    ac.reckonLeft = n;
    const bool parked = ac.phase == AcPhase::Parked;
    const int seconds = ac.onGround ? groundStepSeconds : airStepSeconds;
    TrackPoint p = ac.track.front();
    inventMovement(ac, p, n, seconds);
    p.dueTick = laterTick(p.dueTick, parked ? weekTicks : seconds * ticksPerSecond);
    if (parked) {
        ac.feedWhileParked = false;
        if (ParkPos* stand = standBySid(ac.sid)) {
            stand->liveParked = false;
        }
    }
    ac.track.push_back(p);
}

} // namespace kst
