#include "catalogue/store.h"

#include "catalogue/liveryreports.h"
#include "catalogue/liverytables.h"
#include "catalogue/referencereader.h"
#include "catalogue/regcodesources.h"
#include "catalogue/scannedliveries.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/xmlmeta.h"
#include "platform/paths.h"

#include <algorithm>
#include <atomic>

#include <fmt/format.h>

namespace kst {

namespace {

bool tablesBuilt = false; ///< worker
/// The operator asked for a scan; the worker empties the tables before it builds them anew.
std::atomic<bool> emptyingAsked{false};

LiveryData liveryOf(const pugi::xml_node& node) {
    return {.airline = node.attribute("airl").value(),
            .model = node.attribute("type").value(),
            .title = node.attribute("title").value(),
            .regcode = node.attribute("atcid").value(),
            .priority = 0,
            .cargo = textMeansTrue(node.attribute("cargo").value())};
}

void buildTables() {
    gf_buildAirlineIndex(scannedLiveries);
    gf_buildAirlineModelTitles();
    gf_inlineRegcodes();
    gf_readRegcodeSources();
    const LiveryTables& tables = liveryTables();
    logLine(fmt::format("{} registration codes", tables.regcodeTitles.size()));
    gf_buildModelTitles();
    logLine(fmt::format("{} airlines, {} pax aircraft models and {} cargo aircraft models",
                        tables.airlineIndex.size(), tables.modelTitles[paxKind].size(),
                        tables.modelTitles[cargoKind].size()));
    gf_buildSimilarTables();
    gf_reportGenerics();
    for (int category = 0; category < categoryCount; ++category) {
        gf_reportCategory(static_cast<Category>(category));
    }
}

} // namespace

std::filesystem::path liveriesStorePath() {
    return folders::output / "LiveriesScanned.xml";
}

void lf_readLiveries() {
    readLiveriesFrom(liveriesStorePath());
}

void readLiveriesFrom(const std::filesystem::path& path) {
    scannedLiveries.clear();
    const std::string name = platform::utf8FromPath(path);
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        throw UserErrorException(51, fmt::format("File {} not found", name));
    }
    checkXmlMeta(document);
    const pugi::xml_node liveries = document.child("liveries");
    if (!liveries) {
        throw UserErrorException(52, fmt::format("{} does not contain a <liveries> section", name));
    }
    for (const pugi::xml_node node : liveries.children("liv")) {
        scannedLiveries.push_back(liveryOf(node));
    }
    if (scannedLiveries.empty()) {
        throw UserErrorException(533, name + " does not contain liveries");
    }
    logLine(fmt::format("{} liveries read from {}", scannedLiveries.size(), name));
    lf_sortLiveries(scannedLiveries);
    scannedLiveries.erase(std::unique(scannedLiveries.begin(), scannedLiveries.end()), scannedLiveries.end());
}

void gf_processScannedLiveries() {
    if (emptyingAsked.exchange(false)) {
        liveryTables() = {};
        tablesBuilt = false;
    }
    if (tablesBuilt) {
        logLine("Processing scanned liveries skipped; already done in previous start-up");
        return;
    }
    liveryTables() = {};
    lf_readLiveries();
    updateStatus(Band::Status, [](StatusValues& status) { status.liveryCount = scannedLiveries.size(); });
    buildTables();
    tablesBuilt = true;
    scannedLiveries = {};
}

void gf_emptyCatalogue() {
    emptyingAsked = true;
}

} // namespace kst
