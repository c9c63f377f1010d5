#pragma once

// All that the program declares to the simulator once it has connected, in its order.

#include <cstdint>
#include <string_view>

namespace kst::test {

/// One packet: an event with its name, or a field of a data definition.
struct Declaration {
    std::uint32_t operation;
    std::uint32_t id;
    std::string_view name;
    std::string_view unit = "";
    std::uint32_t type = 0;
};

inline constexpr Declaration vocabulary[] = {
    {0x17, 201, "Sim"},
    {0x17, 202, "ObjectAdded"},
    {0x17, 203, "ObjectRemoved"},
    {0x17, 205, "PositionChanged"},
    {0x17, 206, "FlightLoaded"},
    {0x17, 204, "Frame"},
    {0x0C, 407, "TITLE", "", 11},
    {0x0C, 408, "ATC MODEL", "", 6},
    {0x0C, 409, "SIM ON GROUND", "Bool", 2},
    {0x0C, 402, "Plane Latitude", "degree", 4},
    {0x0C, 402, "Plane Longitude", "degree", 4},
    {0x0C, 402, "Plane Pitch degrees", "radians", 4},
    {0x0C, 402, "Plane Bank degrees", "radians", 4},
    {0x0C, 402, "Plane Heading degrees true", "radians", 4},
    {0x0C, 402, "Plane Altitude", "feet", 4},
    {0x0C, 402, "Vertical Speed", "feet per second", 4},
    {0x0C, 402, "Airspeed True", "knots", 4},
    {0x0C, 403, "Plane Latitude", "degree", 4},
    {0x0C, 403, "Plane Longitude", "degree", 4},
    {0x0C, 403, "Plane Pitch degrees", "radians", 4},
    {0x0C, 403, "Plane Bank degrees", "radians", 4},
    {0x0C, 403, "Plane Heading degrees true", "radians", 4},
    {0x0C, 403, "Plane Altitude", "feet", 4},
    {0x0C, 403, "Plane Alt Above Ground", "feet", 4},
    {0x0C, 403, "Ground Velocity", "knots", 4},
    {0x0C, 403, "ZULU TIME", "Seconds", 2},
    {0x0C, 403, "ZULU DAY OF YEAR", "Number", 2},
    {0x0C, 403, "ZULU YEAR", "Number", 2},
    {0x0C, 403, "LIGHT STATES", "Mask", 2},
    {0x0C, 405, "Static CG to Ground", "feet", 4},
    {0x0C, 405, "Static Pitch", "radians", 4},
    {0x0C, 404, "Plane Alt Above Ground", "feet", 4},
    {0x0C, 404, "Ground Altitude", "feet", 4},
    {0x0C, 404, "SIM ON GROUND", "Bool", 2},
    {0x0C, 404, "ATC ID", "", 6},
    {0x04, 220, "GEAR_SET"},
    {0x04, 221, "ENGINE_AUTO_START"},
    {0x04, 222, "ENGINE_AUTO_SHUTDOWN"},
    {0x04, 223, "THROTTLE_SET"},
    {0x04, 218, "FLAPS_SET"},
    {0x04, 219, "SPOILERS_SET"},
    {0x04, 208, "NAV_LIGHTS_SET"},
    {0x04, 207, "BEACON_LIGHTS_SET"},
    {0x04, 211, "LANDING_LIGHTS_SET"},
    {0x04, 209, "TAXI_LIGHTS_SET"},
    {0x04, 210, "STROBES_SET"},
    {0x04, 213, "LOGO_LIGHTS_SET"},
    {0x04, 212, "CABIN_LIGHTS_SET"},
    {0x04, 214, "ALL_LIGHTS_TOGGLE"},
    {0x04, 215, "FREEZE_LATITUDE_LONGITUDE_SET"},
    {0x04, 216, "FREEZE_ALTITUDE_SET"},
    {0x04, 217, "FREEZE_ATTITUDE_SET"},
    {0x0C, 401, "SPOILERS HANDLE POSITION", "percent", 4},
    {0x0C, 401, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent", 4},
    {0x0C, 401, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent", 4},
};

/// The events of the one notification group, all but the start of the engines.
inline constexpr std::uint32_t groupEvents[] = {208, 207, 211, 209, 210, 213, 212, 214,
                                                218, 219, 220, 222, 223, 215, 216, 217};

} // namespace kst::test
