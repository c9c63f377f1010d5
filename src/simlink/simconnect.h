#pragma once

// The client side of the SimConnect protocol, under the published names of its operations. It knows handles,
// ids and messages, nothing of aircraft.
//
// Every operation may be called on any thread and returns `simOk`, `simTextTooLong` for a text longer than
// its field, `simBadArgument` for an unknown handle or an argument that cannot be sent, the stored error once
// the connection is lost, else `simFailed`. Packets leave in the order of the calls.

#include "model/simobjects.h"
#include "simlink/streamtransport.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace kst {

/// A session with the simulator; 0 is none. A handle stays unknown once it is closed.
using SimHandle = std::uint32_t;
inline constexpr SimHandle noSimHandle = 0;

/// Receives one message: `size` bytes at `message`, at least 12, only valid during the call.
using SimDispatchProc = void (*)(const void* message, std::uint32_t size, void* context);

/// Connects by the configuration of this index (noConfigIndex for none) and opens a session under this name.
/// Blocks for as long as the attempts take, but ends early once an exit is asked for. Nobody is notified of
/// messages, they are fetched by `SimConnect_CallDispatch`: `window`, `userMessage` and `event` must be
/// empty.
SimResult SimConnect_Open(SimHandle& handle, std::string_view name, void* window, std::uint32_t userMessage,
                          void* event, std::uint32_t configIndex);
/// Ends the session. Blocks for about a third of a second, during which what was sent still leaves.
SimResult SimConnect_Close(SimHandle handle);
/// Calls `callback` for each message that has arrived, in order, on the caller's thread; one thread at a
/// time. After an exception of the callback the next call goes on behind that message.
SimResult SimConnect_CallDispatch(SimHandle handle, SimDispatchProc callback, void* context);
SimResult SimConnect_GetLastSentPacketID(SimHandle handle, std::uint32_t& sendId);

SimResult SimConnect_MapClientEventToSimEvent(SimHandle handle, std::uint32_t eventId, std::string_view name);
SimResult SimConnect_TransmitClientEvent(SimHandle handle, std::uint32_t objectId, std::uint32_t eventId,
                                         std::uint32_t data, std::uint32_t group, std::uint32_t flags);
SimResult SimConnect_AddClientEventToNotificationGroup(SimHandle handle, std::uint32_t group,
                                                       std::uint32_t eventId, bool maskable);
SimResult SimConnect_SetNotificationGroupPriority(SimHandle handle, std::uint32_t group,
                                                  std::uint32_t priority);
SimResult SimConnect_AddToDataDefinition(SimHandle handle, std::uint32_t definition,
                                         std::string_view variable, std::string_view unit,
                                         std::uint32_t dataType, float epsilon, std::uint32_t datumId);
SimResult SimConnect_ClearDataDefinition(SimHandle handle, std::uint32_t definition);
SimResult SimConnect_RequestDataOnSimObject(SimHandle handle, std::uint32_t request, std::uint32_t definition,
                                            std::uint32_t objectId, std::uint32_t period,
                                            std::uint32_t flags = 0, std::uint32_t origin = 0,
                                            std::uint32_t interval = 0, std::uint32_t limit = 0);
SimResult SimConnect_RequestDataOnSimObjectType(SimHandle handle, std::uint32_t request,
                                                std::uint32_t definition, std::uint32_t radiusM,
                                                std::uint32_t objectType);
/// `unit` is the size of one element of `data`, whose size is the unit size times the array count; a count of
/// 0 stands for 1.
SimResult SimConnect_SetDataOnSimObject(SimHandle handle, std::uint32_t definition, std::uint32_t objectId,
                                        std::uint32_t flags, std::uint32_t arrayCount, std::uint32_t unitSize,
                                        const void* data);
SimResult SimConnect_SubscribeToSystemEvent(SimHandle handle, std::uint32_t eventId, std::string_view name);
SimResult SimConnect_UnsubscribeFromSystemEvent(SimHandle handle, std::uint32_t eventId);
SimResult SimConnect_AICreateNonATCAircraft(SimHandle handle, std::string_view title,
                                            std::string_view tailNumber, const InitPosition& position,
                                            std::uint32_t request);
SimResult SimConnect_AIReleaseControl(SimHandle handle, std::uint32_t objectId, std::uint32_t request);
SimResult SimConnect_AIRemoveObject(SimHandle handle, std::uint32_t objectId, std::uint32_t request);
SimResult SimConnect_AISetAircraftFlightPlan(SimHandle handle, std::uint32_t objectId, std::string_view path,
                                             std::uint32_t request);

/// Whether the session is known to have no connection any more, or never had one.
bool simConnectionLost(SimHandle handle);

/// Makes the connection of one attempt; nullptr when it fails. What it returns is connected by the client.
using TransportFactory = std::function<std::shared_ptr<SimTransport>(const TransportTarget& target)>;
/// Puts a factory in place of sockets and pipes, for tests; an empty one puts them back. No session open.
void setTransportForTest(TransportFactory factory);

} // namespace kst
