// What a client does with AI objects: creation and removal, client events, flight plans.

#include "standins/simulator/session.h"

#include "platform/paths.h"

#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kst::standin {

namespace {

constexpr std::size_t nameLength = 256;
constexpr std::size_t tailNumberLength = 12;
constexpr std::size_t planPathLength = 260;
constexpr std::size_t mostEventMaps = 1000;
constexpr std::size_t mostGroups = 20;
constexpr std::uint32_t exceptionTooManyEventNames = 8;
constexpr std::uint32_t exceptionEventIdDuplicate = 9;
constexpr std::uint32_t flagGroupIsPriority = 0x10;
constexpr std::size_t eventsKept = 2000; ///< per object
constexpr double highestStartFt = 100000.0;
constexpr std::uint32_t fastestStartKt = 2000; ///< more means "cruise" or "keep": nothing to start with

bool reasonable(const Placement& place) {
    return std::isfinite(place.lat) && std::isfinite(place.lon) && std::isfinite(place.altFt) &&
           std::isfinite(place.pitchRad) && std::isfinite(place.bankRad) && std::isfinite(place.headingRad) &&
           std::abs(place.lat) <= 90.0 && std::abs(place.lon) <= 180.0 &&
           std::abs(place.altFt) <= highestStartFt;
}

} // namespace

void Session::mapEvent(Call& call) {
    const std::uint32_t id = call.body.u32();
    const std::string name = call.body.text(nameLength);
    if (call.body.failed() || !knownEventName(name))
        return complain(call, simconnect::ExceptionNameUnrecognized, 2);
    if (eventNames_.contains(id))
        return complain(call, exceptionEventIdDuplicate, 1);
    if (eventNames_.size() >= mostEventMaps)
        return complain(call, exceptionTooManyEventNames, 1);
    eventNames_[id] = name;
}

void Session::addToGroup(Call& call) {
    const std::uint32_t group = call.body.u32();
    const std::uint32_t event = call.body.u32();
    if (!eventNames_.contains(event))
        return complain(call, simconnect::ExceptionUnrecognizedId, 2);
    if (!groups_.contains(group) && groups_.size() >= mostGroups)
        return complain(call, simconnect::ExceptionTooManyGroups, 1);
    if (!groups_[group].insert(event).second)
        complain(call, exceptionEventIdDuplicate, 2);
}

void Session::setGroupPriority(Call& call) {
    if (!groups_.contains(call.body.u32()))
        complain(call, simconnect::ExceptionUnrecognizedId, 1);
}

void Session::transmitEvent(Call& call) {
    Aircraft* aircraft = world_.findMutable(call.body.u32());
    const auto event = eventNames_.find(call.body.u32());
    const std::uint32_t value = call.body.u32();
    const std::uint32_t group = call.body.u32();
    const std::uint32_t flags = call.body.u32();
    if (aircraft == nullptr)
        return complain(call, simconnect::ExceptionUnrecognizedId, 1);
    if (event == eventNames_.end())
        return complain(call, simconnect::ExceptionUnrecognizedId, 2);
    if ((flags & flagGroupIsPriority) == 0 && !groups_.contains(group))
        return complain(call, simconnect::ExceptionUnrecognizedId, 4);
    applyEvent(*aircraft, event->second, value);
    aircraft->events.push_back({world_.seconds(), event->second, value});
    if (aircraft->events.size() > eventsKept)
        aircraft->events.pop_front();
}

void Session::createAircraft(Call& call) {
    World::Creation creation;
    creation.title = call.body.text(nameLength);
    creation.tailNumber = call.body.text(tailNumberLength);
    creation.place.lat = call.body.f64();
    creation.place.lon = call.body.f64();
    creation.place.altFt = call.body.f64();
    creation.place.pitchRad = call.body.f64() * radPerDeg;
    creation.place.bankRad = call.body.f64() * radPerDeg;
    creation.place.headingRad = wrapHeading(call.body.f64() * radPerDeg);
    creation.onGround = call.body.u32() != 0;
    const std::uint32_t airspeed = call.body.u32();
    creation.airspeedKt = airspeed <= fastestStartKt ? airspeed : 0.0;
    const std::uint32_t request = call.body.u32();
    if (call.body.failed())
        return complain(call, simconnect::ExceptionSizeMismatch, 1);
    if (!reasonable(creation.place))
        return complain(call, simconnect::ExceptionOutOfBounds, 3);
    std::uint32_t exception = simconnect::ExceptionNone;
    const std::uint32_t id = world_.create(std::move(creation), exception);
    if (id == 0)
        return complain(call, exception, exception == simconnect::ExceptionCreateObjectFailed ? 1 : 0);
    created_.insert(id);
    PacketWriter body;
    body.u32(request).u32(id);
    send(simconnect::RecvAssignedObjectId, body);
    world_.announce(id);
}

/// An object that this client created; without one the call is answered with what is wrong, and the result
/// is null.
Aircraft* Session::ownObject(const Call& call, std::uint32_t object) {
    Aircraft* aircraft = world_.findMutable(object);
    if (aircraft == nullptr)
        complain(call, simconnect::ExceptionUnrecognizedId, 1);
    else if (!created_.contains(object)) {
        complain(call, simconnect::ExceptionIllegalOperation, 1);
        return nullptr;
    }
    return aircraft;
}

void Session::releaseControl(Call& call) {
    if (Aircraft* aircraft = ownObject(call, call.body.u32()))
        aircraft->released = true;
}

void Session::removeObject(Call& call) {
    const std::uint32_t object = call.body.u32();
    if (ownObject(call, object) != nullptr)
        world_.remove(object);
}

void Session::setFlightPlan(Call& call) {
    Aircraft* aircraft = ownObject(call, call.body.u32());
    if (aircraft == nullptr)
        return;
    std::string path = call.body.text(planPathLength);
    std::error_code error;
    const auto size = std::filesystem::file_size(platform::pathFromUtf8(path), error);
    if (call.body.failed() || error || size == 0)
        return complain(call, simconnect::ExceptionLoadFlightplanFailed, 2);
    aircraft->flightPlan = std::move(path);
}

} // namespace kst::standin
