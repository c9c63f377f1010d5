// What the session declares to the simulator: system events, data definitions, client events.

#include "model/simconnect.h"
#include "simlink/sessionstate.h"

#include <string_view>

namespace kst {

namespace {

using namespace simconnect;

struct NamedEvent {
    std::uint32_t id;
    std::string_view name;
};

constexpr NamedEvent systemEvents[] = {
    {EventSim, "Sim"},
    {EventObjectAdded, "ObjectAdded"},
    {EventObjectRemoved, "ObjectRemoved"},
    {EventPositionChanged, "PositionChanged"},
    {EventFlightLoaded, "FlightLoaded"},
    {EventFrame, "Frame"},
};

struct Datum {
    std::uint32_t definition;
    std::string_view variable;
    std::string_view unit;
    std::uint32_t type;
};

constexpr Datum dataRead[] = {
    {DefinitionTitle, "TITLE", "", TypeStringV},
    {DefinitionModel, "ATC MODEL", "", TypeString32},
    {DefinitionOnGround, "SIM ON GROUND", "Bool", TypeInt64},

    {DefinitionPosition, "Plane Latitude", "degree", TypeFloat64},
    {DefinitionPosition, "Plane Longitude", "degree", TypeFloat64},
    {DefinitionPosition, "Plane Pitch degrees", "radians", TypeFloat64},
    {DefinitionPosition, "Plane Bank degrees", "radians", TypeFloat64},
    {DefinitionPosition, "Plane Heading degrees true", "radians", TypeFloat64},
    {DefinitionPosition, "Plane Altitude", "feet", TypeFloat64},
    {DefinitionPosition, "Vertical Speed", "feet per second", TypeFloat64},
    {DefinitionPosition, "Airspeed True", "knots", TypeFloat64},

    {DefinitionUser, "Plane Latitude", "degree", TypeFloat64},
    {DefinitionUser, "Plane Longitude", "degree", TypeFloat64},
    {DefinitionUser, "Plane Pitch degrees", "radians", TypeFloat64},
    {DefinitionUser, "Plane Bank degrees", "radians", TypeFloat64},
    {DefinitionUser, "Plane Heading degrees true", "radians", TypeFloat64},
    {DefinitionUser, "Plane Altitude", "feet", TypeFloat64},
    {DefinitionUser, "Plane Alt Above Ground", "feet", TypeFloat64},
    {DefinitionUser, "Ground Velocity", "knots", TypeFloat64},
    {DefinitionUser, "ZULU TIME", "Seconds", TypeInt64},
    {DefinitionUser, "ZULU DAY OF YEAR", "Number", TypeInt64},
    {DefinitionUser, "ZULU YEAR", "Number", TypeInt64},
    {DefinitionUser, "LIGHT STATES", "Mask", TypeInt64},

    {DefinitionSizes, "Static CG to Ground", "feet", TypeFloat64},
    {DefinitionSizes, "Static Pitch", "radians", TypeFloat64},

    {DefinitionScan, "Plane Alt Above Ground", "feet", TypeFloat64},
    {DefinitionScan, "Ground Altitude", "feet", TypeFloat64},
    {DefinitionScan, "SIM ON GROUND", "Bool", TypeInt64},
    {DefinitionScan, "ATC ID", "", TypeString32},
};

constexpr NamedEvent clientEvents[] = {
    {GearSet, "GEAR_SET"},
    {EngineAutoStart, "ENGINE_AUTO_START"},
    {EngineAutoShutdown, "ENGINE_AUTO_SHUTDOWN"},
    {ThrottleSet, "THROTTLE_SET"},
    {FlapsSet, "FLAPS_SET"},
    {SpoilersSet, "SPOILERS_SET"},
    {NavLightsSet, "NAV_LIGHTS_SET"},
    {BeaconLightsSet, "BEACON_LIGHTS_SET"},
    {LandingLightsSet, "LANDING_LIGHTS_SET"},
    {TaxiLightsSet, "TAXI_LIGHTS_SET"},
    {StrobesSet, "STROBES_SET"},
    {LogoLightsSet, "LOGO_LIGHTS_SET"},
    {CabinLightsSet, "CABIN_LIGHTS_SET"},
    {AllLightsToggle, "ALL_LIGHTS_TOGGLE"},
    {FreezeLatitudeLongitudeSet, "FREEZE_LATITUDE_LONGITUDE_SET"},
    {FreezeAltitudeSet, "FREEZE_ALTITUDE_SET"},
    {FreezeAttitudeSet, "FREEZE_ATTITUDE_SET"},
};

constexpr Datum dataWritten[] = {
    {DefinitionControls, "SPOILERS HANDLE POSITION", "percent", TypeFloat64},
    {DefinitionControls, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent", TypeFloat64},
    {DefinitionControls, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent", TypeFloat64},
};

/// Every client event but the start of the engines, which nothing else may mask.
constexpr std::uint32_t notifiedEvents[] = {
    NavLightsSet,      BeaconLightsSet,
    LandingLightsSet,  TaxiLightsSet,
    StrobesSet,        LogoLightsSet,
    CabinLightsSet,    AllLightsToggle,
    FlapsSet,          SpoilersSet,
    GearSet,           EngineAutoShutdown,
    ThrottleSet,       FreezeLatitudeLongitudeSet,
    FreezeAltitudeSet, FreezeAttitudeSet,
};
constexpr std::uint32_t notificationPriority = 1;

constexpr std::uint32_t definitions[] = {DefinitionTitle,    DefinitionModel, DefinitionOnGround,
                                         DefinitionPosition, DefinitionUser,  DefinitionControls,
                                         DefinitionScan,     DefinitionSizes};

void define(SimHandle handle, const Datum& datum) {
    constexpr float epsilon = 0.0F;
    SimConnect_AddToDataDefinition(handle, datum.definition, datum.variable, datum.unit, datum.type, epsilon,
                                   unused);
}

} // namespace

void lf_setupSimData() {
    const SimHandle handle = simHandle;
    for (const NamedEvent& event : systemEvents) {
        SimConnect_SubscribeToSystemEvent(handle, event.id, event.name);
    }
    for (const Datum& datum : dataRead) {
        define(handle, datum);
    }
    for (const NamedEvent& event : clientEvents) {
        SimConnect_MapClientEventToSimEvent(handle, event.id, event.name);
    }
    for (const Datum& datum : dataWritten) {
        define(handle, datum);
    }
    for (const std::uint32_t event : notifiedEvents) {
        SimConnect_AddClientEventToNotificationGroup(handle, notificationGroup, event, true);
    }
    SimConnect_SetNotificationGroupPriority(handle, notificationGroup, notificationPriority);
}

void clearSimData() {
    const SimHandle handle = simHandle;
    for (const std::uint32_t definition : definitions) {
        SimConnect_ClearDataDefinition(handle, definition);
    }
    for (std::uint32_t event = EventSim; event <= EventFlightLoaded; ++event) {
        SimConnect_UnsubscribeFromSystemEvent(handle, event);
    }
}

} // namespace kst
