#include "standins/simulator/aircraft.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <utility>

namespace kst::standin {

namespace {

struct TypeSizes {
    std::string_view mark;
    StandingSizes sizes;
};

/// Heights of the reference point above the ground, rounded from published gear geometry; first mark wins.
constexpr std::array typeSizes{
    TypeSizes{"A380", {20.1, 0.0}},      TypeSizes{"A388", {20.1, 0.0}},
    TypeSizes{"747", {17.3, 0.0}},       TypeSizes{"B74", {17.3, 0.0}},
    TypeSizes{"777", {17.9, 0.0035}},    TypeSizes{"B77", {17.9, 0.0035}},
    TypeSizes{"787", {15.1, 0.0035}},    TypeSizes{"B78", {15.1, 0.0035}},
    TypeSizes{"A350", {15.8, 0.0}},      TypeSizes{"A35", {15.8, 0.0}},
    TypeSizes{"A340", {16.2, 0.0087}},   TypeSizes{"A34", {16.2, 0.0087}},
    TypeSizes{"A330", {16.0, 0.0087}},   TypeSizes{"A33", {16.0, 0.0087}},
    TypeSizes{"767", {14.2, 0.0}},       TypeSizes{"B76", {14.2, 0.0}},
    TypeSizes{"757", {13.5, 0.0}},       TypeSizes{"B75", {13.5, 0.0}},
    TypeSizes{"737", {9.6, 0.0070}},     TypeSizes{"B73", {9.6, 0.0070}},
    TypeSizes{"A318", {11.6, 0.0052}},   TypeSizes{"A319", {11.6, 0.0052}},
    TypeSizes{"A320", {11.7, 0.0052}},   TypeSizes{"A321", {11.8, 0.0052}},
    TypeSizes{"A20N", {11.7, 0.0052}},   TypeSizes{"A21N", {11.8, 0.0052}},
    TypeSizes{"E19", {9.1, 0.0}},        TypeSizes{"E17", {9.0, 0.0}},
    TypeSizes{"CRJ", {6.8, 0.0105}},     TypeSizes{"ATR", {7.2, 0.0}},
    TypeSizes{"AT7", {7.2, 0.0}},        TypeSizes{"DH8", {8.4, 0.0}},
    TypeSizes{"Dash 8", {8.4, 0.0}},     TypeSizes{"Citation", {4.6, 0.0}},
    TypeSizes{"C172", {4.2, 0.0524}},    TypeSizes{"Cessna", {4.2, 0.0524}},
    TypeSizes{"PA28", {3.6, 0.0349}},    TypeSizes{"Piper", {3.6, 0.0349}},
    TypeSizes{"Bell", {5.8, 0.0}},       TypeSizes{"EC35", {5.2, 0.0}},
    TypeSizes{"Helicopter", {5.5, 0.0}},
};

constexpr double fullScale = 16383.0; ///< a client event's full deflection
constexpr double fullPercent = 100.0;

constexpr double sinkFps = 25.0;
constexpr double slowestFlightKt = 60.0;
constexpr double brakeKtPerSecond = 4.0;
constexpr double settleRadPerSecond = 5.0 * radPerDeg;

double towards(double from, double to, double step) {
    return from < to ? std::min(from + step, to) : std::max(from - step, to);
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

double percentOf(std::uint32_t value) {
    return std::clamp(static_cast<double>(static_cast<std::int32_t>(value)) / fullScale, -1.0, 1.0) *
           fullPercent;
}

struct EventAction {
    std::string_view name; ///< lower case
    void (*apply)(Aircraft&, std::uint32_t);
};

template <std::uint32_t Bit>
void setLight(Aircraft& aircraft, std::uint32_t value) {
    aircraft.lights = value != 0 ? aircraft.lights | Bit : aircraft.lights & ~Bit;
}

template <bool Aircraft::*Flag>
void setFlag(Aircraft& aircraft, std::uint32_t value) {
    aircraft.*Flag = value != 0;
}

constexpr std::array eventActions{
    EventAction{"beacon_lights_set", setLight<LightBeacon>},
    EventAction{"nav_lights_set", setLight<LightNav>},
    EventAction{"taxi_lights_set", setLight<LightTaxi>},
    EventAction{"strobes_set", setLight<LightStrobe>},
    EventAction{"landing_lights_set", setLight<LightLanding>},
    EventAction{"cabin_lights_set", setLight<LightCabin>},
    EventAction{"logo_lights_set", setLight<LightLogo>},
    EventAction{
        "all_lights_toggle",
        [](Aircraft& aircraft, std::uint32_t) { aircraft.lights = aircraft.lights != 0 ? 0 : allLights; }},
    EventAction{"freeze_latitude_longitude_set", setFlag<&Aircraft::frozenPosition>},
    EventAction{"freeze_altitude_set", setFlag<&Aircraft::frozenAltitude>},
    EventAction{"freeze_attitude_set", setFlag<&Aircraft::frozenAttitude>},
    EventAction{"flaps_set",
                [](Aircraft& aircraft, std::uint32_t value) { aircraft.flapsPercent = percentOf(value); }},
    EventAction{"spoilers_set",
                [](Aircraft& aircraft, std::uint32_t value) { aircraft.spoilersPercent = percentOf(value); }},
    EventAction{"gear_set", setFlag<&Aircraft::gearDown>},
    EventAction{"engine_auto_start",
                [](Aircraft& aircraft, std::uint32_t) { aircraft.engineRunning = true; }},
    EventAction{"engine_auto_shutdown",
                [](Aircraft& aircraft, std::uint32_t) { aircraft.engineRunning = false; }},
    EventAction{"throttle_set", [](Aircraft& aircraft,
                                   std::uint32_t value) { aircraft.throttlePercent.fill(percentOf(value)); }},
};

const EventAction* findEvent(std::string_view name) {
    const std::string wanted = lowered(name);
    const auto* found = std::find_if(eventActions.begin(), eventActions.end(),
                                     [&](const EventAction& action) { return action.name == wanted; });
    return found == eventActions.end() ? nullptr : found;
}

} // namespace

StandingSizes standingSizesOf(std::string_view title) {
    const auto* found = std::find_if(typeSizes.begin(), typeSizes.end(), [&](const TypeSizes& type) {
        return title.find(type.mark) != std::string_view::npos;
    });
    return found == typeSizes.end() ? StandingSizes{} : found->sizes;
}

double aboveGroundFt(const Aircraft& aircraft, const Terrain& terrain) {
    return aircraft.place.altFt - terrain.heightFt(aircraft.place.lat, aircraft.place.lon);
}

bool onGround(const Aircraft& aircraft, const Terrain& terrain) {
    return aboveGroundFt(aircraft, terrain) <= aircraft.sizes.cgToGroundFt + wheelPlayFt;
}

void moveUnfrozen(Aircraft& aircraft, const Terrain& terrain, double seconds) {
    const bool standing = onGround(aircraft, terrain);
    Placement& place = aircraft.place;
    if (!aircraft.frozenPosition) {
        const double speedKt =
            standing ? aircraft.airspeedKt : std::max(aircraft.airspeedKt, slowestFlightKt);
        moveOverGround(place.lat, place.lon, place.headingRad,
                       speedKt * metresPerNm / secondsPerHour * seconds);
        if (standing)
            aircraft.airspeedKt = towards(aircraft.airspeedKt, 0.0, brakeKtPerSecond * seconds);
    }
    if (!aircraft.frozenAltitude) {
        const double wheelsDownFt = terrain.heightFt(place.lat, place.lon) + aircraft.sizes.cgToGroundFt;
        place.altFt = standing ? wheelsDownFt : std::max(wheelsDownFt, place.altFt - sinkFps * seconds);
    }
    if (!aircraft.frozenAttitude) {
        const double step = settleRadPerSecond * seconds;
        place.pitchRad = towards(place.pitchRad, standing ? aircraft.sizes.pitchRad : 0.0, step);
        place.bankRad = towards(place.bankRad, 0.0, step);
    }
}

bool knownEventName(std::string_view name) {
    return findEvent(name) != nullptr;
}

void applyEvent(Aircraft& aircraft, std::string_view name, std::uint32_t value) {
    findEvent(name)->apply(aircraft, value);
}

} // namespace kst::standin
