#include "core/run/mainloop.h"

#include "core/clock.h"
#include "core/display.h"
#include "core/log.h"
#include "core/reasoncounts.h"
#include "core/run/exceptions.h"
#include "core/run/schedule.h"
#include "core/runstate.h"
#include "core/timeofweek.h"
#include "core/workerinbox.h"
#include "engine/pass.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "feed/realtrafficlink.h"
#include "model/units.h"
#include "parking/parkairportchoice.h"
#include "parking/staticparking.h"
#include "platform/timerresolution.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"

#include <algorithm>
#include <vector>

namespace kst {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds passPeriod = 10ms;
constexpr std::int32_t passesPerRemoval = 10;
constexpr std::int32_t passesPerCreation = 50;
constexpr std::int32_t passesPerSecond = 100;
constexpr std::int32_t passesPerFastScan = 20;
constexpr int passesOfAPause = 100;

bool flightPaused = false;
int pauseCountdown = 0;

bool isMultiple(std::int32_t value, std::int32_t of) {
    return value % of == 0;
}

void serveInbox() {
    static std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
    for (const WorkerRequest& request : requests) {
        lf_serveWorkerRequest(request);
    }
}

/// Removals and creations go out slowly, so that a burst does not stall the simulator.
void serveObjectQueues(std::int32_t count) {
    if (!isMultiple(count, passesPerRemoval)) {
        return;
    }
    lf_serveRemovalQueue();
    if (isMultiple(count, passesPerCreation) && !lf_serveLiveCreateQueue()) {
        lf_serveStaticCreateQueue();
        lf_parkStatic();
    }
}

/// The working range, which may have shrunk, or the user moved on, while aircraft are being created.
double scanRangeM() {
    return std::max(requestRangeM.load(), creationsReachNm(userData.position()) * metresPerNm);
}

/// The engine's part of a pass.
void gf_updateAI() {
    const std::int32_t count = updateCount;
    gf_SimCommands();
    lf_updateAllLiveAc();
    serveObjectQueues(count);
    lf_handleUdpMessages();
    lf_queueNextSpawn();
    if ((isMultiple(count, passesPerSecond) || (flareActive && isMultiple(count, passesPerFastScan))) &&
        !latchedSimError) {
        lf_requestAircraftInRange(scanRangeM());
    }
    if (isMultiple(count, passesPerSecond)) {
        lf_sendUserPosition();
        lf_requestUserPosition(userData);
    }
    updateCount = count + 1;
}

/// A paused or stopped flight: the link to RealTraffic is kept alive, the aircraft stand still.
void lf_workSimNotRunning() {
    if (!flightPaused) {
        setFeedOpen(false);
        flightPaused = true;
        pauseCountdown = passesOfAPause;
        lf_emptyCommandBuffers();
        logLine(fmt::format("{} Flight not running", timeOfDay()));
    }
    gf_SimCommands();
    --pauseCountdown;
    if (pauseCountdown % passesOfAPause == 0) {
        lf_serveReRead();
        lf_sendUserPosition();
    }
    if (pauseCountdown <= 0) {
        pauseCountdown = passesOfAPause;
        lf_refreshCounts();
        stampNow();
    }
}

void resumeFlight() {
    if (flightPaused) {
        flightPaused = false;
        logLine(fmt::format("{} Flight resumed", timeOfDay()));
        setFeedOpen(true);
    }
}

} // namespace

void beginMainLoop() {
    gf_checkForParkAirportUpdates(true);
    lf_checkReadersAlive();
    tickCount = 0;
    flightPaused = false;
    stampNow();
    setFeedOpen(true);
}

bool lf_workKestrane() {
    if (stopAsked()) {
        return false;
    }
    serveInbox();
    if (!simRunning) {
        runNamed("lf_workSimNotRunning", lf_workSimNotRunning);
        return !stopAsked();
    }
    runNamed("gf_updateAI", gf_updateAI);
    bool due = true;
    if (!tickDue.compare_exchange_strong(due, false)) {
        return !stopAsked();
    }
    resumeFlight();
    runNamed("lf_everySecond", lf_everySecond);
    if (stopAsked()) {
        return false;
    }
    lf_servePeriods(tickCount);
    return true;
}

void mainLoop() {
    beginMainLoop();
    const platform::TimerResolution fineTimers;
    auto deadline = monotonicNow() + passPeriod;
    while (true) {
        const auto begun = monotonicNow();
        if (!lf_workKestrane()) {
            return;
        }
        const auto now = monotonicNow();
        countPass(static_cast<std::uint64_t>(std::max<std::int64_t>(
            0, std::chrono::duration_cast<std::chrono::microseconds>(now - begun).count())));
        if (deadline - now >= 1ms) {
            sleepUntil(deadline);
        }
        if (tickDue) {
            deadline = monotonicNow();
        }
        deadline += passPeriod;
    }
}

} // namespace kst
