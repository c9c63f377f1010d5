#include "simlink/simconnect.h"

#include "core/clock.h"
#include "core/runstate.h"
#include "model/simconnect.h"
#include "simlink/packets.h"
#include "simlink/simconnectconfig.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace kst {

namespace {

using namespace simconnect;

constexpr std::size_t nameField = 256;
constexpr std::size_t tailNumberField = 12;
constexpr std::size_t pathField = 260;
constexpr std::size_t recvHeadSize = 12;

/// What the simulator expects in the first packet of a session.
constexpr std::uint32_t openMagic = 0x50334400;
constexpr std::uint32_t openMajor = 5;
constexpr std::uint32_t openMinor = 3;
constexpr std::size_t openTailSize = 8;

constexpr std::chrono::milliseconds drainTime{100};
constexpr std::chrono::milliseconds settleTime{250};
constexpr int mostSettleRounds = 20;

/// A simulator that sends faster than the messages are handled does not keep the caller for ever.
constexpr int mostDispatchRounds = 16;

struct Client {
    std::shared_ptr<SimTransport> transport;
    PacketWriter writer;
    std::uint32_t lastSendId = 0;
    PacketFifo dispatching; ///< taken from the receive list; belongs to the dispatching thread
};

/// Guards the send path of all clients, and their list.
std::mutex sendLock;
std::vector<std::shared_ptr<Client>> clients;
TransportFactory testFactory;

auto clientPosition(SimHandle handle) {
    return std::find_if(clients.begin(), clients.end(), [&](const std::shared_ptr<Client>& client) {
        return client->transport->sessionNumber() == handle;
    });
}

std::shared_ptr<Client> clientOf(SimHandle handle) {
    const std::lock_guard lock(sendLock);
    const auto found = clientPosition(handle);
    return found == clients.end() ? nullptr : *found;
}

/// Sends one packet whose body `fill` adds. A send id is used up only by a packet that is sent.
template <typename Fill>
SimResult sendPacket(SimHandle handle, std::uint32_t operation, Fill&& fill) {
    const std::lock_guard lock(sendLock);
    const auto found = clientPosition(handle);
    if (found == clients.end()) {
        return simBadArgument;
    }
    Client& client = **found;
    if (const SimResult error = client.transport->storedError(); error != simOk) {
        return error;
    }
    client.writer.begin(operation);
    fill(client.writer);
    if (client.writer.result() != simOk) {
        return client.writer.result();
    }
    client.lastSendId = nextSendId(client.lastSendId);
    return client.transport->send(client.writer.finish(client.lastSendId));
}

/// A packet whose body is 32-bit fields only.
template <typename... Fields>
SimResult sendFields(SimHandle handle, std::uint32_t operation, Fields... fields) {
    return sendPacket(handle, operation, [&](PacketWriter& writer) { (writer.add(fields), ...); });
}

std::shared_ptr<SimTransport> attempt(const SimConnectConfig& config) {
    if (stopAsked()) {
        return nullptr;
    }
    const TransportTarget target{config.protocol, config.address, config.port, config.maxReceiveSize,
                                 config.disableNagle};
    return testFactory ? testFactory(target) : connectTransport(target, stopAsked);
}

/// Tries the configured way and, as long as no other machine is meant, the others on this one.
std::shared_ptr<SimTransport> connectByChain(SimConnectConfig config) {
    constexpr std::string_view loopback6 = "::1";
    constexpr std::string_view loopback4 = "127.0.0.1";
    constexpr std::string_view thisMachine = ".";
    if (config.protocol == SimProtocol::Pipe) {
        if (auto transport = attempt(config)) {
            return transport;
        }
        if (!config.address.empty() && config.address != thisMachine) {
            return nullptr;
        }
        config.protocol = SimProtocol::IPv6;
        config.address = loopback6;
        config.port = registeredSimPort(SimProtocol::IPv6);
    }
    if (config.protocol == SimProtocol::IPv6) {
        if (auto transport = config.port.empty() ? nullptr : attempt(config)) {
            return transport;
        }
        if (config.address != loopback6) {
            return nullptr;
        }
        config.protocol = SimProtocol::IPv4;
        config.address = loopback4;
        config.port = registeredSimPort(SimProtocol::IPv4);
    }
    if (auto transport = config.port.empty() ? nullptr : attempt(config)) {
        return transport;
    }
    if (config.address != loopback4) {
        return nullptr;
    }
    config.protocol = SimProtocol::Pipe;
    config.address = thisMachine;
    config.port.clear();
    return attempt(config);
}

SimResult sendOpen(SimHandle handle, std::string_view name) {
    return sendPacket(handle, OpOpen, [&](PacketWriter& writer) {
        writer.addText(name, nameField);
        writer.add(0U);
        writer.add(openMagic);
        writer.add(openMajor);
        writer.add(openMinor);
        writer.addZeros(openTailSize);
    });
}

} // namespace

