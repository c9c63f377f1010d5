#pragma once

// One aircraft of the stand-in's world: the user's, or an AI object.

#include "standins/simulator/terrain.h"

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace kst::standin {

/// Bits of the light mask, as the simulator numbers them.
enum LightBit : std::uint32_t {
    LightNav = 1U << 0,
    LightBeacon = 1U << 1,
    LightLanding = 1U << 2,
    LightTaxi = 1U << 3,
    LightStrobe = 1U << 4,
    LightLogo = 1U << 8,
    LightCabin = 1U << 9
};
inline constexpr std::uint32_t allLights =
    LightNav | LightBeacon | LightLanding | LightTaxi | LightStrobe | LightLogo | LightCabin;

/// Where an aircraft is and how it lies. A negative pitch is nose up, a negative bank is right wing down.
struct Placement {
    double lat = 0.0;
    double lon = 0.0;
    double pitchRad = 0.0;
    double bankRad = 0.0;
    double headingRad = 0.0;
    double altFt = 0.0; ///< of the reference point, above sea level
};

/// How high the reference point is above the ground, and how the aircraft lies, when it stands on its wheels.
struct StandingSizes {
    double cgToGroundFt = 9.0;
    double pitchRad = 0.0;
};

/// The sizes of an aircraft by the type that its title names; those of an airliner of middle size otherwise.
StandingSizes standingSizesOf(std::string_view title);

struct HistoryPoint {
    double atSeconds = 0.0; ///< simulated time since the world began
    Placement place;
    double aboveGroundFt = 0.0;
    double airspeedKt = 0.0;
    double vsFps = 0.0;
    bool onGround = false;
};

/// A client event that an object was given.
struct GivenEvent {
    double atSeconds = 0.0;
    std::string name;
    std::uint32_t value = 0;
};

struct Aircraft {
    std::uint32_t id = 0;
    std::string title;
    std::string tailNumber;
    std::string model; ///< the user's `ATC MODEL`; empty for AI objects
    StandingSizes sizes;

    Placement place;
    double vsFps = 0.0;
    double airspeedKt = 0.0;
    double groundSpeedKt = 0.0; ///< the user's as set; an AI object's as measured over the last second
    Placement measuredFrom;     ///< where that measurement began

    bool released = false; ///< no longer steered by the simulator
    bool frozenPosition = false;
    bool frozenAltitude = false;
    bool frozenAttitude = false;

    std::uint32_t lights = 0;
    bool gearDown = true;
    double flapsPercent = 0.0;
    double spoilersPercent = 0.0;
    std::array<double, 2> throttlePercent{};
    bool engineRunning = false;
    std::string flightPlan; ///< path of the last plan that was set

    double createdAt = 0.0; ///< simulated seconds
    double removedAt = std::numeric_limits<double>::quiet_NaN();
    std::uint64_t placed = 0; ///< how often a client wrote its position
    std::deque<HistoryPoint> history;
    std::deque<GivenEvent> events;

    bool frozen() const { return frozenPosition && frozenAltitude && frozenAttitude; }
};

double aboveGroundFt(const Aircraft& aircraft, const Terrain& terrain);

/// On its wheels: not more than `wheelPlayFt` above where it stands.
bool onGround(const Aircraft& aircraft, const Terrain& terrain);
inline constexpr double wheelPlayFt = 0.25;

/// Moves what is not frozen on by itself, as the simulator's own pilot would: in the air the aircraft flies
/// on and sinks, on the ground it settles on its wheels and rolls out.
void moveUnfrozen(Aircraft& aircraft, const Terrain& terrain, double seconds);

/// Whether the name is a client event that this simulator knows, in any case of letters.
bool knownEventName(std::string_view name);

/// Applies a client event. The name must be a known one.
void applyEvent(Aircraft& aircraft, std::string_view name, std::uint32_t value);

} // namespace kst::standin
