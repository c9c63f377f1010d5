#pragma once

// What the radar page reads and writes: the world as JSON, and the controls.

#include "standins/simulator/world.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kst::standin {

/// Everything that there is now: time, user, airports, objects. Degrees, feet, knots, feet per minute.
std::string stateJson(const World& world, const std::vector<std::string>& clientNames);

/// Where one object was, gone ones included; "[]" for an unknown id. Points are [seconds, lat, lon, altitude,
/// height above ground, heading, airspeed, on ground].
std::string historyJson(const World& world, std::uint32_t id);

/// The last way of every object, thinned, by object id: points are [lat, lon, altitude, on ground].
std::string trailsJson(const World& world);

/// Carries out one control: {"action": "pause" | "resume" | "quit" | "drop" | "teleport" | "fly" |
/// "load-flight" | "refuse-next" | "limit" | "delay", ...}. Gives an empty text, or what is wrong with it.
std::string applyControl(World& world, std::string_view json);

} // namespace kst::standin
