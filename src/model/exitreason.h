#pragma once

#include <string_view>

namespace kst {

/// Why a run ends. Only `Restart` and `RestartInstallPath` lead to a new run in the same process.
enum class ExitReason : int {
    NotYetSet = 0,
    SimClosed = 1,
    Restart = 2,
    RestartInstallPath = 3,
    UserClosed = 4,
    SystemError = 5
};

/// The name as it is logged.
constexpr std::string_view exitReasonName(ExitReason reason) {
    switch (reason) {
    case ExitReason::NotYetSet:
        return "NOT_YET_SET";
    case ExitReason::SimClosed:
        return "SIM WAS CLOSED";
    case ExitReason::Restart:
        return "RESTART";
    case ExitReason::RestartInstallPath:
        return "RESTART_IPP";
    case ExitReason::UserClosed:
        return "USER CLOSED SIM";
    case ExitReason::SystemError:
        return "SYSTEM ERROR";
    }
    return "?";
}

constexpr bool isRestart(ExitReason reason) {
    return reason == ExitReason::Restart || reason == ExitReason::RestartInstallPath;
}

} // namespace kst
