#include "catalogue/store.h"

#include "catalogue/matching.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/paths.h"

#include <atomic>

#include <fmt/format.h>

namespace kst {

namespace {

bool tablesBuilt = false; ///< worker
/// The operator asked for a scan; the worker empties the tables before it builds them anew.
std::atomic<bool> emptyingAsked{false};

void readStore() {
    const auto path = liveriesStorePath();
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        throw UserErrorException(51, fmt::format("File {} not found", platform::utf8FromPath(path)));
    }
    const pugi::xml_node liveries = document.child("liveries");
    if (!liveries) {
        throw UserErrorException(
            52, fmt::format("{} does not contain a <liveries> section", platform::utf8FromPath(path)));
    }
    std::uint64_t count = 0;
    for (const pugi::xml_node livery : liveries.children("liv")) {
        addLiveryTitle(livery.attribute("airl").value(), livery.attribute("type").value(),
                       livery.attribute("title").value());
        ++count;
    }
    if (count == 0) {
        throw UserErrorException(533, platform::utf8FromPath(path) + " does not contain liveries");
    }
    logLine(fmt::format("{} liveries read from {}", count, platform::utf8FromPath(path)));
    updateStatus(Band::Status, [count](StatusValues& status) { status.liveryCount = count; });
}

} // namespace

std::filesystem::path liveriesStorePath() {
    return folders::output / "LiveriesScanned.xml";
}

void gf_scanLiveries() {
    if (SCAN_LIVERIES) {
        if (LIG_AUTOMATIC) {
            throw UserErrorException(
                43, "Automatic scan has not found any liveries, switch off automatic and set "
                    "lfolder parameter(-s), Manual 5.1");
        }
        throw UserErrorException(48,
                                 "Set lfolder parameter(-s) to your liveries first, see Manual 5.1 (or check "
                                 "Liveries automatic)");
    }
    gf_processScannedLiveries();
}

void gf_processScannedLiveries() {
    if (emptyingAsked.exchange(false)) {
        resetMatching();
        tablesBuilt = false;
    }
    if (tablesBuilt) {
        logLine("Processing scanned liveries skipped; already done in previous start-up");
        return;
    }
    readStore();
    tablesBuilt = true;
}

void gf_emptyCatalogue() {
    emptyingAsked = true;
}

} // namespace kst
