#pragma once

// What the worker wants done to AI objects, and what the simulator answers. The worker fills buffers; the
// dispatch thread empties them at the simulator's frame event, so that each frame sees one consistent set.

#include "model/simobjects.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kst {

// ---- worker to simulator ----

/// Appends to the list of this tick's positions. Worker.
void gf_updateAircraft(const PositionUpdate& update);
/// Hands this tick's positions over to the frame handler and starts an empty list. When the frame handler is
/// at work and the frame rate is at most 50, this tick's positions are dropped instead; above 50 it waits.
/// Worker.
void lf_swapPositionBuffers();

/// Queues one client event for an object. Takes the session's lock.
void lf_queueEvent(const EventCmd& event);
/// Seven lights in this order.
struct Lights {
    bool nav, beacon, landing, taxi, strobes, logo, cabin;
};
void lf_setLights(std::uint32_t objectId, const Lights& lights);
void lf_setNavLights(std::uint32_t objectId, bool on);
void lf_setCabinLights(std::uint32_t objectId, bool on);
/// Sets spoilers handle and both throttle levers of the object, percent, at once.
void lf_setControls(std::uint32_t objectId, double spoilers, double throttle1, double throttle2);
/// Sends one client event at once, outside the frame. False when the client refuses it; a connection that is
/// known to be gone is no refusal.
bool lf_transmitEvent(std::uint32_t objectId, std::uint32_t event, std::uint32_t value);
/// Asks once for the sizes of a new object; a failure is logged and counted.
void lf_requestSizes(std::uint32_t objectId);
/// Hands a flight plan file to the object's AI pilot. False when refused.
bool lf_sendFlightPlan(std::uint32_t objectId, const std::string& path);

/// Into the buffers that the next frame serves. Worker.
void lf_createFromQueue(CreateRequest&& request);
void lf_queueRemoval(std::uint32_t objectId);
/// Empties both lists of positions: the flight is paused. Creations, removals and events wait for the next
/// frame. Worker.
void lf_emptyCommandBuffers();

// ---- queues of the engine, served by the worker's pass ----

void queueLiveCreation(CreateRequest&& request);
void queueStaticCreation(CreateRequest&& request);
void queueObjectRemoval(std::uint32_t objectId);
std::size_t liveCreateQueueSize();
std::size_t staticCreateQueueSize();
/// Takes a waiting creation back by its tail number, or by its identity. True if it was found.
bool takeBackStaticCreation(const std::string& tailNumber, std::uint32_t& hexid);
bool takeBackLiveCreation(std::uint32_t hexid);
/// Removes the AI object at the head of the removal queue, if there is one.
void lf_serveRemovalQueue();
/// Creates from the live queue; false if it was empty. The same for the static queue.
bool lf_serveLiveCreateQueue();
bool lf_serveStaticCreateQueue();
/// Sends what is left in the removal buffer at once, without a frame: a paused simulator may draw none. Exit
/// thread.
void lf_sendQueuedRemovals();
/// Moves all waiting removals into the frame's buffer: the end of a run.
void lf_flushRemovalQueue();

// ---- simulator to worker ----

/// Adds an answer. Dispatch thread.
void pushSimCommand(const SimCommand& command);
/// Takes all answers in order of arrival into `out`, cleared first. Worker.
void takeSimCommands(std::vector<SimCommand>& out);

/// Gives every buffer its working size. Worker, before the session starts.
void reserveObjectBuffers();

/// The `Frame` event: positions, events, creations, removals. Dispatch thread.
void lf_onFrame();

/// The client events that wait for the next frame, in order. Tests.
std::vector<EventCmd> queuedEventsForTest();

/// Empties every buffer and queue of this file. Exit thread, worker stopped.
void resetObjectCommands();
/// The part of it that empties the queues and the inbox.
void resetObjectQueues();

} // namespace kst
