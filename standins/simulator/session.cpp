#include "standins/simulator/session.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace kst::standin {

namespace {

constexpr std::size_t headerSize = 16;
constexpr std::uint32_t largestPacket = 64 * 1024;
/// A client that takes nothing any more is cut off once this much waits for it.
constexpr std::size_t mostOutgoing = 64U * 1024U * 1024U;
constexpr std::size_t complaintsKept = 1000;

constexpr std::size_t nameLength = 256;
constexpr std::uint32_t openMark = 0x50334400;
constexpr std::uint32_t openMajor = 5;
constexpr std::uint32_t openMinor = 3;
constexpr std::uint32_t aircraftType = simconnect::ObjectAircraft;

constexpr std::array systemEvents{"sim",   "objectadded",     "objectremoved",
                                  "frame", "positionchanged", "flightloaded"};

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

} // namespace

/// One operation that a packet can ask for. `size` is that of the whole packet; of a packet with data behind
/// its fields, the least.
struct Session::Operation {
    std::uint32_t number;
    std::size_t size;
    bool open;
    void (Session::*run)(Call&);
};

const Session::Operation* Session::findOperation(std::uint32_t number) {
    using namespace simconnect;
    static constexpr std::array operations{
        Operation{OpOpen, 296, false, &Session::open},
        Operation{OpMapClientEventToSimEvent, 276, false, &Session::mapEvent},
        Operation{OpTransmitClientEvent, 36, false, &Session::transmitEvent},
        Operation{OpAddClientEventToNotificationGroup, 28, false, &Session::addToGroup},
        Operation{OpSetNotificationGroupPriority, 24, false, &Session::setGroupPriority},
        Operation{OpAddToDataDefinition, 544, false, &Session::addToDefinition},
        Operation{OpClearDataDefinition, 20, false, &Session::clearDefinition},
        Operation{OpRequestDataOnSimObject, 48, false, &Session::requestData},
        Operation{OpRequestDataOnSimObjectType, 32, false, &Session::requestByType},
        Operation{OpSetDataOnSimObject, 36, true, &Session::setData},
        Operation{OpSubscribeToSystemEvent, 276, false, &Session::subscribe},
        Operation{OpUnsubscribeFromSystemEvent, 20, false, &Session::unsubscribe},
        Operation{OpAICreateNonATCAircraft, 344, false, &Session::createAircraft},
        Operation{OpAIReleaseControl, 24, false, &Session::releaseControl},
        Operation{OpAIRemoveObject, 24, false, &Session::removeObject},
        Operation{OpAISetAircraftFlightPlan, 284, false, &Session::setFlightPlan},
    };
    const auto* found = std::find_if(operations.begin(), operations.end(),
                                     [&](const Operation& operation) { return operation.number == number; });
    return found == operations.end() ? nullptr : found;
}

Session::Session(World& world) : world_(world) {
    world_.join(*this);
}

Session::~Session() {
    breakOff();
    world_.leave(*this);
}

void Session::receive(ByteView bytes) {
    if (closing_)
        return;
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    std::size_t position = 0;
    while (!closing_ && pending_.size() - position >= sizeof(std::uint32_t)) {
        const ByteView rest = ByteView(pending_).subspan(position);
        const std::uint32_t size = PacketReader(rest).u32();
        if (size < headerSize || size > largestPacket) {
            complain(Call{0, 0, PacketReader({})}, simconnect::ExceptionError);
            closing_ = true;
            break;
        }
        if (rest.size() < size)
            break;
        handle(rest.first(size));
        position += size;
    }
    if (closing_)
        pending_.clear();
    else
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(position));
}

void Session::handle(ByteView packet) {
    PacketReader reader(packet);
    reader.skip(sizeof(std::uint32_t));
    const std::uint32_t protocol = reader.u32();
    const std::uint32_t number = reader.u32() ^ simconnect::operationMark;
    Call call{number, reader.u32(), reader};
    const Operation* operation = findOperation(number);
    ++received_[operation == nullptr ? 0 : number];
    if (operation == nullptr)
        complain(call, simconnect::ExceptionError);
    else if (protocol != simconnect::protocolVersion)
        complain(call, simconnect::ExceptionVersionMismatch);
    else if (operation->open ? packet.size() < operation->size : packet.size() != operation->size)
        complain(call, simconnect::ExceptionSizeMismatch);
    else if (!opened_ && number != simconnect::OpOpen)
        complain(call, simconnect::ExceptionUnopened);
    else
        (this->*operation->run)(call);
}

void Session::complain(const Call& call, std::uint32_t exception, std::uint32_t index) {
    if (complaints_.size() < complaintsKept)
        complaints_.push_back({exception, call.sendId, index});
    PacketWriter body;
    body.u32(exception).u32(call.sendId).u32(index);
    send(simconnect::RecvException, body);
}

