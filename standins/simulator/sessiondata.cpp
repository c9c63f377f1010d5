// What a client asks and sets: data definitions, requests and their answers.

#include "standins/simulator/session.h"

#include <algorithm>
#include <utility>

namespace kst::standin {

namespace {

constexpr std::size_t nameLength = 256;
constexpr std::size_t mostDefinitions = 1000;
constexpr std::size_t mostFields = 200; ///< of one definition
constexpr std::size_t mostRequests = 1000;
constexpr std::uint32_t widestRadiusM = 200000;
constexpr std::uint32_t flagChanged = 1; ///< answer only when the data differ from the last ones
constexpr std::uint32_t lastObjectType = simconnect::ObjectGround;

} // namespace

void Session::addToDefinition(Call& call) {
    const std::uint32_t id = call.body.u32();
    const std::string name = call.body.text(nameLength);
    const std::string unit = call.body.text(nameLength);
    const std::uint32_t type = call.body.u32();
    if (call.body.failed())
        return complain(call, simconnect::ExceptionNameUnrecognized, 2);
    DefinedField field;
    if (const std::uint32_t exception = defineField(name, unit, type, field))
        return complain(call, exception, exception == simconnect::ExceptionInvalidDataType ? 4 : 2);
    if (!definitions_.contains(id) && definitions_.size() >= mostDefinitions)
        return complain(call, simconnect::ExceptionOutOfBounds, 1);
    Definition& definition = definitions_[id];
    if (definition.size() >= mostFields)
        return complain(call, simconnect::ExceptionOutOfBounds, 1);
    definition.push_back(field);
}

void Session::clearDefinition(Call& call) {
    const std::uint32_t id = call.body.u32();
    if (definitions_.erase(id) == 0)
        return complain(call, simconnect::ExceptionUnrecognizedId, 1);
    std::erase_if(requests_, [&](const PeriodicRequest& request) { return request.definition == id; });
}

Bytes Session::valuesOf(const Definition& definition, const Aircraft& aircraft) const {
    PacketWriter values;
    const Observation seen{aircraft, world_.terrain(), world_.date()};
    for (const DefinedField& field : definition)
        writeValue(values, field, seen);
    return std::move(values.data());
}

void Session::sendData(std::uint32_t messageId, const PeriodicRequest& request, const Aircraft& aircraft,
                       ByteView values, std::uint32_t entry, std::uint32_t outOf) {
    PacketWriter body;
    body.u32(request.request)
        .u32(aircraft.id)
        .u32(request.definition)
        .u32(request.flags)
        .u32(entry)
        .u32(outOf)
        .u32(static_cast<std::uint32_t>(definitions_.at(request.definition).size()))
        .bytes(values);
    send(messageId, body);
}

void Session::requestData(Call& call) {
    PeriodicRequest request;
    request.request = call.body.u32();
    request.definition = call.body.u32();
    request.object = call.body.u32();
    request.period = call.body.u32();
    request.flags = call.body.u32();
    request.toSkip = call.body.u32();
    request.interval = call.body.u32();
    request.left = call.body.u32();
    if (request.period > simconnect::PeriodSecond)
        return complain(call, simconnect::ExceptionInvalidEnum, 4);
    if (!definitions_.contains(request.definition))
        return complain(call, simconnect::ExceptionUnrecognizedId, 2);
    if (world_.find(request.object) == nullptr)
        return complain(call, simconnect::ExceptionUnrecognizedId, 3);
    if (request.flags > flagChanged)
        return complain(call, simconnect::ExceptionInvalidEnum, 5);
    if (request.period == simconnect::PeriodOnce) {
        answer(request);
        return;
    }
    std::erase_if(requests_, [&](const PeriodicRequest& other) { return other.request == request.request; });
    if (request.period == simconnect::PeriodNever)
        return;
    if (requests_.size() >= mostRequests)
        return complain(call, simconnect::ExceptionTooManyRequests, 1);
    requests_.push_back(std::move(request));
}

bool Session::answer(PeriodicRequest& request) {
    const Aircraft* aircraft = world_.find(request.object);
    Bytes values = valuesOf(definitions_.at(request.definition), *aircraft);
    if ((request.flags & flagChanged) != 0 && values == request.last)
        return false;
    sendData(simconnect::RecvSimobjectData, request, *aircraft, values, 1, 1);
    request.last = std::move(values);
    return true;
}

void Session::answerPeriod(std::uint32_t period) {
    for (PeriodicRequest& request : requests_) {
        if (request.period != period)
            continue;
        if (request.toSkip > 0) {
            --request.toSkip;
            continue;
        }
        request.toSkip = request.interval;
        const bool counted = request.left > 0;
        if (answer(request) && counted && --request.left == 0)
            request.period = simconnect::PeriodNever;
    }
    std::erase_if(requests_,
                  [](const PeriodicRequest& request) { return request.period == simconnect::PeriodNever; });
}

void Session::requestByType(Call& call) {
    PeriodicRequest request;
    request.request = call.body.u32();
    request.definition = call.body.u32();
    const std::uint32_t radiusM = call.body.u32();
    const std::uint32_t type = call.body.u32();
    const auto definition = definitions_.find(request.definition);
    if (definition == definitions_.end())
        return complain(call, simconnect::ExceptionUnrecognizedId, 2);
    if (radiusM > widestRadiusM)
        return complain(call, simconnect::ExceptionOutOfBounds, 3);
    if (type > lastObjectType)
        return complain(call, simconnect::ExceptionInvalidEnum, 4);
    const bool others = type == simconnect::ObjectAll || type == simconnect::ObjectAircraft;
    std::vector<const Aircraft*> found;
    const Aircraft& user = world_.user();
    if (others || type == simconnect::ObjectUser)
        found.push_back(&user);
    for (const auto& [id, object] : world_.objects()) {
        if (others && groundDistanceM(user.place.lat, user.place.lon, object.place.lat, object.place.lon) <=
                          static_cast<double>(radiusM))
            found.push_back(&object);
    }
    std::uint32_t entry = 0;
    for (const Aircraft* aircraft : found)
        sendData(simconnect::RecvSimobjectDataByType, request, *aircraft,
                 valuesOf(definition->second, *aircraft), ++entry, static_cast<std::uint32_t>(found.size()));
}

void Session::setData(Call& call) {
    const auto definition = definitions_.find(call.body.u32());
    Aircraft* aircraft = world_.findMutable(call.body.u32());
    const std::uint32_t flags = call.body.u32();
    const std::uint32_t count = call.body.u32();
    const std::uint32_t unitSize = call.body.u32();
    if (definition == definitions_.end())
        return complain(call, simconnect::ExceptionUnrecognizedId, 1);
    if (aircraft == nullptr)
        return complain(call, simconnect::ExceptionUnrecognizedId, 2);
    if (flags != 0)
        return complain(call, simconnect::ExceptionInvalidEnum, 3);
    if (count != 1)
        return complain(call, simconnect::ExceptionInvalidArray, 4);
    if (call.body.left() != unitSize)
        return complain(call, simconnect::ExceptionSizeMismatch, 5);
    std::vector<GivenValue> values;
    for (const DefinedField& field : definition->second) {
        GivenValue value;
        if (const std::uint32_t exception = readValue(call.body, field, value))
            return complain(call, exception, exception == simconnect::ExceptionInvalidDataSize ? 5 : 6);
        values.push_back(value);
    }
    if (call.body.left() != 0)
        return complain(call, simconnect::ExceptionInvalidDataSize, 5);
    bool placed = false;
    for (const GivenValue& value : values) {
        applyValue(*aircraft, value);
        placed = placed || setsPlace(value);
    }
    if (placed)
        ++aircraft->placed;
}

} // namespace kst::standin
