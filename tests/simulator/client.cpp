#include "tests/simulator/client.h"

#include "tests/simulator/vocabulary.h"

namespace kst::test {

using namespace simconnect;

void Client::declareAll() {
    open();
    for (const Declaration& each : vocabulary) {
        if (each.operation == OpAddToDataDefinition) {
            define(each.id, each.name, each.unit, each.type);
        } else {
            send(each.operation, each.id, each.name);
        }
    }
    for (const std::uint32_t event : groupEvents)
        send(OpAddClientEventToNotificationGroup, {notificationGroup, event, 1});
    send(OpSetNotificationGroupPriority, {notificationGroup, 1});
}

std::uint32_t Client::created(std::string_view title, std::string_view tailNumber,
                              const standin::Placement& place, bool onGround) {
    create(title, tailNumber, place, onGround);
    const auto assigned = takeOne(RecvAssignedObjectId);
    if (!assigned)
        return 0;
    standin::PacketReader body = assigned->body(1);
    return body.u32();
}

void Client::freeze(std::uint32_t object) {
    send(OpAIReleaseControl, {object, RequestReleaseControl});
    transmit(object, FreezeLatitudeLongitudeSet, 1);
    transmit(object, FreezeAltitudeSet, 1);
    transmit(object, FreezeAttitudeSet, 1);
}

} // namespace kst::test
