// The requests of the worker to the simulator, and what the session tells the rest of the program.

#include "core/display.h"
#include "core/exit.h"
#include "core/log.h"
#include "model/simconnect.h"
#include "simlink/session.h"
#include "simlink/sessionstate.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

namespace {

using namespace simconnect;

constexpr int errorsUntilRestart = 3;
constexpr int restartSeconds = 10;
/// The longest radius that the simulator is asked for, metres.
constexpr double mostRadiusM = 1e6;

std::atomic<int> requestErrors{0};

/// A request about the user's own object.
bool requestUser(std::uint32_t request, std::uint32_t definition, std::uint32_t period,
                 std::string_view failure) {
    SimResult result = simOk;
    {
        const std::lock_guard lock(simLock);
        result = SimConnect_RequestDataOnSimObject(simHandle, request, definition, objectIdUser, period);
    }
    if (result != simOk) {
        requestFailed(failure);
    }
    return result == simOk;
}

} // namespace

void lf_simRequestError() {
    if (++requestErrors == errorsUntilRestart) {
        showMessage(fmt::format("SimConnect request error {}, see Log.txt", errorsUntilRestart), true);
        latchedSimError = true;
        gf_requestExit(ExitReason::Restart, restartSeconds);
    }
}

void resetSimRequestErrors() {
    requestErrors = 0;
}

void requestFailed(std::string_view logText) {
    if (simConnectionLost(simHandle)) {
        return;
    }
    logLine(logText);
    lf_simRequestError();
}

bool lf_requestUserOnGround() {
    return requestUser(RequestUserOnGround, DefinitionOnGround, PeriodSecond,
                       "SimConnect request ac gnd/air fails");
}

void lf_requestUserInfo() {
    requestUser(RequestUserTitle, DefinitionTitle, PeriodOnce, "SimConnect request user ac title fails");
    requestUser(RequestUserModel, DefinitionModel, PeriodOnce, "SimConnect reques user ac model fails");
}

void lf_requestUserPosition(UserData& out) {
    if (!latchedSimError) {
        requestUser(RequestUserPosition, DefinitionUser, PeriodOnce,
                    "SimConnect request user ac position fails");
    }
    const std::lock_guard lock(userAircraftLock);
    out = userAircraft.snapshot;
}

void lf_requestAircraftInRange(double metres) {
    if (latchedSimError) {
        return;
    }
    const auto radiusM = static_cast<std::uint32_t>(std::clamp(metres, 0.0, mostRadiusM));
    SimResult result = simOk;
    {
        const std::lock_guard lock(simLock);
        result = SimConnect_RequestDataOnSimObjectType(simHandle, RequestAircraftScan, DefinitionScan,
                                                       radiusM, ObjectAircraft);
    }
    if (result != simOk) {
        requestFailed("SimConnect request ac within range fails");
    }
}

bool userGroundStateKnown() {
    return userGroundKnown && positionKnown(lastUserPosition());
}

std::uint32_t userObjectId() {
    return userObjectIdNow;
}

std::optional<double> userHalfSpanNm() {
    const std::lock_guard lock(userAircraftLock);
    return userAircraft.halfSpanNm;
}

Category userCategory() {
    const std::lock_guard lock(userAircraftLock);
    return userAircraft.category;
}

float simFrameRate() {
    return simFrameRateNow;
}

} // namespace kst
