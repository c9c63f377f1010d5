#include "parking/staticparking.h"

#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "core/controlids.h"
#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/parkinglink.h"
#include "engine/pass.h"
#include "engine/removal.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/airportfile.h"
#include "parking/learning.h"
#include "parking/parkairports.h"
#include "parking/parkrequests.h"
#include "parking/population.h"
#include "parking/reservedstand.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::uint32_t staticHexidLimit = 10000;

std::uint32_t staticHexid = 0;

int percentOfStands(std::size_t count) {
    const std::size_t stands = parkPositions().size();
    return stands > 0 ? static_cast<int>(
                            std::lround(100.0 * static_cast<double>(count) / static_cast<double>(stands)))
                      : 0;
}

void logNoParking(const ParkRequest& request, std::string_view why) {
    if (LOG) {
        logLine(fmt::format("{:8}: no static parking for {}, {}", standName(request.sid), request.cs, why));
    }
}

bool isNeighbour(const ParkPos* stand, std::uint32_t sid) {
    return stand != nullptr && sid != 0 &&
           std::ranges::find(stand->neighbours, sid) != stand->neighbours.end();
}

/// Whether somebody stands on the stand or too near to it. Logged.
bool isTaken(const ParkRequest& request, const ParkPos* stand) {
    const auto onStand = [](const LiveAc& ac) {
        return ac.phase == AcPhase::Parking || ac.phase == AcPhase::Parked;
    };
    for (const LiveAc& ac : liveAcs) {
        if (onStand(ac) && ac.sid == request.sid) {
            logNoParking(request, fmt::format("live aircraft {} standing here", ac.callsign));
            return true;
        }
    }
    for (const LiveAc& ac : liveAcs) {
        if (onStand(ac) && isNeighbour(stand, ac.sid)) {
            logNoParking(request, fmt::format("live aircraft {} is adjacent at {}, possibly colliding",
                                              ac.callsign, standName(ac.sid)));
            return true;
        }
    }
    for (const StaticAc& ac : staticAcs) {
        if (isNeighbour(stand, ac.sid)) {
            logNoParking(request, fmt::format("static aircraft {} is adjacent at {}, possibly colliding",
                                              ac.callsign, standName(ac.sid)));
            return true;
        }
    }
    return false;
}

/// Replies to a creation are told apart by tail number: no two objects may share one.
bool isNameInUse(std::string_view callsign) {
    return std::ranges::any_of(staticAcs, [&](const StaticAc& ac) {
        return ac.callsign == callsign && ac.state != AcState::Removing;
    });
}

/// Marks the callsign of a static aircraft with a star.
std::string starred(std::string callsign) {
    callsign.erase(callsign.find_last_not_of('_') + 1);
    if (!callsign.ends_with('*')) {
        callsign += '*';
    }
    return callsign;
}

/// Operator, number, star: for an aircraft without callsign.
std::string numberedCallsign(const std::string& airline) {
    std::uint32_t number = staticHexid;
    std::string callsign;
    do {
        callsign = fmt::format("{}{}*", airline, number++);
    } while (isNameInUse(callsign));
    return callsign;
}

StaticAc staticAircraft(const ParkRequest& request, const ParkPos& stand) {
    StaticAc ac;
    ac.hexid = staticHexid;
    ac.airline = request.airl;
    ac.acType = request.type;
    ac.regcode = request.reg;
    ac.primaryCallsign = request.cs;
    ac.coupledCallsign = request.cs2;
    ac.callsign = request.cs.empty() ? numberedCallsign(request.airl)
                                     : starred(request.inbound ? request.cs : request.cs2);
    ac.category = gf_category(ac.acType);
    ac.halfSpanNm = gf_halfWingSpan(ac.acType);
    ac.standLat = stand.latitude;
    ac.standLon = stand.longitude;
    ac.standHeading = stand.heading;
    ac.sid = stand.sid;
    ac.standCargo = stand.cargo;
    ac.parkStamp = nowDayHH().back(static_cast<int>(request.offset));
    return ac;
}

