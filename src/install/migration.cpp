#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "install/services.h"
#include "install/version.h"

#include <filesystem>

#include <fmt/format.h>

namespace kst {

namespace {

/// An unreadable stored version must not block the start: it counts as unknown, so that everything is scanned
/// anew.
ProgramVersion storedVersion(const std::string& text) {
    try {
        return parseVersion(text);
    } catch (const std::exception& error) {
        logLine(fmt::format("stored program version \"{}\" is not readable: {}", text, error.what()));
        return {};
    }
}

void askForScan(BoolParameter& scan) {
    scan.set(true);
    saveParameter(scan);
    showParameter(scan);
}

} // namespace

void lf_migrateVersion() {
    const ProgramVersion present = thisProgramVersion();
    const std::string storedText = PROGRAM_VERSION.get();
    const ProgramVersion stored = storedText.empty() ? present : storedVersion(storedText);
    if (storedText.empty() || stored != present) {
        PROGRAM_VERSION.set(present.text());
        saveParameter(PROGRAM_VERSION);
    }
    if (present <= stored) {
        return;
    }
    logLine(fmt::format("This is a version update from {} -> {}", stored.text(), present.text()));
    std::filesystem::remove("install_new_version.exe");
    askForScan(SCAN_LIVERIES);
    askForScan(SCAN_AIRPORTS);
}

} // namespace kst
