#include "bench/realism/legwatch.h"

#include "core/geodesy.h"
#include "engine/curves.h"
#include "engine/ticks.h"

#include <algorithm>

namespace kst::bench {

namespace {

/// A leg this much shorter than its speed asks for was cut.
constexpr double cutShare = 0.9;
/// A due time this much later than the feed's was moved.
constexpr std::int32_t movedTicks = 100;

} // namespace

void LegWatch::DriftLimit::pass(std::int32_t now, bool newLeg) {
    if (newLeg) {
        ofLegBefore = ofLeg;
        // Widened and timed in one pass, it is the wider one that counted.
        ofLeg = std::max(present, now);
    }
    present = now;
}

float LegWatch::DriftLimit::seconds() const {
    return static_cast<float>(std::max(ofLeg, ofLegBefore)) / ticksPerSecond;
}

void LegWatch::pass(const LiveAc* ac, double seconds) {
    now_ = seconds;
    if (ac == nullptr || ac->track.empty()) {
        respawning_ = false;
        objectId_ = 0;
        return;
    }
    respawning_ = respawning_ || ac->state == AcState::Respawning;
    if (ac->state == AcState::Live) {
        if (ac->objectId != objectId_) {
            beginObject(*ac);
        } else {
            takePoints(*ac);
        }
        ideal_.pass(presentTick(), ac->maxLeadTicks, ac->maxLagTicks);
    }
    noteLeg(*ac);
}

void LegWatch::beginObject(const LiveAc& ac) {
    objectId_ = ac.objectId;
    spawnedAt_ = now_;
    respawned_ = respawning_;
    respawning_ = false;
    ideal_ = IdealReplay();
    ideal_.start(ac.simState.position(), ac.track, presentTick());
    for (const TrackPoint& point : ac.track) {
        fed_.insert(placeOf(point));
    }
    taken_ = ac.track.back();
}

void LegWatch::takePoints(const LiveAc& ac) {
    const TrackPoint& last = ac.track.back();
    const bool another = placeOf(last) != placeOf(taken_);
    if (ac.reckonLeft > 0 || !(another || (last.stationary && last.dueTick > taken_.dueTick))) {
        return;
    }
    ideal_.take(last);
    fed_.insert(placeOf(last));
    if (ticksBetween(presentTick() + playDelayTicks, last.dueTick) > movedTicks) {
        moved_.insert(placeOf(last));
    }
    taken_ = last;
}

void LegWatch::noteLeg(const LiveAc& ac) {
    if (ac.reckonLeft > 0) {
        coastedAt_ = now_;
    }
    const TrackPoint& target = ac.track.front();
    const bool newLeg = placeOf(target) != placeOf(target_);
    lead_.pass(ac.maxLeadTicks, newLeg);
    lag_.pass(ac.maxLagTicks, newLeg);
    if (newLeg) {
        leg_ = kindOfLeg(ac);
        // Before it has an object none of its points has been taken.
        invented_ = ac.reckonLeft > 0 || (objectId_ != 0 && !ac.onGround && !fed_.contains(placeOf(target)));
    }
    target_ = target;
    legLeftS_ = static_cast<float>(ticksBetween(presentTick(), target.dueTick)) / ticksPerSecond;
    turnDeg_ = static_cast<float>(ac.turnOnly ? ac.turnDeg : ac.curveTurnDeg);
}

LegKind LegWatch::kindOfLeg(const LiveAc& ac) const {
    const TrackPoint& to = ac.track.front();
    const double speedKt = (target_.gsKt + to.gsKt) / 2.0;
    const double ticks = ticksBetween(presentTick(), to.dueTick);
    const double bySpeed = travelTicks(gf_distanceNm(target_.position(), to.position()), speedKt);
    if (ac.reckonLeft <= 0 && speedKt > 0.0 && ticks < cutShare * bySpeed) {
        return LegKind::Cut;
    }
    if (curveActive(ac)) {
        return LegKind::Curve;
    }
    return invented_ && ac.reckonLeft <= 0 ? LegKind::Resumed : LegKind::Usual;
}

void LegWatch::describe(Sample& sample) const {
    sample.leadLimitS = lead_.seconds();
    sample.lagLimitS = lag_.seconds();
    sample.leg = leg_;
    sample.dueMoved = moved_.contains(placeOf(target_));
    sample.respawned = respawned_;
    sample.sinceSpawnS = static_cast<float>(now_ - spawnedAt_);
    sample.sinceCoastedS = static_cast<float>(now_ - coastedAt_);
    sample.legLeftS = legLeftS_;
    sample.turnDeg = turnDeg_;
}

Sample LegWatch::ideal(const Sample& flown) const {
    Sample ideal = flown;
    ideal.position = ideal_.position();
    ideal.speedKt = ideal_.speedKt();
    ideal.coasting = ideal.coasting || ideal_.waiting();
    return ideal;
}

} // namespace kst::bench
