// Enter in the text boxes.

#include "window/commands.h"

#include "core/display.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "core/workerinbox.h"
#include "platform/paths.h"
#include "scanner/airportdirectory.h"
#include "window/layout.h"
#include "window/numberinput.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::size_t shortestCallsign = 4;
constexpr std::size_t longestCallsign = 8;
constexpr std::size_t airportCodeLength = 4;

/// Letters of the alphabet alone: a callsign holds no others, and no locale decides.
std::string capitals(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return result;
}

/// Shows and logs the refusal and puts the value that holds back into the box.
void refuse(const TextParameter& parameter, const std::string& message) {
    showMessage(message, true);
    showParameter(parameter);
}

// --- numbers ---

bool isSaved(const IntParameter& parameter) {
    // The parking share starts afresh with each run.
    return &parameter != &parking_percentage;
}

void tellChange(std::string_view name, const std::string& value) {
    showMessage(fmt::format("The new {} is {}", name, value), false);
}

bool emptyIntBox(IntParameter& parameter) {
    if (isSaved(parameter)) {
        parameter.setDefault();
        saveParameter(parameter);
    } else {
        parameter.set(0);
    }
    return true;
}

bool takeInt(IntParameter& parameter, const std::string& text) {
    if (text.empty()) {
        return emptyIntBox(parameter);
    }
    const NumberInput<int> input = readInt(text);
    if (input.failure == NumberFailure::NoNumber) {
        showMessage(fmt::format("invalid input: {}", text), true);
        return false;
    }
    if (input.failure != NumberFailure::None) {
        logAlert(fmt::format("{}: {}, h={} ", "lf_processTbInt", failureWords(input.failure), text));
        return false;
    }
    if (input.value == parameter.get()) {
        showMessage(fmt::format("Same {} value {}, no changes made", parameter.name(), input.value), true);
        return false;
    }
    parameter.set(input.value);
    if (isSaved(parameter)) {
        saveParameter(parameter);
    }
    return true;
}

constexpr float hoursOfHalfHour(int halfHours) {
    return static_cast<float>(halfHours) * 0.5F + 0.5F;
}

bool takeHours(FloatParameter& hours, const std::string& text) {
    if (text.empty()) {
        hours.setDefault();
        MAX_FIT.setDefault();
        saveParameter(MAX_FIT);
        return true;
    }
    const NumberInput<float> input = readFloat(text);
    if (input.failure != NumberFailure::None) {
        logAlert(fmt::format("{}: {}, h={} ", "lf_processTbFloat", failureWords(input.failure), text));
        return false;
    }
    if (input.value == hours.get()) {
        showMessage(fmt::format("Same {} value {}, no changes made", hours.name(), input.value), true);
        return false;
    }
    const float clamped = std::clamp(input.value, hours.minimum(), hours.maximum());
    MAX_FIT.set(static_cast<int>(std::lround(2.0F * clamped)) - 1);
    saveParameter(MAX_FIT);
    hours.set(hoursOfHalfHour(MAX_FIT));
    return true;
}

// --- what a changed number sets off ---

void parkNumberEntered(IntParameter& parameter, std::string_view text) {
    if (lf_processTbInt(parameter, text)) {
        lf_respondParkChange();
    }
}

void rangeEntered(std::string_view text) {
    if (lf_processTbInt(LATERAL_RANGE, text)) {
        parametersChanged = true;
        workingRangeNm = LATERAL_RANGE.get();
        requestRangeM = LATERAL_RANGE.get() * metresPerNm;
    }
}

void maxLiveEntered(std::string_view text) {
    if (!lf_processTbInt(MAX_LIVE, text)) {
        return;
    }
    if (parkAirportPlace()) {
        parametersChanged = true;
    }
    askWorker({WorkerRequest::Kind::ApplyLiveLimit});
}

void matchingDepthEntered(std::string_view text) {
    const int before = MATCHING_DEPTH;
    if (lf_processTbInt(MATCHING_DEPTH, text) && MATCHING_DEPTH > before) {
        clearUnmatchedDue = true;
    }
}

void maxFitEntered(std::string_view text) {
    if (parkAirportPlace() && lf_processTbFloat(MAX_FIT_FL, text)) {
        lf_respondParkChange();
    }
}

void runTextBox(int controlId, std::string_view text) {
    switch (controlId) {
    case control::CustomMaxPark:
        return parkNumberEntered(CUSTOM_MAX_PARK, text);
    case control::ParkingPercentage:
        return parkNumberEntered(parking_percentage, text);
    case control::LateralRange:
        return rangeEntered(text);
    case control::MaxLive:
        return maxLiveEntered(text);
    case control::MatchingDepth:
        return matchingDepthEntered(text);
    case control::AutoRangeAboveHeight:
        lf_processTbInt(AUTO_RANGE_ABOVE_HEIGHT, text);
        return;
    case control::AirportRange:
        lf_processTbInt(AIRPORT_RANGE, text);
        return;
    case control::AirportHeight:
        lf_processTbInt(AIRPORT_HEIGHT, text);
        return;
    case control::MaxFitFl:
        return maxFitEntered(text);
    case control::BlockCallsign:
        return lf_setBlockCallsign(text);
    case control::Destination:
        return lf_setDestinationText(text);
    case control::AllInstallPath:
        return lf_setInstallPath(text);
    default:
        return;
    }
}

} // namespace

