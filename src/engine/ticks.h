#pragma once

// Arithmetic on the engine's ticks. Due times are 32 bits wide and a parked aircraft stands a week ahead, so
// every sum is formed in 64 bits and held to what a due time can say. Any thread.

#include "core/runstate.h"
#include "model/units.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kst {

/// A leg never takes fewer ticks than this.
inline constexpr std::int32_t shortestLegTicks = 25;
/// The longest time the engine plans ahead: the stay of a parked aircraft.
inline constexpr std::int32_t weekTicks = 604800 * ticksPerSecond;

/// The engine's clock.
inline std::int32_t presentTick() {
    return updateCount.load(std::memory_order_relaxed);
}

/// The nearest value that a due time can hold.
constexpr std::int32_t saturatedTick(std::int64_t tick) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(tick, Limits::min(), Limits::max()));
}

/// `tick` plus `ticks`, held to what a due time can say.
constexpr std::int32_t laterTick(std::int32_t tick, std::int64_t ticks) {
    return saturatedTick(std::int64_t{tick} + ticks);
}

/// From one due time to another, held to what a due time can say.
constexpr std::int32_t ticksBetween(std::int32_t from, std::int32_t to) {
    return saturatedTick(std::int64_t{to} - from);
}

/// A computed number of ticks, rounded; held to 0 to a week, and 0 for a value that is not a number.
inline std::int32_t roundedTicks(double ticks) {
    return ticks > 0.0 ? static_cast<std::int32_t>(std::round(std::min(ticks, double{weekTicks}))) : 0;
}

/// Time to cover a distance at a speed, ticks; a week at no speed.
inline std::int32_t travelTicks(double distanceNm, double speedKt) {
    return speedKt > 0.0 ? roundedTicks(distanceNm * ticksPerHour / speedKt) : weekTicks;
}

} // namespace kst