SimResult SimConnect_Open(SimHandle& handle, std::string_view name, void* window, std::uint32_t userMessage,
                          void* event, std::uint32_t configIndex) {
    handle = noSimHandle;
    SimConnectConfig config;
    if (window != nullptr || userMessage != 0 || event != nullptr ||
        !readSimConnectConfig(configIndex, config)) {
        return simBadArgument;
    }
    auto client = std::make_shared<Client>();
    client->transport = connectByChain(std::move(config));
    if (!client->transport) {
        return simFailed;
    }
    client->transport->onConnected();
    const SimHandle opened = client->transport->sessionNumber();
    {
        const std::lock_guard lock(sendLock);
        clients.push_back(std::move(client));
    }
    if (const SimResult result = sendOpen(opened, name); result != simOk) {
        SimConnect_Close(opened);
        return result;
    }
    handle = opened;
    return simOk;
}

SimResult SimConnect_Close(SimHandle handle) {
    std::shared_ptr<Client> client = clientOf(handle);
    if (!client) {
        return simBadArgument;
    }
    sleepFor(drainTime);
    client->transport->dropReceived();
    bool last = false;
    {
        const std::lock_guard lock(sendLock);
        if (const auto found = clientPosition(handle); found != clients.end()) {
            clients.erase(found);
        }
        last = clients.empty();
    }
    client->transport->disconnect(DisconnectCode::Closed, 0);
    client.reset();
    sleepFor(settleTime);
    for (int round = 0; last && SimTransport::count() > 0 && round < mostSettleRounds; ++round) {
        sleepFor(settleTime);
    }
    return simOk;
}

SimResult SimConnect_CallDispatch(SimHandle handle, SimDispatchProc callback, void* context) {
    const std::shared_ptr<Client> client = clientOf(handle);
    if (!client || callback == nullptr) {
        return simBadArgument;
    }
    // Read first: what arrived before the connection broke is still dispatched.
    const SimResult result = client->transport->storedError();
    for (int round = 0; round < mostDispatchRounds; ++round) {
        std::span<const std::byte> message;
        while (client->dispatching.pop(message)) {
            if (message.size() >= recvHeadSize) {
                callback(message.data(), static_cast<std::uint32_t>(message.size()), context);
            }
        }
        client->dispatching.clear();
        if (!client->transport->takeReceived(client->dispatching)) {
            break;
        }
    }
    return result;
}

SimResult SimConnect_GetLastSentPacketID(SimHandle handle, std::uint32_t& sendId) {
    const std::lock_guard lock(sendLock);
    const auto found = clientPosition(handle);
    if (found == clients.end()) {
        return simBadArgument;
    }
    sendId = (*found)->lastSendId;
    return (*found)->transport->storedError();
}

SimResult SimConnect_MapClientEventToSimEvent(SimHandle handle, std::uint32_t eventId,
                                              std::string_view name) {
    return sendPacket(handle, OpMapClientEventToSimEvent, [&](PacketWriter& writer) {
        writer.add(eventId);
        writer.addText(name, nameField);
    });
}

SimResult SimConnect_TransmitClientEvent(SimHandle handle, std::uint32_t objectId, std::uint32_t eventId,
                                         std::uint32_t data, std::uint32_t group, std::uint32_t flags) {
    return sendFields(handle, OpTransmitClientEvent, objectId, eventId, data, group, flags);
}

SimResult SimConnect_AddClientEventToNotificationGroup(SimHandle handle, std::uint32_t group,
                                                       std::uint32_t eventId, bool maskable) {
    return sendFields(handle, OpAddClientEventToNotificationGroup, group, eventId, maskable ? 1U : 0U);
}

SimResult SimConnect_SetNotificationGroupPriority(SimHandle handle, std::uint32_t group,
                                                  std::uint32_t priority) {
    return sendFields(handle, OpSetNotificationGroupPriority, group, priority);
}

