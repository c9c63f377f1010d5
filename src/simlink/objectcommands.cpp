#include "simlink/objectcommands.h"

#include "core/display.h"
#include "core/log.h"
#include "core/reasoncounts.h"
#include "model/simconnect.h"
#include "simlink/session.h"
#include "simlink/sessionstate.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

#include <fmt/format.h>

namespace kst {

namespace {

using namespace simconnect;

static_assert(sizeof(SimState) == 64, "sent as it stands: eight doubles in the order of the definition");

/// At this frame rate and below, a frame is too long to be waited for.
constexpr float slowFrameRate = 50.0F;

// Two lists: the worker fills one without a lock, the frame handler reads the other under `simLock`, under
// which they change places.
std::vector<PositionUpdate> positionBuffers[2];
std::size_t workerSide = 0;

// Under `simLock`.
std::vector<EventCmd> eventBuffer;
std::vector<CreateRequest> createBuffer;
std::vector<std::uint32_t> removeBuffer;

std::vector<PositionUpdate>& frameSide() {
    return positionBuffers[1 - workerSide];
}

/// The caller holds `simLock`.
void queueEventLocked(std::uint32_t objectId, std::uint32_t event, std::uint32_t value) {
    eventBuffer.push_back({objectId, event, value});
}

bool transmit(const EventCmd& command) {
    return SimConnect_TransmitClientEvent(simHandle, command.objectId, command.event, command.value,
                                          notificationGroup, 0) == simOk;
}

void releaseControl(std::uint32_t objectId) {
    SimConnect_AIReleaseControl(simHandle, objectId, RequestReleaseControl);
}

void sendPositions() {
    std::uint64_t sent = 0;
    for (const PositionUpdate& update : frameSide()) {
        if (update.objectId > userObjectIdNow &&
            SimConnect_SetDataOnSimObject(simHandle, DefinitionPosition, update.objectId, 0, 0,
                                          sizeof update.state, &update.state) == simOk) {
            ++sent;
        }
    }
    frameSide().clear();
    countHappening(Happening::PositionsSent, sent);
}

void sendEvents() {
    for (const EventCmd& command : eventBuffer) {
        // The object's own pilot works the flaps too, unless it is sent away before and after.
        const bool flaps = command.event == FlapsSet;
        if (flaps) {
            releaseControl(command.objectId);
        }
        if (!transmit(command)) {
            if (!simConnectionLost(simHandle)) {
                showMessage(fmt::format("SimConnect TransmitClientEvent: {} fails", command.event), true);
            }
        } else if (flaps) {
            releaseControl(command.objectId);
        }
    }
    eventBuffer.clear();
}

void lf_createAc(const CreateRequest& request) {
    if (SimConnect_AICreateNonATCAircraft(simHandle, request.title, request.tailNumber, request.initPos,
                                          RequestCreate) != simOk) {
        requestFailed(
            fmt::format("! Simcon call to create ac in sim failed, hexid:{}, liv: \"{}\", callsign: {}",
                        request.hexid, request.title, request.tailNumber));
        return;
    }
    std::uint32_t sendId = 0;
    if (SimConnect_GetLastSentPacketID(simHandle, sendId) != simOk) {
        logLine("GetLastSentPacketID");
        sendId = 0;
    }
    if (expectedCreations.size() >= mostUnanswered) {
        expectedCreations.erase(expectedCreations.begin());
    }
    expectedCreations.push_back({sendId, request.hexid, request.tailNumber});
}

void lf_removeObject(std::uint32_t objectId) {
    if (objectId <= userObjectIdNow) {
        logLine(fmt::format("{} Simconnect call to remove ac with objectid {}", timeOfDay(), objectId));
    } else if (SimConnect_AIRemoveObject(simHandle, objectId, RequestRemove) != simOk) {
        requestFailed(
            fmt::format("{}!Simconnect call to remove AI ac from sim failed, id {}?", timeOfDay(), objectId));
    } else {
        countHappening(Happening::Removed);
    }
}

/// The caller holds `simLock`.
void sendRemovals() {
    for (const std::uint32_t objectId : removeBuffer) {
        lf_removeObject(objectId);
    }
    removeBuffer.clear();
}

void emptyFrameBuffersLocked() {
    frameSide().clear();
    eventBuffer.clear();
    createBuffer.clear();
    removeBuffer.clear();
}

} // namespace

void gf_updateAircraft(const PositionUpdate& update) {
    try {
        positionBuffers[workerSide].push_back(update);
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "gf_updateAircraft", error.what()));
        throw;
    }
}

