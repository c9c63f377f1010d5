#pragma once

// What passes between the worker and the simulator session about AI objects.

#include "model/aircraft.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

/// SIMCONNECT_DATA_INITPOSITION of the published interface: 56 bytes, packed, little-endian.
#pragma pack(push, 1)
struct InitPosition {
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double altitude = 0.0;  ///< feet
    double pitch = 0.0;     ///< degrees
    double bank = 0.0;      ///< degrees
    double heading = 0.0;   ///< degrees
    std::uint32_t onGround = 0;
    std::uint32_t airspeed = 0; ///< knots
};
#pragma pack(pop)
static_assert(sizeof(InitPosition) == 56);

/// One aircraft to create.
struct CreateRequest {
    InitPosition initPos;
    std::string tailNumber; ///< the callsign; a static parked aircraft's ends in '*'
    std::string_view title; ///< into the catalogue
    std::uint32_t hexid = 0;
};

/// One client event for an object.
struct EventCmd {
    std::uint32_t objectId = 0;
    std::uint32_t event = 0;
    std::uint32_t value = 0;
};

/// Where an object is to be at the next frame.
struct PositionUpdate {
    SimState state;
    std::uint32_t objectId = 0;
};

/// What the simulator answered about an object, in the order of arrival.
struct SimCommand {
    enum class Kind : std::uint32_t {
        LiveCreated = 0,   ///< id: hexid; value2: height above ground, ft
        StaticCreated = 1, ///< id: hexid
        Removed = 2,
        HeightReport =
            3,     ///< id: on-ground flag; value1: ground altitude, ft; value2: height above ground, ft
        Sizes = 4, ///< value1: Static CG to Ground, ft; value2: Static Pitch, rad
        CreationRefused = 6 ///< id: hexid
    };
    std::uint32_t objectId = 0;
    std::uint32_t id = 0;
    std::int32_t counter = 0; ///< settling count in ticks; below 0 when done
    Kind kind = Kind::LiveCreated;
    double value1 = 0.0;
    double value2 = 0.0;
};

} // namespace kst
