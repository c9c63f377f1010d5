#include "bench/realism/idealreplay.h"

#include "core/geodesy.h"

#include <algorithm>
#include <cmath>

namespace kst::bench {

namespace {

constexpr std::int32_t fewestTicks = 25;
constexpr double slowestKt = 1.0;
constexpr double longestTicks = 3600.0 * ticksPerSecond;

} // namespace

void IdealReplay::start(LatLon here, const std::vector<TrackPoint>& track, std::int32_t now) {
    coming_.assign(track.begin(), track.end());
    started_ = !track.empty();
    waiting_ = false;
    here_ = here;
    if (started_) {
        from_ = coming_.front();
        coming_.pop_front();
        due_ = from_.dueTick;
        aim(from_, now);
    }
}

void IdealReplay::pass(std::int32_t now, std::int32_t maxLeadTicks, std::int32_t maxLagTicks) {
    if (!started_) {
        return;
    }
    if (now >= due_) {
        waiting_ = coming_.empty();
        if (!waiting_) {
            beginLeg(now, maxLeadTicks, maxLagTicks);
        }
    }
    if (!waiting_ || !from_.stationary) {
        here_ = {here_.lat + dLat_, wrapLongitude(here_.lon + dLon_)};
    }
}

void IdealReplay::beginLeg(std::int32_t now, std::int32_t maxLeadTicks, std::int32_t maxLagTicks) {
    const TrackPoint to = coming_.front();
    coming_.pop_front();
    std::int32_t ticks = to.dueTick - now;
    if (!to.stationary) {
        const double distanceNm = gf_distanceNm(here_, to.position());
        double speedKt = (from_.gsKt + to.gsKt) / 2.0;
        if (!(speedKt > 0.0)) {
            const double fed = std::max(to.dueTick - from_.dueTick, fewestTicks);
            speedKt = std::max(distanceNm * ticksPerHour / fed, slowestKt);
        }
        ticks = static_cast<std::int32_t>(
            std::lround(std::min(distanceNm * ticksPerHour / speedKt, longestTicks)));
    }
    const std::int32_t wanted = now + std::max(ticks, fewestTicks);
    const std::int32_t due = std::clamp(wanted, to.dueTick - maxLeadTicks, to.dueTick + maxLagTicks);
    from_ = to;
    due_ = std::max(due, now + fewestTicks);
    aim(to, now);
}

void IdealReplay::aim(const TrackPoint& to, std::int32_t now) {
    const double ticks = std::max(due_ - now, fewestTicks);
    dLat_ = (to.lat - here_.lat) / ticks;
    dLon_ = wrapLongitude(to.lon - here_.lon) / ticks;
}

} // namespace kst::bench
