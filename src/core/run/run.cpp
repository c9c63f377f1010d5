#include "core/run/run.h"

#include "core/clock.h"
#include "core/display.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/run/mainloop.h"
#include "core/runstate.h"
#include "core/timeofweek.h"
#include "engine/tables.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "feed/realtrafficlink.h"
#include "simlink/session.h"

#include <thread>

namespace kst {

namespace {

using namespace std::chrono_literals;

std::jthread simThread;

constexpr int firstTrafficRounds = 150;

/// Waits until `ready()` holds, asking every `interval`. False when the run is to stop.
template <typename Ready>
bool waitUntil(std::chrono::milliseconds interval, Ready ready) {
    while (!ready()) {
        if (!sleepUnlessStopped(interval)) {
            return false;
        }
    }
    return !stopAsked();
}

bool userPositionKnown() {
    lf_requestUserPosition(userData);
    return positionKnown(userData.position());
}

/// Waits for a running flight and the user's aircraft in it. False when the run is to stop.
bool lf_waitForSim() {
    if (!waitUntil(100ms, [] { return simRunning.load(); })) {
        return false;
    }
    lf_requestUserOnGround();
    if (!waitUntil(500ms, [] { return userPositionKnown() && userGroundStateKnown(); })) {
        return false;
    }
    lf_requestUserInfo();
    return waitUntil(200ms, userPositionKnown);
}

void openFeedLink() {
    const bool linked = realTrafficHere && !AEROWINX;
    if (linked) {
        lf_openRealTraffic();
    }
    updateStatus(Band::Status, [linked](StatusValues& status) {
        status.rtConnected = !linked;
        status.rtLampDark = false;
    });
}

void connectFeedLink() {
    if (AEROWINX) {
        timeFollowing = false;
        return;
    }
    lf_waitForRealTraffic();
    if (timeFollowing) {
        lf_sendSimTime(simEpochSeconds);
    }
}

void waitForFirstTraffic() {
    for (int round = 0; round < firstTrafficRounds; ++round) {
        if (lastTimestamp != 0.0 || !sleepUnlessStopped(100ms)) {
            return;
        }
    }
    logLine("No traffic in this region?");
}

void runUntilStopped() {
    updateStatus(Band::Status, [](StatusValues& status) {
        status.rtConnected = false;
        status.simConnected = false;
    });
    reserveTables();
    lf_resetSimTables(P3D_VERSION);
    simThread = std::jthread(lf_simClient);
    if (!lf_waitForSim()) {
        return;
    }
    openFeedLink();
    if (stopAsked()) {
        return;
    }
    connectFeedLink();
    if (stopAsked()) {
        return;
    }
    setFeedOpen(false);
    startQnhReader();
    if (!sleepUnlessStopped(2s)) {
        return;
    }
    startTrafficReader();
    setReferencePosition(userData.position());
    lf_sendUserPosition();
    if (readerError) {
        showError("Reader error");
        gf_requestExit(ExitReason::SystemError, 0);
        return;
    }
    waitForFirstTraffic();
    if (stopAsked()) {
        return;
    }
    stampNow();
    mainLoop();
}

} // namespace

void lf_runKestrane() {
    try {
        runUntilStopped();
    } catch (const std::exception& error) {
        showError(error.what());
        lf_closeRealTraffic();
        updateStatus(Band::Status, [](StatusValues& status) { status.rtConnected = false; });
        gf_requestExit(ExitReason::SystemError, 0);
    }
}

void stopSimClient() {
    if (simThread.joinable()) {
        simThread.request_stop();
        simThread.join();
    }
}

} // namespace kst
