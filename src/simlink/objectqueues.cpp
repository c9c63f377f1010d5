// The queues between the engine and the frame's buffers, which the worker's pass serves at a pace that the
// simulator can follow, and the inbox of the simulator's answers.

#include "core/log.h"
#include "simlink/objectcommands.h"
#include "simlink/sessionstate.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace kst {

namespace {

// Worker only.
std::vector<CreateRequest> liveCreateQueue;
std::vector<CreateRequest> staticCreateQueue;
std::vector<std::uint32_t> removalQueue;

/// A worker that takes no answers, because it waits, does not let them grow beyond this.
constexpr std::size_t mostWaitingAnswers = 65536;

std::mutex simInboxLock;
std::vector<SimCommand> simInbox;

template <typename Test>
bool takeBack(std::vector<CreateRequest>& queue, Test test, std::uint32_t& hexid) {
    const auto found = std::find_if(queue.begin(), queue.end(), test);
    if (found == queue.end()) {
        return false;
    }
    hexid = found->hexid;
    queue.erase(found);
    return true;
}

bool serveCreateQueue(std::vector<CreateRequest>& queue) {
    if (queue.empty()) {
        return false;
    }
    lf_createFromQueue(std::move(queue.front()));
    queue.erase(queue.begin());
    return true;
}

} // namespace

void queueLiveCreation(CreateRequest&& request) {
    liveCreateQueue.push_back(std::move(request));
}

void queueStaticCreation(CreateRequest&& request) {
    staticCreateQueue.push_back(std::move(request));
}

void queueObjectRemoval(std::uint32_t objectId) {
    removalQueue.push_back(objectId);
}

std::size_t liveCreateQueueSize() {
    return liveCreateQueue.size();
}

std::size_t staticCreateQueueSize() {
    return staticCreateQueue.size();
}

bool takeBackStaticCreation(const std::string& tailNumber, std::uint32_t& hexid) {
    return takeBack(
        staticCreateQueue, [&](const CreateRequest& request) { return request.tailNumber == tailNumber; },
        hexid);
}

bool takeBackLiveCreation(std::uint32_t hexid) {
    return takeBack(
        liveCreateQueue, [&](const CreateRequest& request) { return request.hexid == hexid; }, hexid);
}

void lf_serveRemovalQueue() {
    if (!removalQueue.empty()) {
        lf_queueRemoval(removalQueue.front());
        removalQueue.erase(removalQueue.begin());
    }
}

bool lf_serveLiveCreateQueue() {
    return serveCreateQueue(liveCreateQueue);
}

bool lf_serveStaticCreateQueue() {
    return serveCreateQueue(staticCreateQueue);
}

void lf_flushRemovalQueue() {
    for (const std::uint32_t objectId : removalQueue) {
        lf_queueRemoval(objectId);
    }
    removalQueue.clear();
}

void pushSimCommand(const SimCommand& command) {
    const std::lock_guard lock(simInboxLock);
    if (simInbox.size() < mostWaitingAnswers) {
        simInbox.push_back(command);
    } else {
        logLine("! SimConnect: too many answers wait for the worker, one is dropped");
    }
}

void takeSimCommands(std::vector<SimCommand>& out) {
    out.clear();
    const std::lock_guard lock(simInboxLock);
    simInbox.swap(out);
}

void resetObjectQueues() {
    liveCreateQueue.clear();
    staticCreateQueue.clear();
    removalQueue.clear();
    const std::lock_guard lock(simInboxLock);
    simInbox.clear();
}

} // namespace kst
