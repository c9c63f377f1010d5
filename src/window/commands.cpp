#include "window/commands.h"

#include "catalogue/store.h"
#include "core/display.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "core/workerinbox.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string>

#include <fmt/format.h>

namespace kst {

namespace {

void markParametersChanged() {
    if (parkAirportPlace()) {
        parametersChanged = true;
    }
}

// --- check boxes ---

/// The scan comes at the next start of a run: at once when the system only waits for RealTraffic.
void requestScan(std::string_view what, std::string_view occasion) {
    if (!waitingForRealTraffic) {
        showMessage(fmt::format("Your {} will be scanned at the next start of {}, recommended after you have "
                                "add/removed {}",
                                what, programName, occasion),
                    false);
        return;
    }
    showMessage(fmt::format("Your {} will be scanned", what), true);
    gf_requestExit(ExitReason::RestartInstallPath, 2);
}

void scanLiveriesChanged(bool on) {
    if (!on) {
        clearMessage();
        return;
    }
    if (waitingForRealTraffic) {
        gf_emptyCatalogue();
    }
    requestScan("liveries", "AI aircraft models/liveries");
}

void scanAirportsChanged(bool on) {
    if (!on) {
        clearMessage();
        return;
    }
    requestScan("airports", "airports");
}

void autoRangeChanged(bool on) {
    parametersChanged = true;
    enableControl(control::LateralRange, !on);
    enableControl(control::AutoRangeAboveHeight, on);
    if (on) {
        rememberedRangeNm = LATERAL_RANGE.get();
        askWorker({WorkerRequest::Kind::AutoRange});
        return;
    }
    const int range = rememberedRangeNm;
    closeAirportMode = false;
    LATERAL_RANGE.set(range);
    workingRangeNm = range;
    requestRangeM = range * metresPerNm;
    showParameter(LATERAL_RANGE);
}

void alwaysOnTopChanged(bool) {
    if (DisplaySink* const window = displaySink()) {
        window->applyAlwaysOnTop();
    }
}

void navLightsChanged(bool) {
    askWorker({WorkerRequest::Kind::NavLights});
}

void parkSettingChanged(bool) {
    lf_respondParkChange();
}

void learnSettingChanged(bool) {
    markParametersChanged();
}

void initialLoadOnlyChanged(bool) {
    repaint(Band::Control);
    markParametersChanged();
}

/// A check box: what it says when it is turned on and off, with the program's name in the placeholder, and
/// what it does beyond. With one message the other state clears the line.
struct CheckBoxCommand {
    BoolParameter& parameter;
    std::string_view messageOn{};
    std::string_view messageOff{};
    void (*changed)(bool on) = nullptr;
};

const CheckBoxCommand checkBoxCommands[] = {
    {LOG},
    {LIGHT_AIRCRAFT},
    {HELICOPTERS},
    {HIGH_PERF_AIRCRAFT},
    {STRAIGHT_PBS_ONLY},
    {SCAN_LIVERIES, "", "", scanLiveriesChanged},
    {SCAN_AIRPORTS, "", "", scanAirportsChanged},
    {LIG_AUTOMATIC, "", "The liveries defined by your lfolder parameters will be scanned"},
    {AFG_AUTOMATIC, "", "The airports defined by your afolder parameters will be scanned"},
    {LIG_PRIORITIZE, "Liveries in lower lfolders that are already available will be skipped"},
    {SUPPRESS_STUB, "Exclude FSLTL-liveries titles ending with _STUB from scan"},
    {NAV_LIGHTS_WHILE_PARKED, "", "", navLightsChanged},
    {AUTO_RANGE, "", "", autoRangeChanged},
    {PARK_SOFT, "", "", parkSettingChanged},
    {PARK_FAKE, "", "", parkSettingChanged},
    {WEEK, "", "", parkSettingChanged},
    {LEARN_SOFT, "", "", learnSettingChanged},
    {INITIAL_LOAD_ONLY,
     "Initial Load Only: static parked aircraft are generated once, no renewal every 20 minutes", "",
     initialLoadOnlyChanged},
    {COLLISION_LIVE_PARKED_GND, "",
     "Be aware, no collision avoidance with live aircraft vs parked static on the ground"},
    {COLLISION_USER_GND, "", "Be aware, no collision avoidance with user aircraft on the ground"},
    {COLLISION_USER_AIR, "", "Be aware, no collision avoidance with user aircraft in the air"},
    {ALWAYS_ON_TOP, "{}'s window will remain visible", "", alwaysOnTopChanged},
    {AEROWINX, "Note: This mode is for Aerowinx PSX users only, please re-start {}"},
    {GUID_CHANGES, "",
     "Be aware, no more livery updates: you miss correct data for Learn, LittleNavMap, etc.."},
};

void runCheckBox(const CheckBoxCommand& command) {
    const bool on = !command.parameter.get();
    command.parameter.set(on);
    showParameter(command.parameter);
    saveParameter(command.parameter);
    if (const std::string_view message = on ? command.messageOn : command.messageOff; !message.empty()) {
        showMessage(fmt::format(fmt::runtime(message), programName), false);
    } else if (!command.messageOn.empty() || !command.messageOff.empty()) {
        clearMessage();
    }
    if (command.changed != nullptr) {
        command.changed(on);
    }
}

// --- push buttons ---

void unblockClicked() {
    if (BLOCK_CALLSIGN.empty()) {
        showMessage("Nothing to block or unblock...", false);
    } else {
        lf_unblock();
    }
}

void reReadClicked() {
    // Disabled first: the worker enables both when it has served the flag.
    enableControl(control::ReRead, false);
    enableControl(control::Destination, false);
    reReadParkDue = true;
}

void flushStaticClicked() {
    showMessage("All static parked aircraft will be removed ...", false);
    enableControl(control::FlushStatic, false);
    flushStaticDue = true;
}

bool runCommand(int controlId) {
    switch (controlId) {
    case control::Unblock:
        unblockClicked();
        return true;
    case control::ReRead:
        reReadClicked();
        return true;
    case control::FlushStatic:
        flushStaticClicked();
        return true;
    default:
        break;
    }
    const auto* const command =
        std::find_if(std::begin(checkBoxCommands), std::end(checkBoxCommands),
                     [&](const CheckBoxCommand& known) { return known.parameter.controlId() == controlId; });
    if (command == std::end(checkBoxCommands)) {
        return false;
    }
    runCheckBox(*command);
    return true;
}

} // namespace

bool lf_HandleWMCOMMAND(int controlId) {
    bool known = false;
    try {
        known = runCommand(controlId);
        if (known) {
            repaint(Band::Control);
        }
    } catch (const std::exception& error) {
        logAlert(fmt::format("{} exception {}", "lf_HandleWMCOMMAND", error.what()));
    }
    return known;
}

void lf_respondParkChange() {
    if (!parkAirportPlace()) {
        return;
    }
    parametersChanged = true;
    if (INITIAL_LOAD_ONLY) {
        clearMessage();
        return;
    }
    constexpr std::uint32_t scheduleSeconds = 15;
    const std::uint32_t now = tickCount;
    const std::uint32_t seconds = (now / scheduleSeconds + 1) * scheduleSeconds - now;
    showMessage(
        fmt::format("{} will respond in {} second{} ...", programName, seconds, seconds == 1 ? "" : "s"),
        false);
    parkRenewalDue = true;
}

} // namespace kst
