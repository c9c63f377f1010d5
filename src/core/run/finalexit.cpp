#include "core/run/finalexit.h"

#include "catalogue/matching.h"
#include "core/clock.h"
#include "core/display.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/run/exceptions.h"
#include "core/run/reset.h"
#include "core/run/run.h"
#include "core/run/worker.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "feed/readers.h"
#include "feed/realtrafficlink.h"
#include "parking/staticparking.h"
#include "simlink/flightplans.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"

#include <mutex>
#include <thread>

namespace kst {

namespace {

using namespace std::chrono_literals;

std::mutex exitThreadLock;
std::thread exitThread;
std::atomic<bool> closeAsked{false};

/// Stops everything that runs beside the exit thread and may touch the tables.
void stopWorkAndFeed() {
    lf_cancelRealTrafficWait();
    stopReaders();
    waitForWorkerEnd();
    sleepFor(500ms);
}

void removeTraffic() {
    const bool sessionStands = simSessionStands();
    lf_removeAllLive(Reason::RunEnded);
    lf_removeAllStatic(Reason::RunEnded);
    if (sessionStands) {
        lf_flushRemovalQueue();
        sleepFor(1s);
        lf_sendQueuedRemovals();
    }
}

void takeLeave(ExitReason reason) {
    if (reason == ExitReason::SystemError) {
        sleepFor(5s);
    } else if (reason == ExitReason::UserClosed) {
        logLine(fmt::format("User closed {}", programName));
        flushLog();
        userClosed = true;
    }
}

/// What a final exit forgets and a restart keeps.
void settleForEnd() {
    DESTINATION.set("");
    saveParameter(DESTINATION);
    BLOCK_CALLSIGN.set("");
    saveParameter(BLOCK_CALLSIGN);
    gf_logMatchingSummary();
    lf_logUnmatchedTargets();
}

void clearScanRequests() {
    for (BoolParameter* parameter : {&SCAN_LIVERIES, &SCAN_AIRPORTS}) {
        parameter->set(false);
        saveParameter(*parameter);
        showParameter(*parameter);
    }
}

/// Counts the seconds down. Ends early when another exit is asked for, as by a close of the window.
void lf_restartCountdown(int seconds) {
    if (seconds <= 0) {
        return;
    }
    logLine(fmt::format("Restarting after {} seconds\n\n\n\n\n", seconds));
    for (int left = seconds; left > 0; --left) {
        showMessage(fmt::format("Restarting after {} second{}", left, left == 1 ? "" : "s"), false);
        if (!sleepUnlessStopped(1s)) {
            return;
        }
    }
}

void FinalExit(int seconds) {
    ExitReason reason = exitReason;
    logLine(fmt::format("Exiting: {}", exitReasonName(reason)));
    if (reason == ExitReason::Restart) {
        showMessage("Prepare for a restart ...", true);
    }
    stopWorkAndFeed();
    removeTraffic();
    lf_closeRealTraffic();
    if (closeAsked) {
        reason = ExitReason::UserClosed;
    }
    takeLeave(reason);
    stopSimClient();
    logCounts();
    gf_removeFlightPlanFolder();
    restartPending = isRestart(reason);
    if (!restartPending) {
        settleForEnd();
    }
    lf_closeAirport();
    if (reason != ExitReason::RestartInstallPath) {
        clearScanRequests();
    }
    resetForNextRun(restartPending);
    exitReason = ExitReason::NotYetSet;
    exitRequested = false;
    if (restartPending) {
        lf_restartCountdown(seconds);
    }
    if (exitRequested) {
        // A close during the countdown: its own exit thread carries on.
        return;
    }
    if (DisplaySink* sink = displaySink()) {
        restartPending ? sink->postStartWorker() : sink->postQuit();
    }
}

void startFinalExit(int seconds) {
    const std::lock_guard lock(exitThreadLock);
    if (exitThread.joinable()) {
        exitThread.join();
    }
    exitThread = std::thread([seconds] {
        try {
            FinalExit(seconds);
        } catch (...) {
            lf_reportException("FinalExit", std::current_exception());
            // Whatever failed, the process must be able to end.
            exitRequested = false;
            if (DisplaySink* sink = displaySink()) {
                sink->postQuit();
            }
        }
    });
}

} // namespace

void installExit() {
    setExitHandler(startFinalExit);
}

void requestClose() {
    closeAsked = true;
    showMessage(fmt::format("Close window button clicked, closing {} ...", programName), true);
    gf_requestExit(ExitReason::UserClosed, 0);
}

void joinExit() {
    const std::lock_guard lock(exitThreadLock);
    if (exitThread.joinable()) {
        exitThread.join();
    }
}

} // namespace kst