void Session::send(std::uint32_t id, PacketWriter& body) {
    if (closing_)
        return;
    Bytes packet = message(id, body);
    outgoingBytes_ += packet.size();
    if (outgoingBytes_ > mostOutgoing) {
        // The objects go with the session: here a walk over them may be under way.
        closing_ = true;
        outgoing_.clear();
        return;
    }
    outgoing_.push_back({world_.runSeconds() + world_.answerDelay(), std::move(packet)});
}

bool Session::take(Bytes& packet) {
    if (outgoing_.empty() || outgoing_.front().dueAt > world_.runSeconds())
        return false;
    packet = std::move(outgoing_.front().packet);
    outgoing_.pop_front();
    outgoingBytes_ -= packet.size();
    return true;
}

void Session::open(Call& call) {
    const std::string name = call.body.text(nameLength);
    call.body.skip(sizeof(std::uint32_t));
    const std::uint32_t mark = call.body.u32();
    const std::uint32_t major = call.body.u32();
    const std::uint32_t minor = call.body.u32();
    if (call.body.failed())
        return complain(call, simconnect::ExceptionSizeMismatch, 2);
    if (opened_)
        return complain(call, simconnect::ExceptionIllegalOperation);
    if (mark != openMark || major != openMajor || minor != openMinor)
        return complain(call, simconnect::ExceptionVersionMismatch);
    opened_ = true;
    clientName_ = name;
    PacketWriter body;
    body.text(world_.settings().applicationName, nameLength);
    for (const std::uint32_t number : world_.settings().applicationVersion)
        body.u32(number);
    for (const std::uint32_t number : world_.settings().simConnectVersion)
        body.u32(number);
    body.u32(0).u32(0);
    send(simconnect::RecvOpen, body);
}

void Session::subscribe(Call& call) {
    const std::uint32_t id = call.body.u32();
    const std::string name = lowered(call.body.text(nameLength));
    if (call.body.failed() || std::find(systemEvents.begin(), systemEvents.end(), name) == systemEvents.end())
        return complain(call, simconnect::ExceptionNameUnrecognized, 2);
    const bool idTaken = std::any_of(subscriptions_.begin(), subscriptions_.end(),
                                     [&](const auto& entry) { return entry.second == id; });
    if (idTaken || subscriptions_.contains(name))
        return complain(call, simconnect::ExceptionAlreadySubscribed, 1);
    subscriptions_[name] = id;
    if (name == "sim")
        tellEvent(name, world_.flightRunning() ? 1 : 0);
}

void Session::unsubscribe(Call& call) {
    const std::uint32_t id = call.body.u32();
    if (std::erase_if(subscriptions_, [&](const auto& entry) { return entry.second == id; }) == 0)
        complain(call, simconnect::ExceptionUnrecognizedId, 1);
}

const std::uint32_t* Session::subscribed(std::string_view systemEvent) const {
    const auto found = subscriptions_.find(systemEvent);
    return found == subscriptions_.end() ? nullptr : &found->second;
}

void Session::tellEvent(std::string_view systemEvent, std::uint32_t data) {
    if (const std::uint32_t* id = subscribed(systemEvent)) {
        PacketWriter body;
        body.u32(simconnect::unused).u32(*id).u32(data);
        send(simconnect::RecvEvent, body);
    }
}

void Session::tellObject(std::string_view systemEvent, std::uint32_t object) {
    if (const std::uint32_t* id = subscribed(systemEvent)) {
        PacketWriter body;
        body.u32(simconnect::unused).u32(*id).u32(object).u32(aircraftType);
        send(simconnect::RecvEventObjectAddRemove, body);
    }
}

void Session::tellFile(std::string_view systemEvent, std::string_view file) {
    constexpr std::size_t fileNameLength = 260;
    if (const std::uint32_t* id = subscribed(systemEvent)) {
        PacketWriter body;
        body.u32(simconnect::unused).u32(*id).u32(0).text(file, fileNameLength).u32(0);
        send(simconnect::RecvEventFilename, body);
    }
}

void Session::tellFrame(float rate) {
    constexpr float simulationSpeed = 1.0F;
    if (const std::uint32_t* id = subscribed("frame")) {
        PacketWriter body;
        body.u32(simconnect::unused).u32(*id).u32(0).f32(rate).f32(simulationSpeed);
        send(simconnect::RecvEventFrame, body);
    }
}

void Session::tellQuit() {
    PacketWriter nothing;
    send(simconnect::RecvQuit, nothing);
    closing_ = true;
}

void Session::breakOff() {
    closing_ = true;
    outgoing_.clear();
    outgoingBytes_ = 0;
    requests_.clear();
    subscriptions_.clear();
    for (const std::uint32_t object : std::exchange(created_, {}))
        world_.remove(object);
}

void Session::forgetObject(std::uint32_t object) {
    created_.erase(object);
    std::erase_if(requests_, [&](const PeriodicRequest& request) { return request.object == object; });
}

} // namespace kst::standin
