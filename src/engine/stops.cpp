#include "engine/stops.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "engine/ticks.h"

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::int64_t realStopTicks = 15 * ticksPerSecond;
constexpr double movedOnNm = 22.0 * nmPerMetre;
constexpr std::size_t shortestStop = 3; ///< the last moving point, and the stop seen from two points on
constexpr std::size_t longestStop = 7;

} // namespace

void removeSmallStop(LiveAc& ac, LatLon pos) {
    const std::size_t size = ac.track.size();
    for (std::size_t v = shortestStop; v <= longestStop && v <= size; ++v) {
        if (!ac.track[size - v + 1].stationary) {
            checkStops(ac, v - 1, pos);
            return;
        }
    }
}

void checkStops(LiveAc& ac, std::size_t num, LatLon pos) {
    try {
        const TrackPoint& moving = ac.track.at(ac.track.size() - num);
        const std::int64_t stopped = std::int64_t{ac.track.back().dueTick} - moving.dueTick;
        if (stopped >= realStopTicks && gf_distanceNm(pos, moving.position()) > movedOnNm) {
            return;
        }
        for (std::size_t dropped = 1; dropped < num; ++dropped) {
            ac.track.pop_back();
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: num:{} {}", "checkStops", num, error.what()));
    }
}

} // namespace kst