void requestCreation(const StaticAc& ac) {
    CreateRequest request;
    request.initPos.latitude = ac.standLat;
    request.initPos.longitude = ac.standLon;
    request.initPos.heading = ac.standHeading * degPerRad;
    request.initPos.onGround = 1;
    request.tailNumber = ac.callsign;
    request.title = ac.liveryTitle;
    request.hexid = ac.hexid;
    queueStaticCreation(std::move(request));
}

void parkRequested(const ParkRequest& request) {
    const ParkPos* stand = standBySid(request.sid);
    if (isTaken(request, stand)) {
        return;
    }
    if (stand == nullptr) {
        logLine(fmt::format("stand with id {} not found", request.sid));
        return;
    }
    staticHexid = (staticHexid + 1) % staticHexidLimit;
    StaticAc ac = staticAircraft(request, *stand);
    if (isNameInUse(ac.callsign) || !gf_matchStaticLivery(ac, *stand)) {
        return;
    }
    ac.state = AcState::Requested;
    requestCreation(ac);
    staticAcs.push_back(std::move(ac));
}

/// The stand's last occupant has not left the simulator yet.
bool isBeingVacated(std::uint32_t sid) {
    return std::ranges::any_of(
        staticAcs, [sid](const StaticAc& ac) { return ac.sid == sid && ac.state == AcState::Removing; });
}

/// Takes the live aircraft that belong to the ground from their stands: the feed brings them back.
void removeLiveFromStands() {
    for (std::size_t i = 0; i < liveAcs.size();) {
        LiveAc& ac = liveAcs[i];
        const bool grounded =
            ac.phase != AcPhase::Air && ac.phase != AcPhase::Parking && ac.phase != AcPhase::Unknown;
        if (grounded) {
            releaseStand(ac);
            ac.standLat = ac.standLon = ac.standHeading = 0.0;
            ac.sid = 0;
            ac.standCargo = false;
            const bool awaitsObject = ac.state == AcState::Requested && ac.objectId == 0;
            if (awaitsObject && lf_cancelLiveCreation(ac, Reason::ParkingClosed)) {
                continue;
            }
            if (!awaitsObject) {
                lf_removeAc(ac, Reason::ParkingClosed);
            }
        }
        ++i;
    }
}

void clearParkStatus() {
    updateStatus(Band::Park, [](StatusValues& status) {
        status.airportCode.clear();
        status.airportName.clear();
        status.publisherText.clear();
        status.qualityText.clear();
        status.headStand.clear();
        status.trafficWeek = 0;
        status.handmadeShown = false;
        status.parkFileOk = false;
        status.reservedStand.clear();
        status.reservedStandOk = false;
        status.standsShown = 0;
        status.liveFitShown = status.staticFitShown = -1.0F;
        status.maxParkShown = status.maxParkPercentShown = 0;
        status.updatesShown = 0;
        status.staticBusyShown = false;
    });
}

} // namespace

std::string lf_readParkedFile() {
    const auto airport = parkAirport();
    const std::string code = airport ? airport->code : std::string();
    clearLoadedAirport();
    const std::string location = gf_locateApf(code);
    if (location.empty()) {
        return fmt::format("{} {} not found", "lf_readParkedFile", code);
    }
    if (location.find("unknown") != std::string::npos) {
        return fmt::format("{} {} has publisher:{}, {}", "lf_readParkedFile", code, "unknown", location);
    }
    if (std::string error = gf_readApf(location); !error.empty()) {
        return error;
    }
    lf_applyLearnSoftRule();
    if (userGroundKnown) {
        noteUserStand(code, airport->position, lf_userStand(userData.position()));
    }
    parkPositions().shrink_to_fit();
    updateStatus(Band::Park, [](StatusValues& status) { status.parkFileOk = true; });
    chooseReservedStand();
    return {};
}

