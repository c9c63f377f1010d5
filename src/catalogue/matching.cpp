#include "catalogue/matching.h"

#include "catalogue/referencetables.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"

#include <algorithm>
#include <deque>
#include <set>
#include <unordered_map>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::size_t mostFailedTitles = 20;

struct LiveryTitles {
    std::deque<std::string> all; ///< owns the titles; views into it stay valid while it grows
    std::unordered_map<std::string, std::string_view, TextHash, std::equal_to<>> byAirlineAndModel;
    std::unordered_map<std::string, std::string_view, TextHash, std::equal_to<>> byModel;
};

LiveryTitles titles;
std::set<std::string, std::less<>> failedTitles;
std::set<std::string> failedAircraft;
std::uint64_t matched = 0;
std::uint64_t unmatched = 0;

std::string pairKey(std::string_view airline, std::string_view model) {
    return std::string(airline) + " " + std::string(model);
}

std::string_view findTitle(const AcBase& ac) {
    const auto usable = [](const auto& map, std::string_view key) -> std::string_view {
        const auto found = map.find(key);
        return found != map.end() && !gf_isFailedTitle(found->second) ? found->second : std::string_view{};
    };
    const std::string_view ofAirline = usable(titles.byAirlineAndModel, pairKey(ac.airline, ac.acType));
    return !ofAirline.empty() ? ofAirline : usable(titles.byModel, ac.acType);
}

} // namespace

void gf_matchLivery(AcBase& ac) {
    ac.liveryTitle = findTitle(ac);
    ac.fsltlLivery = ac.liveryTitle.find("FSLTL_") != std::string_view::npos;
    ++(ac.liveryTitle.empty() ? unmatched : matched);
}

void gf_liveryCreateFailed(const AcBase& ac) {
    showMessage(fmt::format("{} \"{}\" could not be created by your Sim!", ac.callsign, ac.liveryTitle),
                true);
    failedTitles.emplace(ac.liveryTitle);
    failedAircraft.insert(fmt::format("{} {}", ac.acType, ac.airline));
    if (failedTitles.size() >= mostFailedTitles) {
        const std::string text = "there are too many liveries that could not be created by P3D!";
        logAlert(fmt::format("\nError 81, {}\n", text));
        throw UserErrorException(81, text + ", see Log.txt");
    }
}

bool gf_isFailedTitle(std::string_view title) {
    return failedTitles.contains(title);
}

void gf_logMatchingSummary() {
    constexpr std::string_view title = "live traffic livery matching summary";
    constexpr int bannerWidth = 100;
    constexpr int titleLength = static_cast<int>(title.size());
    logLine(bannerLine(bannerWidth - titleLength, 0, true, false, title));
    logLine(fmt::format("{} matched, {} without a livery", matched, unmatched));
    if (!failedAircraft.empty()) {
        logLine("\nCould not be created by P3D:");
        for (const std::string& text : failedAircraft) {
            logLine(text);
        }
    }
    logLine(bannerLine(bannerWidth - titleLength, titleLength, false, true, {}));
}

void addLiveryTitle(std::string_view airline, std::string_view model, const std::string& title) {
    const std::string_view view = titles.all.emplace_back(title);
    titles.byAirlineAndModel.emplace(pairKey(airline, model), view);
    titles.byModel.emplace(model, view);
}

void resetMatching() {
    titles = {};
    failedTitles.clear();
    failedAircraft.clear();
    matched = 0;
    unmatched = 0;
}

} // namespace kst
