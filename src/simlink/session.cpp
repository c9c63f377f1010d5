#include "simlink/session.h"

#include "core/clock.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/workerinbox.h"
#include "platform/timerresolution.h"
#include "simlink/objectcommands.h"
#include "simlink/sessionstate.h"

#include <exception>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::chrono::milliseconds openRetry{1000};
constexpr std::chrono::milliseconds dispatchPause{1};
constexpr std::chrono::milliseconds stopCheck{10};

/// Sleeps until the next attempt to open, but not beyond an exit or a stop request.
void waitForRetry(const std::stop_token& stopToken) {
    const auto deadline = monotonicNow() + openRetry;
    while (!stopAsked() && !stopToken.stop_requested() && monotonicNow() < deadline) {
        sleepFor(stopCheck);
    }
}

/// The session ends from the simulator's side: it quits, or the connection broke.
void endBySimulator() {
    simRunning = false;
    updateStatus(Band::Status, [](StatusValues& status) { status.simRunningShown = false; });
    lf_closeSimSession();
}

void runSession(const std::stop_token& stopToken) {
    const platform::TimerResolution fineTimer;
    while (!stopToken.stop_requested() && lf_pumpSimMessages()) {
        sleepFor(dispatchPause);
    }
}

void openAndRun(const std::stop_token& stopToken) {
    bool announced = false;
    while (!stopAsked() && !stopToken.stop_requested()) {
        if (!announced) {
            showMessage(fmt::format("Waiting for Prepar3Dv{} ...", gf_simVersionDigit()), true);
            announced = true;
        }
        if (lf_openSimSession()) {
            runSession(stopToken);
        } else {
            waitForRetry(stopToken);
        }
    }
}

void afterException() {
    simRunning = false;
    lf_closeSimSession();
}

/// Leaves a session that was not closed, without taking anything back and without an end of the run.
void dropSession() {
    SimHandle left = noSimHandle;
    {
        const std::lock_guard lock(simLock);
        left = simHandle.exchange(noSimHandle);
    }
    if (left != noSimHandle) {
        SimConnect_Close(left);
    }
}

} // namespace

void lf_simClient(const std::stop_token& stopToken) {
    try {
        openAndRun(stopToken);
    } catch (const UserErrorException& error) {
        // The user is to act: the window stays as it is.
        showError(error.what());
    } catch (const std::exception& error) {
        showError(error.what());
        afterException();
    } catch (...) {
        showError(fmt::format("Exception in {}", "SimClient"));
        afterException();
    }
    askWorker({.kind = WorkerRequest::Kind::StoreUserStand});
}

bool lf_openSimSession() {
    dropSession();
    SimHandle handle = noSimHandle;
    if (SimConnect_Open(handle, programName, nullptr, 0, nullptr, 0) != simOk) {
        return false;
    }
    simQuitSeen = false;
    simFrameCount = 0;
    {
        const std::lock_guard lock(simLock);
        simHandle = handle;
        createdOids.clear();
        expectedCreations.clear();
    }
    lf_setupSimData();
    return true;
}

bool lf_pumpSimMessages() {
    const SimHandle handle = simHandle;
    if (handle == noSimHandle) {
        return false;
    }
    const SimResult result = SimConnect_CallDispatch(handle, lf_simDispatch, nullptr);
    if (result == simOk && !simQuitSeen) {
        return true;
    }
    endBySimulator();
    return false;
}

void lf_closeSimSession() {
    updateStatus(Band::Status, [](StatusValues& status) { status.simConnected = false; });
    clearSimData();
    SimHandle handle = noSimHandle;
    {
        const std::lock_guard lock(simLock);
        handle = simHandle.exchange(noSimHandle);
    }
    if (SimConnect_Close(handle) != simOk) {
        logLine("SimConnect close failed!");
    }
    if (!exitRequested) {
        logLine(fmt::format("{} Flight Simulator no longer connected, {} will stop ...", timeOfDay(),
                            programName));
        gf_requestExit(ExitReason::SimClosed, 0);
    }
}

bool simSessionStands() {
    return !simConnectionLost(simHandle);
}

void lf_resetSimTables(int version) {
    simVersion = version;
    {
        const std::lock_guard lock(simLock);
        expectedCreations.reserve(simTableCapacity);
        createdOids.reserve(simTableCapacity);
    }
    reserveObjectBuffers();
    latchedSimError = false;
}

void resetSimSession() {
    dropSession();
    {
        const std::lock_guard lock(simLock);
        expectedCreations.clear();
        createdOids.clear();
    }
    {
        const std::lock_guard lock(userAircraftLock);
        userAircraft = {};
    }
    userObjectIdNow = firstUserObjectId;
    simFrameRateNow = 0.0F;
    simQuitSeen = false;
    resetSimRequestErrors();
}

} // namespace kst
