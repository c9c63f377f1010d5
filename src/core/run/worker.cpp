#include "core/run/worker.h"

#include "catalogue/store.h"
#include "core/controlids.h"
#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/run/exceptions.h"
#include "core/run/run.h"
#include "core/run/schedule.h"
#include "core/run/startup.h"
#include "core/runstate.h"
#include "parking/parkairports.h"
#include "scanner/airportdirectory.h"
#include "scanner/archive.h"
#include "scanner/stockscenery.h"
#include "simlink/flightplans.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace kst {

namespace {

std::thread workerThread;
std::mutex workerLock;
std::condition_variable workerEnded;
bool workerRunning = false;

void workerBody() {
    try {
        lf_startUpKestrane();
    } catch (...) {
        lf_reportException("lf_startUpKestrane", std::current_exception());
    }
    const std::lock_guard lock(workerLock);
    workerRunning = false;
    workerEnded.notify_all();
}

void checkWorkingDirectory() {
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(folders::docs, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        throw std::filesystem::filesystem_error("docs", folders::docs, error);
    }
    if (!isFolder) {
        throw UserErrorException(99,
                                 fmt::format("{} must be run from the {} folder!", programName, programName));
    }
}

void rescanWhenStoreIsGone() {
    if (SCAN_LIVERIES || std::filesystem::exists(liveriesStorePath())) {
        return;
    }
    showMessage(fmt::format("File {} is gone, rescan liveries", liveriesStorePath().filename().string()),
                true);
    SCAN_LIVERIES.set(true);
    saveParameter(SCAN_LIVERIES);
    showParameter(SCAN_LIVERIES);
}

void scanStage() {
    gf_scanLiveries();
    if (stopAsked() || !SCAN_AIRPORTS) {
        return;
    }
    updateStatus(Band::Status, [](StatusValues& status) {
        status.simaddonCount = 0;
        status.thirdpCount = 0;
    });
    gf_scanAirports();
}

void applyDestination() {
    const std::string code = DESTINATION.get();
    if (code.empty()) {
        return;
    }
    if (const AirportEntry* const airport = gf_airportByCode(code)) {
        lf_setDestination(airport->code, airport->position());
    }
}

} // namespace

void startWorker() {
    joinWorker();
    {
        const std::lock_guard lock(workerLock);
        workerRunning = true;
    }
    workerThread = std::thread(workerBody);
}

void waitForWorkerEnd() {
    std::unique_lock lock(workerLock);
    workerEnded.wait(lock, [] { return !workerRunning; });
}

void joinWorker() {
    if (workerThread.joinable()) {
        workerThread.join();
    }
}

void lf_startUpKestrane() {
    checkWorkingDirectory();
    lf_initialise();
    lf_setStockAirportsPath();
    rescanWhenStoreIsGone();
    scanStage();
    if (stopAsked()) {
        return;
    }
    updateStatus(Band::Status, [](StatusValues& status) {
        status.thirdpCount = countFiles(folders::myThirdparty);
        status.simaddonCount = countFiles(folders::myOrbx);
    });
    lf_prepareFlightPlanFolder();
    lf_readMyParkAirports();
    enableControl(control::ReRead, true);
    applyDestination();
    if (DisplaySink* sink = displaySink()) {
        sink->applyAlwaysOnTop();
    }
    if (AUTO_RANGE) {
        lf_autoRange();
        enableControl(control::LateralRange, false);
    }
    lf_runKestrane();
}

} // namespace kst