void lf_enterTextBox(int controlId, std::string_view boxText) {
    try {
        clearMessage();
        runTextBox(controlId, boxText);
    } catch (const std::exception& error) {
        logAlert(fmt::format("{} exception {}", "lf_enterTextBox", error.what()));
    }
}

bool lf_processTbInt(IntParameter& parameter, std::string_view boxText) {
    const bool changed = takeInt(parameter, firstCodeUnits(boxText, layout::textBoxLimit));
    if (changed) {
        tellChange(parameter.name(), parameter.text());
    }
    showParameter(parameter);
    return changed;
}

bool lf_processTbFloat(FloatParameter& parameter, std::string_view boxText) {
    const bool changed = takeHours(parameter, firstCodeUnits(boxText, layout::textBoxLimit));
    if (changed) {
        tellChange(parameter.name(), fmt::format("{:.1F}", parameter.get()));
    }
    showParameter(parameter);
    return changed;
}

void lf_setBlockCallsign(std::string_view boxText) {
    const std::string text = firstCodeUnits(boxText, layout::textBoxLimit);
    if (text.empty()) {
        lf_unblock();
        return;
    }
    if (const std::size_t length = codeUnits(text); length < shortestCallsign || length > longestCallsign) {
        refuse(BLOCK_CALLSIGN, fmt::format("callsign \"{}\" is not valid", text));
        return;
    }
    const std::string callsign = capitals(text);
    if (callsign == BLOCK_CALLSIGN.get()) {
        refuse(BLOCK_CALLSIGN, fmt::format("callsign \"{}\" was already set ...", callsign));
        return;
    }
    BLOCK_CALLSIGN.set(callsign);
    saveParameter(BLOCK_CALLSIGN);
    showParameter(BLOCK_CALLSIGN);
    enableControl(control::Unblock, true);
    showMessage(fmt::format("live aircraft with callsign \"{}\" will be blocked", callsign), true);
    blockCallsignDue = true;
}

void lf_unblock() {
    const std::string callsign = BLOCK_CALLSIGN.get();
    if (callsign.empty()) {
        return;
    }
    BLOCK_CALLSIGN.set({});
    saveParameter(BLOCK_CALLSIGN);
    blankParameter(BLOCK_CALLSIGN);
    enableControl(control::Unblock, false);
    showMessage(fmt::format("no more blocking of live aircraft \"{}\"", callsign), true);
    blockCallsignDue = true;
}

void lf_setDestinationText(std::string_view boxText) {
    const std::string text = firstCodeUnits(boxText, layout::textBoxLimit);
    if (text.empty()) {
        DESTINATION.set({});
        enableControl(control::ReRead, true);
        showMessage("destination set to empty", true);
        return;
    }
    if (codeUnits(text) != airportCodeLength) {
        refuse(DESTINATION, fmt::format("destination \"{}\" is not valid", text));
        return;
    }
    const std::string code = capitals(text);
    if (code == DESTINATION.get()) {
        refuse(DESTINATION, fmt::format("destination \"{}\" was already set ...", code));
        return;
    }
    const AirportEntry* const airport = gf_airportByCode(code);
    if (airport == nullptr) {
        refuse(DESTINATION, fmt::format("destination \"{}\" is unknown ...", code));
        return;
    }
    DESTINATION.set(code);
    saveParameter(DESTINATION);
    showParameter(DESTINATION);
    showMessage(fmt::format("New destination: {}", code), true);
    askWorker({WorkerRequest::Kind::SetDestination, airport->position(), code});
    enableControl(control::ReRead, false);
}

void lf_setInstallPath(std::string_view boxText) {
    const std::string text = firstCodeUnits(boxText, layout::installPathLimit);
    clearError();
    clearMessage();
    if (text.empty()) {
        if (!SIM_INSTALL_PATH.empty()) {
            SIM_INSTALL_PATH.set({});
            saveParameter(SIM_INSTALL_PATH);
        }
        return;
    }
    std::error_code unreachable;
    if (!std::filesystem::exists(platform::pathFromUtf8(text), unreachable)) {
        showMessage(fmt::format("This install path does not exist: {}", text), true);
        return;
    }
    SIM_INSTALL_PATH.set(text);
    saveParameter(SIM_INSTALL_PATH);
    showMessage(fmt::format("Install path exists, {} will restart", programName), true);
    gf_requestExit(ExitReason::RestartInstallPath, 3);
}

} // namespace kst
