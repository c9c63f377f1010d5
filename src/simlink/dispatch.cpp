// The messages of the simulator, one function for each kind. All of it runs on the dispatch thread.

#include "core/display.h"
#include "core/exceptions.h"
#include "core/exit.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/timeofweek.h"
#include "core/workerinbox.h"
#include "model/simconnect.h"
#include "simlink/dispatchmessage.h"
#include "simlink/objectcommands.h"
#include "simlink/sessionstate.h"
#include "simlink/useraircraft.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <string>

#include <fmt/format.h>

namespace kst {

namespace {

using namespace simconnect;

constexpr int framesPerRateSample = 30;
constexpr int restartAfterChangeSeconds = 30;

/// The world under the traffic has changed: everything is built anew.
void restartRun(std::string_view logText) {
    logLine(logText);
    gf_requestExit(ExitReason::Restart, restartAfterChangeSeconds);
}

void storeUserStand() {
    askWorker({.kind = WorkerRequest::Kind::StoreUserStand});
}

// ---- OPEN ----

bool isLetterDigitOrBlank(char c) {
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           whiteSpace.find(c) != std::string_view::npos;
}

/// Letters, digits and white space of the name.
std::string filteredName(std::string_view name) {
    std::string result;
    std::copy_if(name.begin(), name.end(), std::back_inserter(result), isLetterDigitOrBlank);
    return result;
}

/// Whether the simulator of this text is the one that the user has set up.
bool versionAccepted(const std::string& versionText) {
    const std::string path = SIM_INSTALL_PATH.get();
    for (const int version : {5, 6}) {
        const std::string digit = fmt::format("v{}", version);
        if (versionText.find(digit) != std::string::npos) {
            return simVersion == version || path.find(digit) != std::string::npos ||
                   path.find(fmt::format("V{}", version)) != std::string::npos;
        }
    }
    return false;
}

void lf_connected(const Message& message) {
    constexpr int wrongSimulator = 78;
    const std::string_view rawName = message.text(12, 256);
    if (rawName.empty()) {
        logLine("! Simulator name empty?");
        return;
    }
    const std::string name = filteredName(rawName);
    updateStatus(Band::Status, [](StatusValues& status) { status.simConnected = true; });
    if (name == "KittyHawk" || name == "SunRise") {
        throw UserErrorException(wrongSimulator, name + ", (MSFS) not being P3D connects ... ?");
    }
    const std::string text = fmt::format("{} ({}.{}.{}.{})", name, message.u32(268), message.u32(272),
                                         message.u32(276), message.u32(280));
    logLine(fmt::format("{} connected", text));
    updateStatus(Band::Status, [&](StatusValues& status) { status.simText = text; });
    if (!versionAccepted(text)) {
        enableControl(control::AllInstallPath, true);
        throw UserErrorException(wrongSimulator,
                                 fmt::format("wrong P3D version \"{}\" connects ... ?", text));
    }
    clearMessage();
}

// ---- EXCEPTION ----

/// The simulator refused the creation of this send id: the record that asked for it is told.
void creationRefused(std::uint32_t sendId) {
    std::uint32_t hexid = 0;
    {
        const std::lock_guard lock(simLock);
        const auto found = std::find_if(expectedCreations.begin(), expectedCreations.end(),
                                        [&](const ExpectedCreation& e) { return e.sendId == sendId; });
        if (found == expectedCreations.end()) {
            return;
        }
        hexid = found->hexid;
        std::swap(*found, expectedCreations.back());
        expectedCreations.pop_back();
    }
    pushSimCommand({.objectId = 0, .id = hexid, .kind = SimCommand::Kind::CreationRefused});
}

void lf_onException(const Message& message) {
    constexpr int versionMismatch = 95;
    const std::uint32_t exception = message.u32(12);
    switch (exception) {
    case ExceptionUnrecognizedId:
        if (positionKnown(lastUserPosition())) {
            logLine("SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID");
        }
        break;
    case ExceptionVersionMismatch:
        throw UserErrorException(versionMismatch,
                                 fmt::format("Simconnect Version Mismatch, dwindex: {} ", message.u32(20)));
    case ExceptionTooManyObjects:
        showMessage("SimConnect: too many objects (max 1000)", true);
        break;
    case ExceptionCreateObjectFailed:
        creationRefused(message.u32(16));
        break;
    case ExceptionLoadFlightplanFailed:
        logLine("Simconnect Exception: load flight plan failed");
        break;
    default:
        logLine(fmt::format("SIMCON EXCEP {}", exception));
    }
}

// ---- EVENT and its kin ----

void lf_onEvent(const Message& message) {
    switch (message.u32(16)) {
    case EventSim: {
        const bool running = message.u32(20) == 1;
        simRunning = running;
        updateStatus(Band::Status, [&](StatusValues& status) { status.simRunningShown = running; });
        break;
    }
    case EventPositionChanged:
        restartRun("User ac position changed");
        break;
    case EventFlightLoaded:
        storeUserStand();
        restartRun("Flight loaded");
        break;
    default:
        break;
    }
}

void onAddRemove(const Message& message) {
    const std::uint32_t objectId = message.u32(20);
    if (message.u32(24) != ObjectAircraft) {
        return;
    }
    if (message.u32(16) == EventObjectAdded && objectId > userObjectIdNow) {
        const std::lock_guard lock(simLock);
        if (createdOids.size() >= mostUnanswered) {
            createdOids.erase(createdOids.begin());
        }
        createdOids.push_back(objectId);
    } else if (message.u32(16) == EventObjectRemoved) {
        {
            // The simulator may give the number to another object before any scan has shown this one.
            const std::lock_guard lock(simLock);
            std::erase(createdOids, objectId);
        }
        pushSimCommand({.objectId = objectId, .kind = SimCommand::Kind::Removed});
    }
}

void onFrame(const Message& message) {
    lf_onFrame();
    if (++simFrameCount % framesPerRateSample == 0) {
        simFrameRateNow = message.f32(24);
    }
}

// ---- SIMOBJECT_DATA ----

constexpr std::size_t dataOffset = 40;

/// Day and year as the simulator can mean them; anything else is no time.
std::optional<std::int64_t> epochOf(const UserData& data) {
    const bool sound = data.zuluYear >= 1900 && data.zuluYear <= 3000 && data.zuluDayOfYear >= 1 &&
                       data.zuluDayOfYear <= 366 && data.zuluSeconds >= 0 && data.zuluSeconds <= 86400;
    if (!sound) {
        return std::nullopt;
    }
    return epochSecondsOfZulu(static_cast<int>(data.zuluYear), static_cast<int>(data.zuluDayOfYear),
                              data.zuluSeconds);
}

UserData userDataOf(const Message& message) {
    UserData data;
    double* const reals[] = {&data.latitude, &data.longitude,  &data.pitch,       &data.bank,
                             &data.heading,  &data.altitudeFt, &data.heightAglFt, &data.groundSpeedKt};
    double* const integers[] = {&data.zuluSeconds, &data.zuluDayOfYear, &data.zuluYear, &data.lightStates};
    std::size_t offset = dataOffset;
    for (double* value : reals) {
        *value = message.f64(offset);
        offset += 8;
    }
    for (double* value : integers) {
        *value = static_cast<double>(message.i64(offset));
        offset += 8;
    }
    return data;
}

bool plausible(const UserData& data) {
    return std::abs(data.latitude) <= 90.0 && std::abs(data.longitude) <= 180.0 &&
           std::isfinite(data.pitch) && std::isfinite(data.bank) && std::isfinite(data.heading) &&
           std::isfinite(data.altitudeFt) && std::isfinite(data.heightAglFt) &&
           std::isfinite(data.groundSpeedKt);
}

void onUserPosition(const Message& message) {
    constexpr double teleportNm = 10.0;
    UserData data = userDataOf(message);
    if (!plausible(data)) {
        logLine("! SimConnect: user position out of range");
        return;
    }
    data.altitudeFt = std::max(data.altitudeFt, 0.0);
    LatLon before;
    {
        const std::lock_guard lock(userAircraftLock);
        before = userAircraft.lastPosition;
        userAircraft.snapshot = data;
        userAircraft.lastPosition = data.position();
    }
    if (positionKnown(before) && gf_distanceNm(before, data.position()) > teleportNm) {
        restartRun("Teleport");
    }
    askWorker({.kind = WorkerRequest::Kind::UserMoved, .position = data.position()});
    if (timeFollowing) {
        if (const auto seconds = epochOf(data)) {
            simEpochSeconds = *seconds;
        }
    }
    userObjectIdNow = message.u32(16);
}

void lf_onSimObjectData(const Message& message) {
    switch (message.u32(12)) {
    case RequestStaticCg:
        if (message.holds(dataOffset + 16)) {
            pushSimCommand({.objectId = message.u32(16),
                            .kind = SimCommand::Kind::Sizes,
                            .value1 = message.f64(dataOffset),
                            .value2 = message.f64(dataOffset + 8)});
        }
        break;
    case RequestUserTitle:
        lf_onTitle(message.text(dataOffset, message.size()));
        break;
    case RequestUserModel:
        if (message.holds(dataOffset + 32)) {
            lf_onModel(message.text(dataOffset, 32));
        }
        break;
    case RequestUserOnGround:
        if (message.holds(dataOffset + 8)) {
            if (positionKnown(lastUserPosition())) {
                userOnGround = message.i64(dataOffset) != 0;
                userGroundKnown = true;
            }
            tickDue = true;
        }
        break;
    case RequestUserPosition:
        if (message.holds(dataOffset + 96)) {
            onUserPosition(message);
        }
        break;
    default:
        break;
    }
}

// ---- SIMOBJECT_DATA_BYTYPE: the aircraft scan ----

struct ScanReply {
    std::uint32_t objectId;
    double heightAglFt;
    double groundAltFt;
    bool onGround;
    std::string_view atcId;
};

/// Takes the object out of the list of those that no scan has shown yet. False if it is not in it.
bool takeCreated(std::uint32_t objectId) {
    const std::lock_guard lock(simLock);
    const auto found = std::find(createdOids.begin(), createdOids.end(), objectId);
    if (found == createdOids.end()) {
        return false;
    }
    *found = createdOids.back();
    createdOids.pop_back();
    return true;
}

/// The target whose creation was asked for under this tail number.
std::optional<std::uint32_t> takeExpected(std::string_view tailNumber) {
    const std::lock_guard lock(simLock);
    const auto found = std::find_if(expectedCreations.begin(), expectedCreations.end(),
                                    [&](const ExpectedCreation& e) { return e.tailNumber == tailNumber; });
    if (tailNumber.empty() || found == expectedCreations.end()) {
        return std::nullopt;
    }
    const std::uint32_t hexid = found->hexid;
    std::swap(*found, expectedCreations.back());
    expectedCreations.pop_back();
    return hexid;
}

void onNewObject(const ScanReply& reply) {
    constexpr std::uint32_t largestStaticHexid = 10000;
    const std::optional<std::uint32_t> hexid = takeExpected(reply.atcId);
    if (!hexid) {
        showMessage(fmt::format("just spawned, but not by {}, oid: {}, callsign \"{}\", altaboveGnd:{:.0f} "
                                "ft, onground:{}, gnd_alt:{:.0f} ft ",
                                programName, reply.objectId, reply.atcId, reply.heightAglFt,
                                reply.onGround ? 1 : 0, reply.groundAltFt),
                    true);
        return;
    }
    lf_freezeAc(reply.objectId);
    const bool isStatic = *hexid <= largestStaticHexid;
    pushSimCommand({.objectId = reply.objectId,
                    .id = *hexid,
                    .kind = isStatic ? SimCommand::Kind::StaticCreated : SimCommand::Kind::LiveCreated,
                    .value2 = isStatic ? 0.0 : reply.heightAglFt});
}

void lf_onByType(const Message& message) {
    constexpr double reportCeilingFt = 2500.0;
    constexpr std::size_t scanSize = 56;
    if (message.u32(12) != RequestAircraftScan || message.u32(16) <= userObjectIdNow ||
        !message.holds(dataOffset + scanSize)) {
        return;
    }
    const ScanReply reply{message.u32(16), message.f64(dataOffset), message.f64(dataOffset + 8),
                          message.i64(dataOffset + 16) != 0, message.text(dataOffset + 24, 32)};
    if (!std::isfinite(reply.heightAglFt) || !std::isfinite(reply.groundAltFt)) {
        return;
    }
    if (takeCreated(reply.objectId)) {
        onNewObject(reply);
    } else if (reply.heightAglFt <= reportCeilingFt && !reply.atcId.ends_with('*')) {
        pushSimCommand({.objectId = reply.objectId,
                        .id = reply.onGround ? 1U : 0U,
                        .kind = SimCommand::Kind::HeightReport,
                        .value1 = reply.groundAltFt,
                        .value2 = reply.heightAglFt});
    }
}

// ---- all kinds ----

struct Handler {
    std::uint32_t id;
    std::size_t size; ///< the shortest message of this kind
    void (*handle)(const Message& message);
};

constexpr Handler handlers[] = {
    {RecvException, 24, lf_onException},
    {RecvOpen, 308, lf_connected},
    {RecvQuit, 12,
     [](const Message&) {
         simRunning = false;
         simQuitSeen = true;
     }},
    {RecvEvent, 24, lf_onEvent},
    {RecvEventObjectAddRemove, 28, onAddRemove},
    {RecvEventFilename, 288,
     [](const Message&) {
         storeUserStand();
         restartRun("New file loaded");
     }},
    {RecvEventFrame, 32, onFrame},
    {RecvSimobjectData, dataOffset, lf_onSimObjectData},
    {RecvSimobjectDataByType, dataOffset, lf_onByType},
    {RecvAssignedObjectId, 12, [](const Message&) {}},
    {RecvClientData, 12, [](const Message&) {}},
};

} // namespace

void lf_simDispatch(const void* data, std::uint32_t size, void*) {
    const Message message(data, size);
    if (!message.holds(Message::headSize)) {
        return;
    }
    const std::uint32_t id = message.id();
    const auto* const handler =
        std::find_if(std::begin(handlers), std::end(handlers), [&](const Handler& h) { return h.id == id; });
    if (handler == std::end(handlers)) {
        logLine(fmt::format("! Unknown Dispatch dwID {}", id));
    } else if (message.holds(handler->size)) {
        handler->handle(message);
    }
}

} // namespace kst