void lf_initialParking() {
    const DayHH now = nowDayHH();
    logPopulationTime(now);
    showMessage(
        "Making changes to airport parking parameters is disabled while static parking takes place ...",
        true);
    takeLiveCallsigns();
    clearPopulation();
    for (ParkPos& stand : parkPositions()) {
        stand.allocated = stand.reserved = stand.blocked = false;
    }
    lf_markReservedStands();
    updateStatus(Band::Park, [](StatusValues& status) { status.staticBusyShown = false; });
    const int wanted = lf_wantedParkCount();
    if (wanted > 0) {
        lf_fillPositions(now, wanted, 0);
    }
    std::ranges::stable_sort(parkQueue, {}, &ParkRequest::offset);
    if (parkQueue.size() > static_cast<std::size_t>(wanted)) {
        parkQueue.resize(static_cast<std::size_t>(wanted));
    }
    if (parkQueue.empty()) {
        logLine("no parking positions found");
        parkingRunning = false;
        enableParkingControls(true);
        return;
    }
    logLine(fmt::format("{} positions ({}% vs wanted {}%, with Max fit={} hours)\n", parkQueue.size(),
                        percentOfStands(parkQueue.size()), parking_percentage.get(),
                        formatHours(static_cast<double>(MAX_FIT_FL.get()))));
    std::ranges::stable_sort(parkQueue, std::greater{}, &ParkRequest::offset);
    parkingRunning = true;
    enableParkingControls(false);
}

void lf_parkStatic() {
    if (parkQueue.empty() || liveCreateQueueSize() > 0 || staticCreateQueueSize() > 0) {
        return;
    }
    try {
        const ParkRequest request = std::move(parkQueue.back());
        parkQueue.pop_back();
        if (isBeingVacated(request.sid)) {
            parkQueue.insert(parkQueue.begin(), request);
        } else {
            parkRequested(request);
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "lf_parkStatic", error.what()));
    }
}

void lf_dropParkRequests(std::uint32_t sid) {
    std::erase_if(parkQueue, [sid](const ParkRequest& request) { return request.sid == sid; });
}

int lf_wantedParkCount() {
    const int custom = CUSTOM_PARKING_PERCENTAGE;
    const int share = custom >= 0 ? custom : static_cast<int>(parking_percentage);
    const int stands = static_cast<int>(parkPositions().size());
    int wanted = 1;
    if (stands > 3 || (stands > 1 && share >= 50)) {
        wanted = static_cast<int>(std::lround(share * stands / 100.0));
    }
    int shownPercent = share;
    if (CUSTOM_MAX_PARK != CUSTOM_MAX_PARK.defaultValue()) {
        wanted = std::min(wanted, CUSTOM_MAX_PARK.get());
        shownPercent = stands > 0 ? static_cast<int>(std::lround(wanted * 100.0 / stands)) : 0;
    }
    updateStatus(Band::Park, [&](StatusValues& status) {
        status.maxParkShown = wanted;
        status.maxParkPercentShown = shownPercent;
    });
    return wanted;
}

void lf_removeAllParked() {
    parkQueue.clear();
    lf_removeAllStatic(Reason::ParkingClosed);
    removeLiveFromStands();
    lf_closeAirport();
    // The learned file may have set a limit of its own.
    if (const std::string stored = storedParameterText(MAX_LIVE.name()); !stored.empty()) {
        MAX_LIVE.setFromText(stored);
        showParameter(MAX_LIVE);
    }
}

void lf_closeAirport() {
    // An observation that had to stand back in this half hour is as good as any other.
    reviveOptions();
    lf_saveLearnedChanges();
    clearLoadedAirport();
    clearStandChanges();
    clearPopulation();
    resetStandSelection();
    resetReservedStand();
    setParkAirport(std::nullopt);
    clearParkStatus();
    enableControl(control::FlushStatic, false);
    enableControl(control::ParkingPercentage, false);
}

bool parkAirportLoaded() {
    return airportLoaded() && !parkPositions().empty();
}

void enableParkingControls(bool enabled) {
    for (const int id :
         {control::ParkingPercentage, control::InitialLoadOnly, control::ParkFake, control::ParkSoft,
          control::CustomMaxPark, control::MaxFitFl, control::Week, control::FlushStatic}) {
        enableControl(id, enabled);
    }
    // The list is not read anew while it is headed by the destination.
    enableControl(control::ReRead, enabled && DESTINATION.empty());
}

} // namespace kst
