#include "catalogue/scan.h"

#include "catalogue/addonpackages.h"
#include "catalogue/cfgpaths.h"
#include "catalogue/reference.h"
#include "catalogue/regcodesources.h"
#include "catalogue/scanfolder.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

/// From this folder on all have the same priority.
constexpr int lastFolderNumber = 10;

std::vector<std::string> automaticFolders() {
    std::vector<std::string> folders;
    folders.reserve(lastFolderNumber);
    lf_readP3DAddOnsAircraft(folders);
    lf_readP3DSimObjects(folders);
    return folders;
}

std::vector<std::string> folderParameters() {
    std::vector<std::string> folders;
    for (const TextParameter& parameter : lfolder) {
        if (std::string folder = parameter.get(); !folder.empty()) {
            folders.push_back(std::move(folder));
        }
    }
    if (folders.empty()) {
        throw UserErrorException(48, "Set lfolder parameter(-s) to your liveries first, see Manual 5.1 (or "
                                     "check Liveries automatic)");
    }
    return folders;
}

void scanFolder(int number, const std::string& text, ScanState& state) {
    const fs::path folder = platform::caseInsensitivePath(pathFromCfgText(text));
    std::error_code ignored;
    if (!fs::exists(folder, ignored)) {
        logLine(text + " does not exist, skipped!");
        return;
    }
    if (!fs::is_directory(folder, ignored)) {
        logLine(text + " is not a folder name, skipped!");
        return;
    }
    if (stopAsked()) {
        return;
    }
    const std::size_t before = scannedLiveries.size();
    lf_searchLiveriesinFolder(number, folder, state);
    const std::size_t total = scannedLiveries.size();
    const std::string place = "found in " + text;
    if (total == 0) {
        logLine(fmt::format("No liveries {}", place));
    } else {
        logLine(fmt::format("{} liverie{} {}", total - before, total > 1 ? "s" : "", place));
    }
}

void sortOutLiveries(ScanReports& reports) {
    for (LiveryData& livery : scannedLiveries) {
        lf_correctLivery(livery, reports.conversionLines);
    }
    if (LIG_PRIORITIZE) {
        prioritiseLiveries(scannedLiveries);
    }
    lf_sortLiveries(scannedLiveries);
    scannedLiveries.erase(std::unique(scannedLiveries.begin(), scannedLiveries.end()), scannedLiveries.end());
}

} // namespace

bool lf_scanFolders(const std::vector<std::string>& folders) {
    scannedLiveries.clear();
    removeOldScanFiles();
    gf_readDontUseTitles();
    ScanState state;
    state.folders = std::max<std::size_t>(folders.size(), 1);
    int number = 0;
    for (const std::string& folder : folders) {
        number = std::min(number + 1, lastFolderNumber);
        if (!folder.empty()) {
            scanFolder(number, folder, state);
        }
        ++state.foldersWalked;
        state.shareOfFolder = 0.0;
    }
    const bool found = !scannedLiveries.empty();
    if (!stopAsked()) {
        if (found) {
            if (folders.size() > 1) {
                logLine(fmt::format("{} in total", scannedLiveries.size()));
            }
            sortOutLiveries(state.reports);
            lf_saveLiveries();
            lf_writeScanReports(state.reports);
        } else {
            updateStatus(Band::Status, [](StatusValues& status) { status.liveryCount = 0; });
        }
        state.progress.end();
        clearMessage();
    }
    const bool stopped = stopAsked();
    scannedLiveries.clear();
    dontUseTitles.clear();
    return found || stopped;
}

void lf_correctLivery(LiveryData& livery, std::vector<std::string>& conversionLines) {
    const auto record = gf_regcodeRecord(livery.regcode);
    if (!record) {
        return;
    }
    const auto tell = [&](const char* what, const auto& from, const auto& to) {
        conversionLines.push_back(
            fmt::format("{:80} {} {} {} => {}", livery.title, livery.regcode, what, from, to));
    };
    if (record->cargo != livery.cargo) {
        tell("cargo", livery.cargo, record->cargo);
        livery.cargo = record->cargo;
    }
    // What the record leaves open stays as the add-on has it.
    const std::string& airline = record->operatorCode.empty() ? record->airline : record->operatorCode;
    if (!airline.empty() && airline != livery.airline) {
        tell("airl", livery.airline, airline);
        livery.airline = airline;
    }
    if (!record->model.empty() && record->model != livery.model) {
        tell("model", livery.model, record->model);
        livery.model = record->model;
    }
}

void prioritiseLiveries(std::vector<LiveryData>& liveries) {
    std::map<std::pair<std::string, std::string>, int> lowest;
    for (const LiveryData& livery : liveries) {
        const auto [place, isNew] = lowest.try_emplace({livery.airline, livery.model}, livery.priority);
        place->second = std::min(place->second, livery.priority);
    }
    std::erase_if(liveries, [&](const LiveryData& livery) {
        return lowest.at({livery.airline, livery.model}) < livery.priority;
    });
}

void gf_scanLiveries() {
    if (SCAN_LIVERIES) {
        const bool automatic = LIG_AUTOMATIC;
        showMessage(
            fmt::format("Scanning {} for liveries ...", LIG_PRIORITIZE && !automatic ? "prioritized " : ""),
            false);
        logLine(
            fmt::format("\n++++++++++++++++++++++++ liveries scan {} starts ++++++++++++++++++++++++++++++++",
                        automatic ? "automatic" : "manual"));
        if (!lf_scanFolders(automatic ? automaticFolders() : folderParameters())) {
            if (automatic) {
                throw UserErrorException(
                    43, "Automatic scan has not found any liveries, switch off automatic and set "
                        "lfolder parameter(-s), Manual 5.1");
            }
            throw UserErrorException(53, "no liveries found");
        }
        SCAN_LIVERIES.set(false);
        saveParameter(SCAN_LIVERIES);
        showParameter(SCAN_LIVERIES);
        logLine("\n++++++++++++++++++++++++ liveries scan ends ++++++++++++++++++++++++++++++++\n");
    }
    gf_processScannedLiveries();
}

} // namespace kst
