#include "scanner/scenerydiscovery.h"

#include "catalogue/cfgpaths.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/knownfolders.h"
#include "platform/paths.h"
#include "scanner/stockscenery.h"
#include "simlink/session.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <string_view>

#include <fmt/format.h>

namespace kst {

namespace {

bool holdsOneOf(std::string_view line, std::initializer_list<std::string_view> texts) {
    return std::any_of(texts.begin(), texts.end(),
                       [line](std::string_view text) { return line.find(text) != std::string_view::npos; });
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view{}
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::filesystem::path configurationFile(std::string_view name) {
    return platform::caseInsensitivePath(platform::programData() / "Lockheed Martin" /
                                         ("Prepar3D v" + gf_simVersionDigit()) / name);
}

/// Reads the file, or logs that it is not there.
std::vector<std::string> linesOf(const std::filesystem::path& path) {
    constexpr std::size_t usualLines = 4048;
    std::vector<std::string> lines;
    lines.reserve(usualLines);
    if (!gf_readExtTextFileToStringVector(path, lines)) {
        logLine(platform::utf8FromPath(path) + " not found!");
    }
    return lines;
}

/// On a disk of Windows, or from the root of another system.
bool isAbsolute(std::string_view value) {
    return holdsOneOf(value, {":\\", ":/"}) || pathFromCfgText(value).is_absolute();
}

void lf_addSceneryPath(std::string_view line, std::vector<std::string>& folders) {
    const std::size_t equals = line.find('=');
    if (!holdsOneOf(line, {"Local", "LOCAL", "local"}) || lf_isDefaultScenery(line) ||
        equals == std::string_view::npos) {
        return;
    }
    std::string value(trimmed(line.substr(equals + 1)));
    // An area without a folder would stand for the whole simulator.
    if (value.empty()) {
        return;
    }
    if (!isAbsolute(value)) {
        value = platform::utf8FromPath(pathFromCfgText(SIM_INSTALL_PATH.get()) / pathFromCfgText(value));
    }
    if (!lf_isStockPath(pathFromCfgText(value))) {
        logLine(fmt::format("      found:{}", value));
        folders.push_back(std::move(value));
    }
}

void lf_handleArea(const std::vector<std::string_view>& area, std::vector<std::string>& folders) {
    const bool active = std::any_of(area.begin(), area.end(), [](std::string_view line) {
        return holdsOneOf(line, {"Active", "ACTIVE", "active"}) && holdsOneOf(line, {"True", "TRUE", "true"});
    });
    if (!active) {
        return;
    }
    for (const std::string_view line : area) {
        try {
            lf_addSceneryPath(line, folders);
        } catch (const std::exception& failure) {
            logAlert(fmt::format("scenery path skipped, {}: {}", failure.what(), line));
        }
    }
}

void logCount(std::size_t count) {
    logLine(fmt::format("{} scenery add-on paths found\n", count));
}

} // namespace

void lf_readSceneryCfg(std::vector<std::string>& folders) {
    const std::size_t before = folders.size();
    const std::filesystem::path path = configurationFile("scenery.cfg");
    logLine(fmt::format("\nReading: {} for airport add-ons ...", platform::utf8FromPath(path)));
    const std::vector<std::string> lines = linesOf(path);
    bool inArea = false;
    std::vector<std::string_view> area;
    for (const std::string_view line : lines) {
        if (holdsOneOf(line, {"Area", "AREA", "area"})) {
            inArea = true;
            lf_handleArea(area, folders);
            area.clear();
        } else if (inArea &&
                   !holdsOneOf(line, {"Required", "REQUIRED", "Title", "TITLE", "Layer", "LAYER"})) {
            area.push_back(trimmed(line));
        }
    }
    lf_handleArea(area, folders);
    logCount(folders.size() - before);
}

void lf_readSceneryAddOns(std::vector<std::string>& folders) {
    constexpr std::string_view opening = "<Path>";
    constexpr std::string_view closing = "</Path>";
    const std::size_t before = folders.size();
    const std::filesystem::path path = configurationFile("scenery_add-ons.xml");
    logLine(fmt::format("\nReading {} for add-on airport ...", platform::utf8FromPath(path)));
    for (const std::string_view line : linesOf(path)) {
        const std::size_t open = line.find(opening);
        const std::size_t begin = open + opening.size();
        const std::size_t end = open == std::string_view::npos ? open : line.find(closing, begin);
        if (end != std::string_view::npos && end > begin) {
            const std::string_view folder = line.substr(begin, end - begin);
            logLine(fmt::format("found path:{}", folder));
            folders.emplace_back(folder);
        }
    }
    logCount(folders.size() - before);
}

void lf_collectAfolders(std::vector<std::string>& folders) {
    constexpr int stockFolder = 42;
    for (const TextParameter& parameter : afolder) {
        std::string value = parameter.get();
        if (value.empty()) {
            continue;
        }
        if (lf_isStockPath(pathFromCfgText(value))) {
            throw UserErrorException(
                stockFolder, fmt::format("parameter {} points to stock airports instead of add-on airports!",
                                         parameter.name()));
        }
        folders.push_back(std::move(value));
    }
}

} // namespace kst
