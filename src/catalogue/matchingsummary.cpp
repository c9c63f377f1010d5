// What came of the matches: the count of each rung, and the titles that the simulator refused.

#include "catalogue/matching.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::size_t mostFailedTitles = 20;
constexpr std::string_view simName = "P3D";

/// Own copies: they live longer than the tables that a new scan replaces. Few, so a list will do.
std::vector<std::string> failedTitles;
std::vector<std::string> failedAircraft;

} // namespace

void gf_liveryCreateFailed(const AcBase& ac) {
    showMessage(fmt::format("{} \"{}\" could not be created by your Sim!", ac.callsign, ac.liveryTitle),
                true);
    failedTitles.emplace_back(ac.liveryTitle);
    failedAircraft.push_back(fmt::format("{} {}", ac.acType, ac.airline));
    if (failedTitles.size() >= mostFailedTitles) {
        const std::string text =
            fmt::format("there are too many liveries that could not be created by {}!", simName);
        logLine(fmt::format("\n===> Error 81, {}\n", text));
        throw UserErrorException(81, text + ", see Log.txt");
    }
}

bool gf_isFailedTitle(std::string_view title) {
    return std::ranges::find(failedTitles, title) != failedTitles.end();
}

void gf_logMatchingSummary() {
    constexpr std::string_view title = "live traffic livery matching summary";
    constexpr int bannerWidth = 100;
    constexpr int titleLength = static_cast<int>(title.size());
    logLine(bannerLine(bannerWidth - titleLength, 0, true, false, title));
    logLine("Matches at step: ");
    for (std::size_t i = 0; i < matchSteps.size(); ++i) {
        logLine(fmt::format("  {}: {}", i + 1, matchSteps[i]));
    }
    if (!failedAircraft.empty()) {
        logLine(fmt::format("\nCould not be created by {}:", simName));
        for (const std::string& text : std::set(failedAircraft.begin(), failedAircraft.end())) {
            logLine(text);
        }
    }
    logLine(bannerLine(bannerWidth - titleLength, titleLength, false, true, {}));
}

void resetMatching() {
    liveryTables() = {};
    matchSteps = {};
    failedTitles.clear();
    failedAircraft.clear();
}

} // namespace kst
