#include "parking/learning.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "parking/stands.h"
#include "platform/paths.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <fmt/format.h>

namespace kst {

namespace {

std::uint32_t changes = 0;
bool softBarred = false;

// From here on an airport is known well enough to be left alone by guesses.
constexpr int wellKnownQuality = 45;
constexpr std::size_t wellKnownStands = 20;

void showChanges() {
    updateStatus(Band::Park, [](StatusValues& status) { status.updatesShown = changes; });
}

/// What the observations of one kind on a stand tell: that there are some weighs most, then how many, on how
/// many days, and for how long.
double standScore(const ParkPos& stand, bool real) {
    constexpr std::size_t known = 10000;
    constexpr std::size_t perOption = 20;
    constexpr std::size_t mostForOptions = 4000;
    constexpr std::size_t perDay = 100;
    constexpr std::size_t perHalfHour = 2;
    constexpr std::size_t mostHalfHours = 600;
    std::size_t options = 0;
    std::size_t halfHours = 0;
    std::bitset<8> days;
    for (const ParkOption& option : stand.options) {
        if (option.seq == 0 || option.real != real) {
            continue;
        }
        ++options;
        halfHours += option.hours.count();
        if (option.day >= 1 && option.day <= 7) {
            days.set(static_cast<std::size_t>(option.day));
        }
    }
    if (options == 0) {
        return 0.0;
    }
    return static_cast<double>(known + std::min(perOption * options, mostForOptions) + perDay * days.count() +
                               perHalfHour * std::min(halfHours, mostHalfHours));
}

int factor(const std::vector<ParkPos>& stands, bool real) {
    constexpr double percentPerScore = 0.00625;
    double sum = 0.0;
    for (const ParkPos& stand : stands) {
        sum += standScore(stand, real);
    }
    const double mean = sum / static_cast<double>(stands.size());
    return std::clamp(static_cast<int>(std::lround(mean * percentPerScore)), 0, 100);
}

/// A publisher as the name of a folder. The text comes out of a file that may be anyone's.
std::string folderName(std::string_view publisher) {
    std::string name;
    for (const char c : publisher) {
        constexpr std::string_view unusable = "<>:\"/\\|?*";
        const bool usable =
            static_cast<unsigned char>(c) >= ' ' && unusable.find(c) == std::string_view::npos;
        name += usable ? c : '_';
    }
    while (!name.empty() && (name.back() == '.' || name.back() == ' ')) {
        name.pop_back();
    }
    return name.empty() ? "unknown" : name;
}

bool replaceWord(std::string& text, std::string_view word, std::string_view by) {
    const std::size_t at = text.find(word);
    if (at == std::string::npos) {
        return false;
    }
    text.replace(at, word.size(), by);
    return true;
}

} // namespace

std::string learnedFolder(std::string_view publisher) {
    return publisher == "stock" || publisher == "simaddon" ? std::string(publisher)
                                                           : "thirdparty/" + folderName(publisher);
}

std::filesystem::path lf_learnedApfPath(std::string_view location, std::string_view publisher) {
    if (location.empty()) {
        return {};
    }
    const std::string learned = platform::utf8FromPath(folders::learned);
    std::string path(location);
    if (replaceWord(path, "archive", learned)) {
        while (replaceWord(path, "%20", " ")) {
        }
    } else if (path.starts_with("airports")) {
        replaceWord(path, "airports", learned);
        // What is saved there is found again: both follow the publisher.
        for (const std::string_view own : {"my_thirdparty2024", "my_thirdparty", "my_ORBX"}) {
            if (replaceWord(path, own, learnedFolder(publisher))) {
                break;
            }
        }
    }
    return platform::pathFromUtf8(path).make_preferred();
}

QualityFactors gf_qualityFactor() {
    try {
        const std::vector<ParkPos>& stands = parkPositions();
        if (std::ranges::all_of(stands, [](const ParkPos& stand) { return stand.options.empty(); })) {
            return {};
        }
        return {factor(stands, true), factor(stands, false)};
    } catch (const std::exception& error) {
        logLine(fmt::format("{} {}", "gf_qualityFactor", error.what()));
        return {0, 0};
    }
}

void noteStandChange() {
    ++changes;
    showChanges();
}

std::uint32_t standChanges() {
    return changes;
}

void clearStandChanges() {
    changes = 0;
    showChanges();
}

void lf_applyLearnSoftRule() {
    const AirportFile& airport = loadedAirport();
    softBarred = airport.quality.Qf_real >= wellKnownQuality && airport.stands.size() >= wellKnownStands;
    if (softBarred && LEARN_SOFT) {
        LEARN_SOFT.set(false);
        showParameter(LEARN_SOFT);
        parametersChanged = true;
    }
    enableControl(control::LearnSoft, !softBarred);
}

bool softLearningBarred() {
    return softBarred;
}

} // namespace kst
