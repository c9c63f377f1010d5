#include "catalogue/addonpackages.h"

#include "catalogue/cfgpaths.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/knownfolders.h"
#include "platform/paths.h"
#include "simlink/session.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string_view>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

bool contains(std::string_view line, std::string_view text) {
    return line.find(text) != std::string_view::npos;
}

bool containsAny(std::string_view line, std::initializer_list<std::string_view> texts) {
    return std::any_of(texts.begin(), texts.end(),
                       [line](std::string_view text) { return contains(line, text); });
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view{}
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

fs::path configurationFile(const fs::path& folder, const char* name) {
    return platform::caseInsensitivePath(folder / "Lockheed Martin" / ("Prepar3D v" + gf_simVersionDigit()) /
                                         name);
}

/// The value of a line "Path=...".
std::optional<std::string> pathValue(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !containsAny(line, {"Path", "PATH", "path"})) {
        return std::nullopt;
    }
    return std::string(trimmed(line.substr(equals + 1)));
}

/// Reads the lines; logs and returns false when the file cannot be had.
bool readOrTell(const fs::path& path, std::vector<std::string>& lines) {
    if (gf_readExtTextFileToStringVector(path, lines)) {
        return true;
    }
    logLine(platform::utf8FromPath(path) + " not found!");
    return false;
}

/// The lines behind the first section mark, without the marks and without those that hold one of `skipped`.
std::vector<std::string> sectionLines(std::vector<std::string> lines,
                                      std::initializer_list<std::string_view> marks,
                                      std::initializer_list<std::string_view> skipped) {
    bool inSection = false;
    std::erase_if(lines, [&](const std::string& line) {
        if (containsAny(line, marks)) {
            inSection = true;
            return true;
        }
        return !inSection || containsAny(line, skipped);
    });
    return lines;
}

/// The text between <Path> and </Path>, or nothing.
std::string_view pathElement(std::string_view line) {
    constexpr std::string_view opening = "<Path>";
    const std::size_t begin = line.find(opening);
    const std::size_t end = line.find("</Path>");
    const bool whole =
        begin != std::string_view::npos && end != std::string_view::npos && end >= begin + opening.size();
    return whole ? line.substr(begin + opening.size(), end - begin - opening.size()) : std::string_view{};
}

/// Appends the aircraft folders of one package.
void readPackage(const std::string& package, std::vector<std::string>& folders) {
    const fs::path file = platform::caseInsensitivePath(pathFromCfgText(package) / "add-on.xml");
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        return;
    }
    logLine(fmt::format("   exploring {}", platform::utf8FromPath(file)));
    std::vector<std::string> lines;
    if (readOrTell(file, lines)) {
        for (std::string& folder : foldersOfPackage(lines)) {
            folders.push_back(std::move(folder));
        }
    }
}

void readAddOns(std::vector<std::string>& folders) {
    const fs::path file = configurationFile(platform::roamingAppData(), "add-ons.cfg");
    logLine(fmt::format("\nReading {} for AI add-on packages...", platform::utf8FromPath(file)));
    std::vector<std::string> lines;
    if (readOrTell(file, lines)) {
        for (const std::string& package : packagesOfAddOns(std::move(lines))) {
            readPackage(package, folders);
        }
    }
}

/// The folder that an entry of simobjects.cfg names; nothing for the simulator's own.
std::optional<std::string> simObjectsFolder(const std::string& line) {
    auto value = pathValue(line);
    if (!value || !contains(line, "SimObjects")) {
        return value;
    }
    if (containsAny(line, {"Airplanes", "Avatars", "Rotorcraft", "GroundVehicles", "Boats", "Animals", "Misc",
                           "Submersible", "Weapons", "Countermeasures"})) {
        return std::nullopt;
    }
    return platform::utf8FromPath(pathFromCfgText(SIM_INSTALL_PATH.get()) / pathFromCfgText(*value));
}

} // namespace

std::vector<std::string> packagesOfAddOns(std::vector<std::string> lines) {
    std::vector<std::string> packages;
    for (const std::string& line :
         sectionLines(std::move(lines), {"Package", "PACKAGE"}, {"Required", "REQUIRED"})) {
        if (auto path = pathValue(line)) {
            logLine(fmt::format("path found:{}", *path));
            packages.push_back(std::move(*path));
        }
    }
    return packages;
}

std::vector<std::string> foldersOfPackage(const std::vector<std::string>& lines) {
    std::vector<std::string> folders;
    bool pathFollows = false;
    for (const std::string& line : lines) {
        if (!pathFollows) {
            pathFollows = containsAny(line, {"SimObjects", "SIMOBJECTS", "Simobjects", "simobjects"});
            continue;
        }
        pathFollows = false;
        const std::string_view path = pathElement(line);
        // Packages of lights and of an airport, whose objects are no aircraft.
        if (!path.empty() && !containsAny(path, {"Lights Reborn", "Aerosoft Geneva Professional"})) {
            logLine(fmt::format("      Simobjects found:{}", path));
            folders.emplace_back(path);
        }
    }
    return folders;
}

std::vector<std::string> foldersOfSimObjects(std::vector<std::string> lines) {
    std::vector<std::string> folders;
    for (const std::string& line :
         sectionLines(std::move(lines), {"Entry", "ENTRY"}, {"Title", "Required"})) {
        if (auto folder = simObjectsFolder(line)) {
            folders.push_back(std::move(*folder));
        }
    }
    return folders;
}

void lf_readP3DAddOnsAircraft(std::vector<std::string>& folders) {
    const std::size_t before = folders.size();
    try {
        readAddOns(folders);
        const std::size_t added = folders.size() - before;
        logLine(fmt::format("{} AI add-on package{} found", added, added == 1 ? "" : "s"));
    } catch (const std::exception& failure) {
        logLine(fmt::format("sys error exception {} in {}, no AI add-on packages found", failure.what(),
                            "lf_readP3DAddOnsAircraft"));
    }
}

void lf_readP3DSimObjects(std::vector<std::string>& folders) {
    const fs::path file = configurationFile(platform::programData(), "simobjects.cfg");
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        return;
    }
    const std::size_t before = folders.size();
    logLine(fmt::format("\nReading {} for AI add-on packages...", platform::utf8FromPath(file)));
    std::vector<std::string> lines;
    if (readOrTell(file, lines)) {
        for (std::string& folder : foldersOfSimObjects(std::move(lines))) {
            folders.push_back(std::move(folder));
        }
    }
    logLine(fmt::format("{} AI add-on packages found", folders.size() - before));
}

} // namespace kst
