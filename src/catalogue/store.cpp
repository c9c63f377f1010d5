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
#include "core/xmlsection.h"
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

/// Reads the elements behind those before. Returns whether the list is still as the program writes it: each
/// livery behind the one before, none twice.
bool takeLiveries(const pugi::xml_node& parent) {
    bool inOrder = true;
    for (auto node = parent.first_child(); node; node = node.next_sibling()) {
        if (sameName(node.name(), "liv")) {
            LiveryData& livery = scannedLiveries.emplace_back();
            takeLivery(node, livery);
            inOrder = inOrder && (scannedLiveries.size() == 1 || *(&livery - 1) < livery);
        }
    }
    return inOrder;
}

/// Takes the liveries while the text is parsed, a few at a time: the tree of the whole fits no cache. False
/// when the text is no XML.
bool parseLiveries(std::string& text, pugi::xml_document& document, bool& inOrder) {
    constexpr std::size_t mostExpected = 1'000'000; // a text that lies gets no memory for it
    const auto section = findXmlSection(text, "liveries");
    if (!section) {
        const bool parsed = static_cast<bool>(document.load_buffer(text.data(), text.size()));
        inOrder = takeLiveries(document.child("liveries"));
        return parsed;
    }
    scannedLiveries.reserve(std::min(section->children, mostExpected));
    return parseAroundSection(text, *section, document) &&
           parseSection(text, *section, [&inOrder](const pugi::xml_node& piece) {
               inOrder = takeLiveries(piece) && inOrder;
           });
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
    constexpr std::size_t largestStore = std::size_t{512} * 1024 * 1024;
    const std::string name = platform::utf8FromPath(path);
    std::string text;
    if (readFile(path, text, largestStore)) {
        throw UserErrorException(51, fmt::format("File {} not found", name));
    }
    readLiveriesText(text, name);
}

void readLiveriesText(std::string& text, const std::string& name) {
    scannedLiveries.clear();
    pugi::xml_document document;
    bool inOrder = true;
    if (!parseLiveries(text, document, inOrder)) {
        scannedLiveries.clear();
        throw UserErrorException(51, fmt::format("File {} not found", name));
    }
    checkXmlMeta(document);
    if (!document.child("liveries")) {
        throw UserErrorException(52, fmt::format("{} does not contain a <liveries> section", name));
    }
    if (scannedLiveries.empty()) {
        throw UserErrorException(533, name + " does not contain liveries");
    }
    logLine(fmt::format("{} liveries read from {}", scannedLiveries.size(), name));
    if (!inOrder) {
        lf_sortLiveries(scannedLiveries);
        scannedLiveries.erase(std::unique(scannedLiveries.begin(), scannedLiveries.end()),
                              scannedLiveries.end());
    }
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