SimResult SimConnect_AddToDataDefinition(SimHandle handle, std::uint32_t definition,
                                         std::string_view variable, std::string_view unit,
                                         std::uint32_t dataType, float epsilon, std::uint32_t datumId) {
    return sendPacket(handle, OpAddToDataDefinition, [&](PacketWriter& writer) {
        writer.add(definition);
        writer.addText(variable, nameField);
        writer.addText(unit, nameField);
        writer.add(dataType);
        writer.add(epsilon);
        writer.add(datumId);
    });
}

SimResult SimConnect_ClearDataDefinition(SimHandle handle, std::uint32_t definition) {
    return sendFields(handle, OpClearDataDefinition, definition);
}

SimResult SimConnect_RequestDataOnSimObject(SimHandle handle, std::uint32_t request, std::uint32_t definition,
                                            std::uint32_t objectId, std::uint32_t period, std::uint32_t flags,
                                            std::uint32_t origin, std::uint32_t interval,
                                            std::uint32_t limit) {
    return sendFields(handle, OpRequestDataOnSimObject, request, definition, objectId, period, flags, origin,
                      interval, limit);
}

SimResult SimConnect_RequestDataOnSimObjectType(SimHandle handle, std::uint32_t request,
                                                std::uint32_t definition, std::uint32_t radiusM,
                                                std::uint32_t objectType) {
    return sendFields(handle, OpRequestDataOnSimObjectType, request, definition, radiusM, objectType);
}

SimResult SimConnect_SetDataOnSimObject(SimHandle handle, std::uint32_t definition, std::uint32_t objectId,
                                        std::uint32_t flags, std::uint32_t arrayCount, std::uint32_t unitSize,
                                        const void* data) {
    const std::uint32_t count = arrayCount == 0 ? 1 : arrayCount;
    if (data == nullptr || unitSize > sendBlockSize / count) {
        return simBadArgument;
    }
    const std::span bytes(static_cast<const std::byte*>(data), std::size_t{unitSize} * count);
    return sendPacket(handle, OpSetDataOnSimObject, [&](PacketWriter& writer) {
        writer.add(definition);
        writer.add(objectId);
        writer.add(flags);
        writer.add(count);
        writer.add(unitSize);
        writer.addBytes(bytes);
    });
}

SimResult SimConnect_SubscribeToSystemEvent(SimHandle handle, std::uint32_t eventId, std::string_view name) {
    return sendPacket(handle, OpSubscribeToSystemEvent, [&](PacketWriter& writer) {
        writer.add(eventId);
        writer.addText(name, nameField);
    });
}

SimResult SimConnect_UnsubscribeFromSystemEvent(SimHandle handle, std::uint32_t eventId) {
    return sendFields(handle, OpUnsubscribeFromSystemEvent, eventId);
}

SimResult SimConnect_AICreateNonATCAircraft(SimHandle handle, std::string_view title,
                                            std::string_view tailNumber, const InitPosition& position,
                                            std::uint32_t request) {
    return sendPacket(handle, OpAICreateNonATCAircraft, [&](PacketWriter& writer) {
        writer.addText(title, nameField);
        writer.addText(tailNumber, tailNumberField);
        writer.addBytes(std::as_bytes(std::span(&position, 1)));
        writer.add(request);
    });
}

SimResult SimConnect_AIReleaseControl(SimHandle handle, std::uint32_t objectId, std::uint32_t request) {
    return sendFields(handle, OpAIReleaseControl, objectId, request);
}

SimResult SimConnect_AIRemoveObject(SimHandle handle, std::uint32_t objectId, std::uint32_t request) {
    return sendFields(handle, OpAIRemoveObject, objectId, request);
}

SimResult SimConnect_AISetAircraftFlightPlan(SimHandle handle, std::uint32_t objectId, std::string_view path,
                                             std::uint32_t request) {
    return sendPacket(handle, OpAISetAircraftFlightPlan, [&](PacketWriter& writer) {
        writer.add(objectId);
        writer.addText(path, pathField);
        writer.add(request);
    });
}

bool simConnectionLost(SimHandle handle) {
    const std::shared_ptr<Client> client = clientOf(handle);
    return !client || client->transport->storedError() != simOk;
}

void setTransportForTest(TransportFactory factory) {
    testFactory = std::move(factory);
}

} // namespace kst