void lf_swapPositionBuffers() {
    std::unique_lock lock(simLock, std::try_to_lock);
    if (!lock.owns_lock()) {
        if (simFrameRate() <= slowFrameRate) {
            positionBuffers[workerSide].clear();
            return;
        }
        lock.lock();
    }
    workerSide = 1 - workerSide;
    positionBuffers[workerSide].clear();
}

void lf_queueEvent(const EventCmd& event) {
    const std::lock_guard lock(simLock);
    eventBuffer.push_back(event);
}

void lf_setLights(std::uint32_t objectId, const Lights& lights) {
    const std::lock_guard lock(simLock);
    queueEventLocked(objectId, NavLightsSet, lights.nav);
    queueEventLocked(objectId, BeaconLightsSet, lights.beacon);
    queueEventLocked(objectId, LandingLightsSet, lights.landing);
    queueEventLocked(objectId, TaxiLightsSet, lights.taxi);
    queueEventLocked(objectId, StrobesSet, lights.strobes);
    queueEventLocked(objectId, LogoLightsSet, lights.logo);
    queueEventLocked(objectId, CabinLightsSet, lights.cabin);
}

void lf_setNavLights(std::uint32_t objectId, bool on) {
    lf_queueEvent({objectId, NavLightsSet, on});
}

void lf_setCabinLights(std::uint32_t objectId, bool on) {
    lf_queueEvent({objectId, CabinLightsSet, on});
}

void lf_setControls(std::uint32_t objectId, double spoilers, double throttle1, double throttle2) {
    const double values[] = {spoilers, throttle1, throttle2};
    // Under the lock, so that no packet comes between a creation and the question for its send id.
    const std::lock_guard lock(simLock);
    SimConnect_SetDataOnSimObject(simHandle, DefinitionControls, objectId, 0, 0, sizeof values, values);
}

bool lf_transmitEvent(std::uint32_t objectId, std::uint32_t event, std::uint32_t value) {
    const std::lock_guard lock(simLock);
    return transmit({objectId, event, value}) || simConnectionLost(simHandle);
}

void lf_requestSizes(std::uint32_t objectId) {
    SimResult result = simOk;
    {
        const std::lock_guard lock(simLock);
        result = SimConnect_RequestDataOnSimObject(simHandle, RequestStaticCg, DefinitionSizes, objectId,
                                                   PeriodOnce);
    }
    if (result != simOk) {
        requestFailed("SimConnect request StaticCG fails");
    }
}

bool lf_sendFlightPlan(std::uint32_t objectId, const std::string& path) {
    const std::lock_guard lock(simLock);
    return SimConnect_AISetAircraftFlightPlan(simHandle, objectId, path, RequestFlightPlan) == simOk;
}

void lf_freezeAc(std::uint32_t objectId) {
    const std::lock_guard lock(simLock);
    releaseControl(objectId);
    queueEventLocked(objectId, FreezeLatitudeLongitudeSet, 1);
    queueEventLocked(objectId, FreezeAltitudeSet, 1);
    queueEventLocked(objectId, FreezeAttitudeSet, 1);
}

void lf_createFromQueue(CreateRequest&& request) {
    const std::lock_guard lock(simLock);
    createBuffer.push_back(std::move(request));
}

void lf_queueRemoval(std::uint32_t objectId) {
    const std::lock_guard lock(simLock);
    removeBuffer.push_back(objectId);
}

void lf_emptyCommandBuffers() {
    const std::lock_guard lock(simLock);
    positionBuffers[0].clear();
    positionBuffers[1].clear();
}

void lf_onFrame() {
    const std::unique_lock lock(simLock, std::try_to_lock);
    if (!lock.owns_lock()) {
        return; // The buffers wait for the next frame.
    }
    if (latchedSimError) {
        emptyFrameBuffersLocked();
        return;
    }
    sendPositions();
    sendEvents();
    for (const CreateRequest& request : createBuffer) {
        lf_createAc(request);
    }
    createBuffer.clear();
    sendRemovals();
}

void lf_sendQueuedRemovals() {
    const std::lock_guard lock(simLock);
    sendRemovals();
}

std::vector<EventCmd> queuedEventsForTest() {
    const std::lock_guard lock(simLock);
    return eventBuffer;
}

void reserveObjectBuffers() {
    const std::lock_guard lock(simLock);
    for (auto& buffer : positionBuffers) {
        buffer.reserve(simTableCapacity);
    }
    eventBuffer.reserve(simTableCapacity);
    createBuffer.reserve(simTableCapacity);
    removeBuffer.reserve(simTableCapacity);
}

void resetObjectCommands() {
    {
        const std::lock_guard lock(simLock);
        emptyFrameBuffersLocked();
        positionBuffers[workerSide].clear();
    }
    resetObjectQueues();
}

} // namespace kst
