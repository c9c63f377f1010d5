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
    take();
}

std::vector<std::uint32_t> Client::scan(std::uint32_t radiusM, std::uint32_t type) {
    take();
    send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, radiusM, type});
    std::vector<std::uint32_t> ids;
    for (const Received& received : takeAll(RecvSimobjectDataByType))
        ids.push_back(received.words(2)[1]);
    return ids;
}

std::uint32_t Client::created(std::string_view title, std::string_view tailNumber,
                              const standin::Placement& place, bool onGround) {
    create(title, tailNumber, place, onGround);
    return takeOne(RecvAssignedObjectId).words(2)[1];
}

void Client::freeze(std::uint32_t object) {
    send(OpAIReleaseControl, {object, RequestReleaseControl});
    transmit(object, FreezeLatitudeLongitudeSet, 1);
    transmit(object, FreezeAltitudeSet, 1);
    transmit(object, FreezeAttitudeSet, 1);
}

} // namespace kst::test
