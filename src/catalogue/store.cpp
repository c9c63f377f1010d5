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
#include "core/xmlnames.h"
#include "platform/paths.h"

#include <algorithm>
#include <atomic>

#include <fmt/format.h>

namespace kst {

namespace {

bool tablesBuilt = false; ///< worker
/// The operator asked for a scan; the worker empties the tables before it builds them anew.
std::atomic<bool> emptyingAsked{false};

/// One walk over the attributes: there are tens of thousands of elements.
void takeLivery(const pugi::xml_node& node, LiveryData& livery) {
    for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
        const char* const name = attribute.name();
        if (sameName(name, "airl")) {
            livery.airline = attribute.value();
        } else if (sameName(name, "type")) {
            livery.model = attribute.value();
        } else if (sameName(name, "title")) {
            livery.title = attribute.value();
        } else if (sameName(name, "atcid")) {
            livery.regcode = attribute.value();
        } else if (sameName(name, "cargo")) {
            livery.cargo = textMeansTrue(attribute.value());
        }
    }
}

void takeLiveries(const pugi::xml_document& document, const std::string& name) {
    scannedLiveries.clear();
    checkXmlMeta(document);
    const pugi::xml_node liveries = document.child("liveries");
    if (!liveries) {
        throw UserErrorException(52, fmt::format("{} does not contain a <liveries> section", name));
    }
    std::size_t count = 0;
    for (auto node = liveries.first_child(); node; node = node.next_sibling()) {
        ++count;
    }
    scannedLiveries.reserve(count);
    bool strictlyInOrder = true; // as the program writes it: each livery behind the one before, none twice
    for (auto node = liveries.first_child(); node; node = node.next_sibling()) {
        if (!sameName(node.name(), "liv")) {
            continue;
        }
        LiveryData& livery = scannedLiveries.emplace_back();
        takeLivery(node, livery);
        strictlyInOrder = strictlyInOrder && (scannedLiveries.size() == 1 || *(&livery - 1) < livery);
    }
    if (scannedLiveries.empty()) {
        throw UserErrorException(533, name + " does not contain liveries");
    }
    logLine(fmt::format("{} liveries read from {}", scannedLiveries.size(), name));
    if (!strictlyInOrder) {
        lf_sortLiveries(scannedLiveries);
        scannedLiveries.erase(std::unique(scannedLiveries.begin(), scannedLiveries.end()),
                              scannedLiveries.end());
    }
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
    const std::string name = platform::utf8FromPath(path);
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        throw UserErrorException(51, fmt::format("File {} not found", name));
    }
    takeLiveries(document, name);
}

void readLiveriesText(std::string_view text, const std::string& name) {
    pugi::xml_document document;
    if (!document.load_buffer(text.data(), text.size())) {
        throw UserErrorException(51, fmt::format("File {} not found", name));
    }
    takeLiveries(document, name);
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
