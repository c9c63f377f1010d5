#include "core/run/schedule.h"

#include "catalogue/matching.h"
#include "core/controlids.h"
#include "core/display.h"
#include "core/exit.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/run/exceptions.h"
#include "core/runstate.h"
#include "core/timeofweek.h"
#include "engine/pass.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "feed/readers.h"
#include "feed/realtrafficlink.h"
#include "parking/learning.h"
#include "parking/parkairportchoice.h"
#include "parking/parkairports.h"
#include "parking/population.h"
#include "parking/renewal.h"
#include "parking/reservedstand.h"
#include "parking/staticparking.h"

#include <cmath>

namespace kst {

namespace {

// Ticks between two runs of each periodic step.
constexpr std::uint32_t everyFifteen = 15;
constexpr std::uint32_t everyThirty = 30;
constexpr std::uint32_t parkAirportTicks = 16;
constexpr std::uint32_t readerTicks = 59;
constexpr std::uint32_t staticTwinTicks = 61;
constexpr std::uint32_t minuteTicks = 60;
constexpr std::uint32_t renewalTicks = 1200;
constexpr std::uint32_t hourTicks = 3600;
constexpr std::uint32_t dayTicks = 86400;
constexpr std::uint32_t renewalMinutes = 20;

// The automatic range, nautical miles.
constexpr double airportRangeNm = 10;
constexpr double middleRangeNm = 40;
constexpr double highRangeNm = 100;
constexpr double nearAirportNm = 7;
constexpr double farAirportNm = 37;
constexpr double noAirportNm = 10000;

double automaticRangeNm() {
    if (userOnGround) {
        return airportRangeNm;
    }
    if (userData.altitudeFt > AUTO_RANGE_ABOVE_HEIGHT) {
        return highRangeNm;
    }
    if (userData.altitudeFt > AIRPORT_HEIGHT) {
        return middleRangeNm;
    }
    const double distance = closestParkAirportNm().value_or(noAirportNm);
    if (distance <= nearAirportNm) {
        return airportRangeNm;
    }
    return distance < farAirportNm ? std::round(distance) + 3 : middleRangeNm;
}

/// The renewal of the static population takes two rounds: what is present is collected for 15 seconds between
/// them.
void serveParkRenewal() {
    if (!parkRenewalDue) {
        return;
    }
    if (!parkRenewalPhase) {
        parkRenewalPhase = true;
        parkingRunning = true;
        enableParkingControls(false);
        collectSeenTargets(true);
        return;
    }
    parkRenewalPhase = false;
    clearError();
    clearMessage();
    if (parkAirportLoaded()) {
        lf_parkingAdjustments();
    } else {
        parkingRunning = false;
        enableParkingControls(true);
    }
    parkRenewalDue = false;
}

void everyMinute(std::uint32_t tick) {
    updateStatus(Band::Control, [tick](StatusValues& status) {
        status.nextRenewalMinutes = renewalMinutes - tick / minuteTicks % renewalMinutes;
    });
    if (tick % renewalTicks == 0) {
        // Saved should the program end without a farewell; observations that stood back count again.
        reviveOptions();
        lf_saveLearnedChanges();
        lf_logUnmatchedTargets();
        if (parkAirport() && !INITIAL_LOAD_ONLY && !parkRenewalDue) {
            parkRenewalDue = true;
        }
    }
    if (tick % hourTicks == 0) {
        logCounts();
    }
    if (tick % dayTicks == 0) {
        tickCount = 0;
        gf_logMatchingSummary();
        liveryCache.clear();
    }
}

void lf_every30Seconds(std::uint32_t tick) {
    if (clearUnmatchedDue.exchange(false)) {
        unmatchedTargets.clear();
    }
    if (AUTO_RANGE) {
        lf_autoRange();
    }
    if (readerError) {
        showError("1001: RT error");
        gf_requestExit(ExitReason::SystemError, 0);
    }
    if (tick % minuteTicks == 0) {
        everyMinute(tick);
    }
}

void lf_every15Seconds(std::uint32_t tick) {
    serveParkRenewal();
    const StatusValues status = statusValues();
    constexpr int noData = 2;
    if (status.weatherStatus == noData || status.trafficStatus == noData) {
        lf_checkReadersAlive();
    }
    if (tick % everyThirty == 0) {
        runNamed("lf_every30Seconds", [tick] { lf_every30Seconds(tick); });
    }
}

void lf_every5Seconds(std::uint32_t tick) {
    setReferencePosition(userData.position());
    if (timeFollowing) {
        lf_sendSimTime(simEpochSeconds);
    }
    lf_clearUserStand();
    lf_serveReRead();
    runNamed("lf_every15Seconds", [tick] { lf_every15Seconds(tick); });
}

void showUserStand(LatLon position) {
    const std::string stand = lf_userStand(position);
    if (stand != statusValues().userStandText) {
        updateStatus(Band::Status, [&stand](StatusValues& status) { status.userStandText = stand; });
    }
}

} // namespace

void lf_everySecond() {
    ageMessage();
    lf_refreshCounts();
    stampNow();
    ++tickCount;
    lf_everySecondTraffic();
}

void lf_servePeriods(std::uint32_t tick) {
    if (tick % everyFifteen == 0) {
        runNamed("lf_every5Seconds", [tick] { lf_every5Seconds(tick); });
        return;
    }
    if (tick % parkAirportTicks == 0 && !parkRenewalPhase) {
        gf_checkForParkAirportUpdates(false);
    }
    if (tick % readerTicks == 0) {
        lf_checkReadersAlive();
    }
    if (tick % staticTwinTicks == 0 && !staticAcs.empty()) {
        lf_removeStaticTwins();
    }
}

void lf_serveReRead() {
    if (parkingRunning || !reReadParkDue.exchange(false)) {
        return;
    }
    std::string message;
    if (lf_reReadParkAirports(true, message)) {
        showMessage(message, true);
    }
    enableControl(control::ReRead, true);
    enableControl(control::Destination, true);
}

void lf_autoRange() {
    const double range = automaticRangeNm();
    const int before = LATERAL_RANGE;
    LATERAL_RANGE.set(static_cast<int>(range));
    if (LATERAL_RANGE != before) {
        showParameter(LATERAL_RANGE);
    }
    workingRangeNm = range;
    requestRangeM = range * metresPerNm;
    closeAirportMode = AUTO_RANGE && range == airportRangeNm;
}

void lf_serveWorkerRequest(const WorkerRequest& request) {
    switch (request.kind) {
    case WorkerRequest::Kind::StoreUserStand:
        lf_storeUserStand();
        break;
    case WorkerRequest::Kind::UserMoved:
        showUserStand(request.position);
        break;
    case WorkerRequest::Kind::NavLights:
        lf_applyNavLights();
        break;
    case WorkerRequest::Kind::ApplyLiveLimit:
        lf_trimLiveCount();
        break;
    case WorkerRequest::Kind::AutoRange:
        lf_autoRange();
        break;
    case WorkerRequest::Kind::SetDestination:
        lf_setDestination(request.code, request.position);
        break;
    }
}

} // namespace kst
