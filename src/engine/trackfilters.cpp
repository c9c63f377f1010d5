#include "engine/trackfilters.h"

#include "core/geodesy.h"
#include "engine/legs.h"
#include "engine/ticks.h"

#include <cmath>

namespace kst {

namespace {

constexpr double jitterDeg = 0.00015; ///< latitude and longitude, some 17 m
constexpr double rollingKt = 30.0;
constexpr double fastRollKt = 50.0;

// How far off the nose a position may lie.
constexpr double besideDeg = 90.0;
constexpr double passedDeg = 100.0;
constexpr double behindDeg = 150.0;

constexpr double landingTaxiKt = 40.0;

// A position of a waiting aircraft that is not believed.
constexpr double waitingKt = 8.0;
constexpr double waitingNm = 25.0 * nmPerMetre;
constexpr double turnedRoundDeg = 120.0;

bool samePlace(const TrackPoint& a, const TrackPoint& b) {
    return a.position() == b.position();
}

bool nearlySamePlace(const TrackPoint& a, const TrackPoint& b) {
    return std::abs(a.lat - b.lat) < jitterDeg && std::abs(wrapLongitude(a.lon - b.lon)) < jitterDeg;
}

/// Angle between the aircraft's nose and the direction from one point to another, degrees.
double offNoseDeg(const LiveAc& ac, const TrackPoint& from, const TrackPoint& to) {
    const double bearing = gf_bearing(from.position(), to.position());
    return std::abs(gf_angleDiff(ac.simState.heading, bearing)) * degPerRad;
}

/// The way the aircraft comes along at the end of its track.
double headingAtEnd(const LiveAc& ac) {
    const TrackPoint& last = ac.track.back();
    for (auto before = ac.track.rbegin() + 1; before != ac.track.rend(); ++before) {
        if (!samePlace(*before, last)) {
            return gf_bearing(before->position(), last.position());
        }
    }
    return ac.simState.heading;
}

/// A taxiing aircraft does not turn round on the spot. A slow position close behind it is the feed's jitter:
/// an aircraft that waits is often reported in turn at two places some 20 m apart.
bool turnsOnTheSpot(const LiveAc& ac, const TrackPoint& msg) {
    if (ac.state != AcState::Live || !ac.onGround || ac.phase != AcPhase::Taxi || ac.departing ||
        msg.gsKt > waitingKt) {
        return false;
    }
    const TrackPoint& last = ac.track.back();
    const double turn = std::abs(gf_angleDiff(headingAtEnd(ac), gf_bearing(last.position(), msg.position())));
    return turn * degPerRad > turnedRoundDeg && gf_distanceNm(last.position(), msg.position()) < waitingNm;
}

bool takeStandstill(const LiveAc& ac, TrackPoint& msg, bool flying) {
    if (flying || (ac.departing && msg.gsKt > 0.0 && ac.track.back().gsKt >= rollingKt)) {
        return false;
    }
    msg.gsKt = std::min(msg.gsKt, 0.0);
    return true;
}

bool takeJitter(const LiveAc& ac, TrackPoint& msg, bool flying) {
    const TrackPoint& last = ac.track.back();
    if (flying || (ac.departing && msg.gsKt > 0.0 && last.gsKt >= fastRollKt)) {
        return false;
    }
    msg = last;
    msg.gsKt = 0.0;
    msg.stationary = true;
    return true;
}

/// Drops what lies behind the new position at the end of the track, two points at the most, never the first.
void dropPassedPoints(LiveAc& ac, const TrackPoint& msg) {
    const bool twoToSpare = ac.track.size() >= 3;
    if (offNoseDeg(ac, ac.track.back(), msg) < besideDeg) {
        return;
    }
    ac.track.pop_back();
    if (twoToSpare && offNoseDeg(ac, ac.track.back(), msg) >= besideDeg) {
        ac.track.pop_back();
    }
}

/// The track holds the point being flown to and no more: false rejects the position.
bool passesOnlyPoint(LiveAc& ac, const TrackPoint& msg) {
    const double off = offNoseDeg(ac, ac.track.back(), msg);
    if (ac.landing) {
        return off < besideDeg;
    }
    if (off < behindDeg) {
        return true;
    }
    if (ac.reckonLeft > 0) {
        return false;
    }
    // The aircraft rolled further than it should have: it goes on from where it is.
    TrackPoint& here = ac.track.back();
    here.lat = ac.simState.lat;
    here.lon = ac.simState.lon;
    here.dueTick = laterTick(presentTick(), 1);
    return true;
}

} // namespace

bool lf_filterPosition(const LiveAc& ac, TrackPoint& msg) {
    const TrackPoint& last = ac.track.back();
    msg.stationary = samePlace(msg, last);
    if (ac.category == Category::Rotorcraft) {
        return true;
    }
    const bool flying = msg.airborne || (ac.state == AcState::Live && !ac.onGround);
    if (msg.stationary) {
        return takeStandstill(ac, msg, flying);
    }
    if (nearlySamePlace(msg, last) || turnsOnTheSpot(ac, msg)) {
        return takeJitter(ac, msg, flying);
    }
    const bool moves = msg.gsKt != 0.0 || (!ac.departing && !msg.airborne);
    return moves || last.gsKt < fastRollKt;
}

bool lf_resumeFromDeadReckoning(LiveAc& ac, const TrackPoint& msg) {
    if (!ac.onGround && offNoseDeg(ac, ac.track.back(), msg) >= passedDeg) {
        return false;
    }
    endDeadReckoning(ac);
    ac.track.front().dueTick = laterTick(presentTick(), 1);
    ac.holding = false;
    ac.holdStartTick = 0;
    return true;
}

bool lf_filterApproachPosition(LiveAc& ac, TrackPoint& msg) {
    if (samePlace(msg, ac.track.back())) {
        return false;
    }
    if (ac.track.size() >= 2) {
        dropPassedPoints(ac, msg);
    } else if (!passesOnlyPoint(ac, msg)) {
        return false;
    }
    if (ac.reckonLeft > 0) {
        endDeadReckoning(ac);
    }
    const TrackPoint& last = ac.track.back();
    msg.stationary = samePlace(msg, last);
    if (!msg.stationary && msg.gsKt > last.gsKt && msg.gsKt > landingTaxiKt) {
        msg.gsKt = last.gsKt;
    }
    return true;
}

void endDeadReckoning(LiveAc& ac) {
    ac.reckonLeft = 0;
    widenDriftLimits(ac);
}

} // namespace kst
