#include "scanner/archive.h"

#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "platform/paths.h"
#include "scanner/airportarchive.h"
#include "scanner/offlineairports.h"
#include "scanner/scanreport.h"
#include "scanner/scenerydiscovery.h"
#include "scanner/scenerywalk.h"

#include <filesystem>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t usualFolders = 10;
const fs::path reportFile = folders::info / "AirportsScanLog.txt";

std::vector<std::string> foldersToScan() {
    constexpr int noFolders = 49;
    std::vector<std::string> found;
    found.reserve(usualFolders);
    if (AFG_AUTOMATIC) {
        lf_readSceneryCfg(found);
        lf_readSceneryAddOns(found);
        return found;
    }
    lf_collectAfolders(found);
    if (found.empty()) {
        throw UserErrorException(noFolders,
                                 "Set afolder parameter(-s) to your add-on airports first, see Manual 6.1");
    }
    return found;
}

void lf_emptyFolder(const fs::path& folder) {
    constexpr int cannotEmpty = 5;
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        return;
    }
    try {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            std::error_code refused;
            fs::remove(entry.path(), refused);
            if (refused) {
                logLine(platform::utf8FromPath(folder) + " could not be removed");
            }
        }
    } catch (const std::exception& failure) {
        throw UserErrorException(cannotEmpty, failure.what());
    }
}

void writeReport() {
    std::string text;
    for (const std::string& line : takeScanLog()) {
        text += line;
        text += '\n';
    }
    const std::string name = platform::utf8FromPath(reportFile);
    logLine(name + (writeTextFile(text, reportFile, false) ? " written" : " could not be written"));
}

void walkAll(const std::vector<std::string>& toScan) {
    SceneryScan scan;
    scan.folders = toScan.size();
    for (const std::string& folder : toScan) {
        lf_scanEntry(folder, scan);
    }
}

} // namespace

bool lf_runAirportScan(const std::vector<std::string>& toScan) {
    std::error_code error;
    fs::remove(reportFile, error);
    if (error) {
        logLine("problems with removing previous files (maybe still open?)");
    }
    takeScanLog();
    beginArchive();
    walkAll(toScan);
    writeReport();
    clearMessage();
    if (!stopAsked()) {
        collectOfflineAirports();
    }
    if (scanFoundAirports) {
        logLine("Airports scan successful");
    }
    return scanFoundAirports;
}

void gf_scanAirports() {
    showMessage("Scanning for addon airports ...", false);
    logLine(fmt::format("\n++++++++++++++++++++++++ airports scan {} starts +++++++++++++++++++++++++++++",
                        AFG_AUTOMATIC ? "automatic " : "manual "));
    const std::vector<std::string> toScan = foldersToScan();
    lf_emptyFolder(folders::myOrbx);
    lf_emptyFolder(folders::myThirdparty);
    const bool found = lf_runAirportScan(toScan);
    if (stopAsked()) {
        logLine("airports scan stopped before its end");
        return;
    }
    if (!found) {
        showMessage("Warning: Scan has not found any add-on airports", true);
    }
    SCAN_AIRPORTS.set(false);
    saveParameter(SCAN_AIRPORTS);
    showParameter(SCAN_AIRPORTS);
    logLine("-------------------------- airports scan ends    ----------------------------\n");
}

} // namespace kst
