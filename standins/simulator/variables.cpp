#include "standins/simulator/variables.h"

#include "model/simconnect.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>

namespace kst::standin {

namespace {

enum class Quantity { Angle, Length, Speed, Share, Time, Plain, Text };

/// One spelling of a unit. `inReference` is the unit in the quantity's reference unit: radian, foot, foot per
/// second, percent, second, one.
struct Unit {
    std::string_view name;
    Quantity quantity;
    double inReference;
};

constexpr double knotFps = metresPerNm * feetPerMetre / secondsPerHour;
constexpr double secondsPerMinute = 60.0;

constexpr std::array units{
    Unit{"radian", Quantity::Angle, 1.0},
    Unit{"radians", Quantity::Angle, 1.0},
    Unit{"degree", Quantity::Angle, radPerDeg},
    Unit{"degrees", Quantity::Angle, radPerDeg},
    Unit{"feet", Quantity::Length, 1.0},
    Unit{"foot", Quantity::Length, 1.0},
    Unit{"ft", Quantity::Length, 1.0},
    Unit{"meter", Quantity::Length, feetPerMetre},
    Unit{"meters", Quantity::Length, feetPerMetre},
    Unit{"feet per second", Quantity::Speed, 1.0},
    Unit{"feet/second", Quantity::Speed, 1.0},
    Unit{"feet per minute", Quantity::Speed, 1.0 / secondsPerMinute},
    Unit{"feet/minute", Quantity::Speed, 1.0 / secondsPerMinute},
    Unit{"knot", Quantity::Speed, knotFps},
    Unit{"knots", Quantity::Speed, knotFps},
    Unit{"meters per second", Quantity::Speed, feetPerMetre},
    Unit{"percent", Quantity::Share, 1.0},
    Unit{"percent over 100", Quantity::Share, 100.0},
    Unit{"second", Quantity::Time, 1.0},
    Unit{"seconds", Quantity::Time, 1.0},
    Unit{"minutes", Quantity::Time, secondsPerMinute},
    Unit{"hours", Quantity::Time, secondsPerHour},
    Unit{"number", Quantity::Plain, 1.0},
    Unit{"bool", Quantity::Plain, 1.0},
    Unit{"mask", Quantity::Plain, 1.0},
    Unit{"", Quantity::Text, 1.0},
    Unit{"string", Quantity::Text, 1.0},
};

constexpr double absurdValue = 1e7; ///< no position, altitude, speed or angle comes near it

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

bool textType(std::uint32_t type) {
    return type >= simconnect::TypeString8 && type <= simconnect::TypeStringV;
}

bool numberType(std::uint32_t type) {
    return type >= simconnect::TypeInt32 && type <= simconnect::TypeFloat64;
}

template <typename Integer>
Integer saturated(double value) {
    constexpr double least = static_cast<double>(std::numeric_limits<Integer>::min());
    if (std::isnan(value))
        return 0;
    if (value <= least)
        return std::numeric_limits<Integer>::min();
    // The upper limit itself is not a double; its successor is minus the lower one.
    if (value >= -least)
        return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(value);
}

} // namespace

struct Variable {
    std::string_view name; ///< lower case
    Quantity quantity;
    double unitInReference; ///< of the numbers that `get` gives and `set` takes
    double (*get)(const Observation&);
    void (*set)(Aircraft&, double);
    std::string_view (*text)(const Observation&);
};

namespace {

using Seen = const Observation&;

constexpr Variable settable(std::string_view name, Quantity quantity, double unit, double (*get)(Seen),
                            void (*set)(Aircraft&, double)) {
    return {name, quantity, unit, get, set, nullptr};
}

constexpr Variable readOnly(std::string_view name, Quantity quantity, double unit, double (*get)(Seen)) {
    return {name, quantity, unit, get, nullptr, nullptr};
}

constexpr Variable textOnly(std::string_view name, std::string_view (*text)(Seen)) {
    return {name, Quantity::Text, 1.0, nullptr, nullptr, text};
}

const std::array variables{
    settable(
        "plane latitude", Quantity::Angle, radPerDeg, [](Seen s) { return s.aircraft.place.lat; },
        [](Aircraft& a, double v) { a.place.lat = std::clamp(v, -90.0, 90.0); }),
    settable(
        "plane longitude", Quantity::Angle, radPerDeg, [](Seen s) { return s.aircraft.place.lon; },
        [](Aircraft& a, double v) { a.place.lon = std::abs(v) <= 180.0 ? v : std::remainder(v, 360.0); }),
    settable(
        "plane pitch degrees", Quantity::Angle, 1.0, [](Seen s) { return s.aircraft.place.pitchRad; },
        [](Aircraft& a, double v) { a.place.pitchRad = v; }),
    settable(
        "plane bank degrees", Quantity::Angle, 1.0, [](Seen s) { return s.aircraft.place.bankRad; },
        [](Aircraft& a, double v) { a.place.bankRad = v; }),
    settable(
        "plane heading degrees true", Quantity::Angle, 1.0,
        [](Seen s) { return s.aircraft.place.headingRad; },
        [](Aircraft& a, double v) { a.place.headingRad = wrapHeading(v); }),
    settable(
        "plane altitude", Quantity::Length, 1.0, [](Seen s) { return s.aircraft.place.altFt; },
        [](Aircraft& a, double v) { a.place.altFt = v; }),
    settable(
        "vertical speed", Quantity::Speed, 1.0, [](Seen s) { return s.aircraft.vsFps; },
        [](Aircraft& a, double v) { a.vsFps = v; }),
    settable(
        "airspeed true", Quantity::Speed, knotFps, [](Seen s) { return s.aircraft.airspeedKt; },
        [](Aircraft& a, double v) { a.airspeedKt = v; }),
    settable(
        "spoilers handle position", Quantity::Share, 1.0, [](Seen s) { return s.aircraft.spoilersPercent; },
        [](Aircraft& a, double v) { a.spoilersPercent = v; }),
    settable(
        "general eng throttle lever position:1", Quantity::Share, 1.0,
        [](Seen s) { return s.aircraft.throttlePercent[0]; },
        [](Aircraft& a, double v) { a.throttlePercent[0] = v; }),
    settable(
        "general eng throttle lever position:2", Quantity::Share, 1.0,
        [](Seen s) { return s.aircraft.throttlePercent[1]; },
        [](Aircraft& a, double v) { a.throttlePercent[1] = v; }),
    readOnly("plane alt above ground", Quantity::Length, 1.0,
             [](Seen s) { return aboveGroundFt(s.aircraft, s.terrain); }),
    readOnly("ground altitude", Quantity::Length, 1.0,
             [](Seen s) { return s.terrain.heightFt(s.aircraft.place.lat, s.aircraft.place.lon); }),
    readOnly("ground velocity", Quantity::Speed, knotFps, [](Seen s) { return s.aircraft.groundSpeedKt; }),
    readOnly("sim on ground", Quantity::Plain, 1.0,
             [](Seen s) { return onGround(s.aircraft, s.terrain) ? 1.0 : 0.0; }),
    readOnly("static cg to ground", Quantity::Length, 1.0,
             [](Seen s) { return s.aircraft.sizes.cgToGroundFt; }),
    readOnly("static pitch", Quantity::Angle, 1.0, [](Seen s) { return s.aircraft.sizes.pitchRad; }),
    readOnly("light states", Quantity::Plain, 1.0,
             [](Seen s) { return static_cast<double>(s.aircraft.lights); }),
    readOnly("zulu time", Quantity::Time, 1.0, [](Seen s) { return s.date.secondsOfDay; }),
    readOnly("zulu day of year", Quantity::Plain, 1.0,
             [](Seen s) { return static_cast<double>(s.date.dayOfYear); }),
    readOnly("zulu year", Quantity::Plain, 1.0, [](Seen s) { return static_cast<double>(s.date.year); }),
    textOnly("title", [](Seen s) -> std::string_view { return s.aircraft.title; }),
    textOnly("atc id", [](Seen s) -> std::string_view { return s.aircraft.tailNumber; }),
    textOnly("atc model", [](Seen s) -> std::string_view { return s.aircraft.model; }),
};

} // namespace

ZuluDate zuluDateOf(double epochSeconds) {
    using namespace std::chrono;
    const double wholeDays = std::floor(epochSeconds / 86400.0);
    const sys_days day{days{static_cast<int>(wholeDays)}};
    const year_month_day date{day};
    const sys_days newYear{date.year() / January / 1};
    return {epochSeconds - wholeDays * 86400.0, static_cast<int>((day - newYear).count()) + 1,
            static_cast<int>(date.year())};
}

std::size_t typeSize(std::uint32_t type) {
    switch (type) {
    case simconnect::TypeInt32:
    case simconnect::TypeFloat32:
        return 4;
    case simconnect::TypeInt64:
    case simconnect::TypeFloat64:
    case simconnect::TypeString8:
        return 8;
    case simconnect::TypeString32:
        return 32;
    case simconnect::TypeString64:
        return 64;
    case simconnect::TypeString128:
        return 128;
    case simconnect::TypeString256:
        return 256;
    case simconnect::TypeString260:
        return 260;
    default:
        return 0;
    }
}

std::uint32_t defineField(std::string_view name, std::string_view unit, std::uint32_t type,
                          DefinedField& field) {
    const std::string wantedName = lowered(name);
    const auto* variable = std::find_if(variables.begin(), variables.end(),
                                        [&](const Variable& known) { return known.name == wantedName; });
    if (variable == variables.end())
        return simconnect::ExceptionNameUnrecognized;
    const std::string wantedUnit = lowered(unit);
    const auto* known = std::find_if(units.begin(), units.end(), [&](const Unit& candidate) {
        return candidate.name == wantedUnit && candidate.quantity == variable->quantity;
    });
    if (known == units.end())
        return simconnect::ExceptionNameUnrecognized;
    if (variable->quantity == Quantity::Text ? !textType(type) : !numberType(type))
        return simconnect::ExceptionInvalidDataType;
    field = {variable, variable->unitInReference / known->inReference, type};
    return simconnect::ExceptionNone;
}

void writeValue(PacketWriter& out, const DefinedField& field, const Observation& seen) {
    if (field.variable->quantity == Quantity::Text) {
        const std::string_view text = field.variable->text(seen);
        if (field.type == simconnect::TypeStringV)
            out.openText(text);
        else
            out.text(text, typeSize(field.type));
        return;
    }
    const double value = field.variable->get(seen) * field.perBase;
    switch (field.type) {
    case simconnect::TypeInt32:
        out.u32(static_cast<std::uint32_t>(saturated<std::int32_t>(value)));
        break;
    case simconnect::TypeInt64:
        out.u64(static_cast<std::uint64_t>(saturated<std::int64_t>(value)));
        break;
    case simconnect::TypeFloat32:
        out.f32(static_cast<float>(value));
        break;
    default:
        out.f64(value);
        break;
    }
}

std::uint32_t readValue(PacketReader& in, const DefinedField& field, GivenValue& given) {
    if (field.variable->set == nullptr)
        return simconnect::ExceptionDataError;
    double number = 0.0;
    switch (field.type) {
    case simconnect::TypeInt32:
        number = in.i32();
        break;
    case simconnect::TypeInt64:
        number = static_cast<double>(static_cast<std::int64_t>(in.u64()));
        break;
    case simconnect::TypeFloat32:
        number = static_cast<double>(in.f32());
        break;
    default:
        number = in.f64();
        break;
    }
    given = {field.variable, number / field.perBase};
    if (in.failed())
        return simconnect::ExceptionInvalidDataSize;
    if (!std::isfinite(given.number) || std::abs(given.number) > absurdValue)
        return simconnect::ExceptionDataError;
    return simconnect::ExceptionNone;
}

void applyValue(Aircraft& aircraft, const GivenValue& given) {
    given.variable->set(aircraft, given.number);
}

bool setsPlace(const GivenValue& given) {
    return given.variable->name.starts_with("plane ");
}

} // namespace kst::standin
