#include "feed/qnhreader.h"

#include "core/display.h"
#include "core/log.h"
#include "feed/feedtext.h"

#include <cmath>
#include <exception>
#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst {

QnhReader qnhReader;

namespace {

constexpr double lowestQnh = 930.0;
constexpr double highestQnh = 1080.0;
/// Hectopascals in a hundredth of an inch of mercury.
constexpr double hpaPerHundredthInch = 0.33865307;

/// The pressure that the text begins with; what cannot be used is logged and counts as the standard.
double pressureFromText(const std::string& text) {
    const std::optional<double> number = numberAtStart(text);
    if (!number || std::isnan(*number)) {
        logLine(fmt::format("QNH string invalid arg: no number in \"{}\"", logExcerpt(text)));
        return standardQnh;
    }
    if (std::abs(*number) > std::numeric_limits<std::int32_t>::max()) {
        logLine(fmt::format("QNH string out of range: \"{}\"", logExcerpt(text)));
        return standardQnh;
    }
    return std::round(*number);
}

} // namespace

void QnhReader::processLine() {
    try {
        readWeather();
    } catch (const std::exception& e) {
        logLine(fmt::format("Exception {}, in {}", logExcerpt(e.what()), logExcerpt(lineText())));
    }
}

void QnhReader::readWeather() {
    const nlohmann::json weather = nlohmann::json::parse(lineText());
    const auto found = weather.find("QNH");
    if (found == weather.end() || found->empty()) {
        logLine(fmt::format("no QNH {}", logExcerpt(lineText())));
        return;
    }
    // Not a copy: a copy of deeply nested arrays would use up the stack.
    const nlohmann::json& value = *found;
    double pressure = standardQnh;
    if (value.is_number()) {
        pressure = std::round(value.get<double>());
    } else {
        if (!value.is_string()) {
            logLine(fmt::format("no QNH {}", logExcerpt(lineText())));
        }
        pressure = pressureFromText(value.get<std::string>());
    }
    if (pressure > highestQnh) {
        pressure = std::round(pressure * hpaPerHundredthInch);
    }
    if (!(pressure >= lowestQnh && pressure <= highestQnh)) {
        logLine(fmt::format("? Strange QNH {:.0f} found in {}", pressure, logExcerpt(lineText())));
        return;
    }
    const int hectopascals = static_cast<int>(pressure);
    if (hectopascals == lastQnh && hectopascals != standardQnh) {
        return;
    }
    lastQnh = hectopascals;
    qnh = hectopascals;
    updateStatus(Band::Status, [hectopascals](StatusValues& status) {
        status.qnhShown = hectopascals;
        if (status.weatherStatus == 2) {
            status.weatherStatus = 1;
        }
    });
}

void QnhReader::stopped() {
    updateStatus(Band::Status, [](StatusValues& status) { status.weatherStatus = 3; });
    logLine("QNH Reader has stopped");
}

} // namespace kst
