#include "tests/simulator/client.h"

namespace kst::test {

using namespace simconnect;

void Client::declareAll() {
    struct Field {
        std::uint32_t definition;
        std::string_view name;
        std::string_view unit;
        std::uint32_t type;
    };
    static constexpr Field fields[] = {
        {401, "SPOILERS HANDLE POSITION", "percent", TypeFloat64},
        {401, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent", TypeFloat64},
        {401, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent", TypeFloat64},
        {402, "Plane Latitude", "degree", TypeFloat64},
        {402, "Plane Longitude", "degree", TypeFloat64},
        {402, "Plane Pitch degrees", "radians", TypeFloat64},
        {402, "Plane Bank degrees", "radians", TypeFloat64},
        {402, "Plane Heading degrees true", "radians", TypeFloat64},
        {402, "Plane Altitude", "feet", TypeFloat64},
        {402, "Vertical Speed", "feet per second", TypeFloat64},
        {402, "Airspeed True", "knots", TypeFloat64},
        {403, "Plane Latitude", "degree", TypeFloat64},
        {403, "Plane Longitude", "degree", TypeFloat64},
        {403, "Plane Pitch degrees", "radians", TypeFloat64},
        {403, "Plane Bank degrees", "radians", TypeFloat64},
        {403, "Plane Heading degrees true", "radians", TypeFloat64},
        {403, "Plane Altitude", "feet", TypeFloat64},
        {403, "Plane Alt Above Ground", "feet", TypeFloat64},
        {403, "Ground Velocity", "knots", TypeFloat64},
        {403, "ZULU TIME", "Seconds", TypeInt64},
        {403, "ZULU DAY OF YEAR", "Number", TypeInt64},
        {403, "ZULU YEAR", "Number", TypeInt64},
        {403, "LIGHT STATES", "Mask", TypeInt64},
        {404, "Plane Alt Above Ground", "feet", TypeFloat64},
        {404, "Ground Altitude", "feet", TypeFloat64},
        {404, "SIM ON GROUND", "Bool", TypeInt64},
        {404, "ATC ID", "", TypeString32},
        {405, "Static CG to Ground", "feet", TypeFloat64},
        {405, "Static Pitch", "radians", TypeFloat64},
        {407, "TITLE", "", TypeStringV},
        {408, "ATC MODEL", "", TypeString32},
        {409, "SIM ON GROUND", "Bool", TypeInt64},
    };
    struct Name {
        std::uint32_t id;
        std::string_view name;
    };
    static constexpr Name systemEvents[] = {{201, "Sim"},   {202, "ObjectAdded"},     {203, "ObjectRemoved"},
                                            {204, "Frame"}, {205, "PositionChanged"}, {206, "FlightLoaded"}};
    static constexpr Name clientEvents[] = {{207, "BEACON_LIGHTS_SET"},
                                            {208, "NAV_LIGHTS_SET"},
                                            {209, "TAXI_LIGHTS_SET"},
                                            {210, "STROBES_SET"},
                                            {211, "LANDING_LIGHTS_SET"},
                                            {212, "CABIN_LIGHTS_SET"},
                                            {213, "LOGO_LIGHTS_SET"},
                                            {214, "ALL_LIGHTS_TOGGLE"},
                                            {215, "FREEZE_LATITUDE_LONGITUDE_SET"},
                                            {216, "FREEZE_ALTITUDE_SET"},
                                            {217, "FREEZE_ATTITUDE_SET"},
                                            {218, "FLAPS_SET"},
                                            {219, "SPOILERS_SET"},
                                            {220, "GEAR_SET"},
                                            {221, "ENGINE_AUTO_START"},
                                            {222, "ENGINE_AUTO_SHUTDOWN"},
                                            {223, "THROTTLE_SET"}};
    open();
    for (const Name& event : systemEvents)
        send(OpSubscribeToSystemEvent, event.id, event.name);
    for (const Field& field : fields)
        define(field.definition, field.name, field.unit, field.type);
    for (const Name& event : clientEvents)
        send(OpMapClientEventToSimEvent, event.id, event.name);
    for (const Name& event : clientEvents)
        if (event.id != EngineAutoStart)
            send(OpAddClientEventToNotificationGroup, {notificationGroup, event.id, 1});
    send(OpSetNotificationGroupPriority, {notificationGroup, 1});
}

std::uint32_t Client::created(std::string_view title, std::string_view tailNumber,
                              const standin::Placement& place, bool onGround) {
    create(title, tailNumber, place, onGround);
    const auto assigned = takeOne(RecvAssignedObjectId);
    if (!assigned)
        return 0;
    standin::PacketReader body = assigned->body();
    body.skip(4);
    return body.u32();
}

void Client::freeze(std::uint32_t object) {
    send(OpAIReleaseControl, {object, RequestReleaseControl});
    transmit(object, FreezeLatitudeLongitudeSet, 1);
    transmit(object, FreezeAltitudeSet, 1);
    transmit(object, FreezeAttitudeSet, 1);
}

} // namespace kst::test
