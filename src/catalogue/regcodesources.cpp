#include "catalogue/regcodesources.h"

#include "catalogue/liverytables.h"
#include "catalogue/regcodefiles.h"
#include "catalogue/reportfile.h"
#include "catalogue/scannedliveries.h"
#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "install/download.h"
#include "platform/paths.h"

#include <algorithm>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

constexpr const char* listArchive = "AIG-regcodes.zip";
const fs::path listFile = folders::input / "AIG-regcodes.xml";

/// The running report, for OfflineRegcodes.txt.
std::vector<std::string> offlineLines;

std::string_view plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

std::string folderErrors() {
    return fmt::format("There were errors in processing the regcode files in folder \"{}\", see the Log.txt",
                       platform::utf8FromPath(folders::myRegcodes));
}

/// Takes the titles of all entries without registrations; gives their number.
std::size_t takeDontUseTitles(std::vector<RegcodeEntry>& entries) {
    std::size_t count = 0;
    for (RegcodeEntry& entry : entries) {
        if (entry.regcodes.empty()) {
            dontUseTitles.insert(std::move(entry.title));
            ++count;
        }
    }
    return count;
}

void removeListFile() {
    std::error_code error;
    fs::remove(listFile, error);
    if (error) {
        logLine(
            fmt::format("{} could not be deleted: {}", platform::utf8FromPath(listFile), error.message()));
    }
}

bool fetchList() {
    return lf_fetchArchive(listArchive, listFile);
}

/// What one source changed.
struct Changes {
    std::size_t added = 0;
    std::size_t replaced = 0;
    std::size_t special = 0;
};

void tieRegcode(const std::string& regcode, std::string_view title, Changes& changes) {
    const auto [place, isNew] = liveryTables().regcodeTitles.try_emplace(regcode, title);
    if (isNew) {
        ++changes.added;
    } else if (place->second != title) {
        offlineLines.push_back(fmt::format("   regcode {} for \"{}\", instead of the same for \"{}\"",
                                           regcode, title, place->second));
        place->second = title;
        ++changes.replaced;
    }
}

/// Lists may name many liveries that are not installed: those are passed over.
void applyEntries(const std::vector<RegcodeEntry>& entries) {
    Changes changes;
    for (const RegcodeEntry& entry : entries) {
        const std::string_view title = gf_findTitle(entry.title);
        if (title.empty()) {
            continue;
        }
        for (const std::string& regcode : entry.regcodes) {
            tieRegcode(regcode, title, changes);
        }
        if (entry.special) {
            liveryTables().specialTitles.insert(title);
            ++changes.special;
        }
    }
    std::string text = fmt::format("{} new regcode{} added", changes.added, plural(changes.added));
    if (changes.replaced > 0) {
        text += fmt::format(", {} regcode{} replaced", changes.replaced, plural(changes.replaced));
    }
    if (changes.special > 0) {
        text += fmt::format(", {} regcode{} defined as special", changes.special, plural(changes.special));
    }
    offlineLines.push_back(std::move(text));
}

void applyList() {
    const std::string listName = platform::utf8FromPath(listFile);
    if (!fetchList()) {
        logLine("reading AIG-regcodes failed?");
        return;
    }
    offlineLines.push_back("Processing file " + listName);
    std::vector<RegcodeEntry> entries;
    if (!lf_readRegcodeXml(listFile, entries)) {
        offlineLines.push_back(fmt::format(
            "There were errors in processing the AIG-regcode file \"{}\", see the Log.txt", listName));
    }
    applyEntries(entries);
    removeListFile();
}

void applyFolder() {
    if (countFiles(folders::myRegcodes) == 0) {
        return;
    }
    offlineLines.push_back("Processing files in " + platform::utf8FromPath(folders::myRegcodes));
    std::vector<RegcodeEntry> entries;
    if (!lf_readRegcodeFolder(folders::myRegcodes, entries)) {
        showMessage(folderErrors(), true);
    }
    applyEntries(entries);
}

/// What `regcodeTitles` says about one livery's registration; the words of a clash, or nothing.
std::string tieInline(const LiveryData& livery) {
    const std::string_view title = gf_findTitle(livery.title);
    if (title.empty()) {
        return fmt::format("==> [{} {}] {} \"{}\" not available, system error, should not happen?",
                           livery.airline, livery.model, livery.regcode, livery.title);
    }
    const auto [place, isNew] = liveryTables().regcodeTitles.try_emplace(livery.regcode, title);
    if (isNew || place->second == title) {
        return {};
    }
    return fmt::format("{} \"{}\" => already in use by \"{}\"", livery.regcode, title, place->second);
}

} // namespace

void gf_inlineRegcodes() {
    std::vector<std::string> clashes;
    for (const LiveryData& livery : scannedLiveries) {
        if (livery.regcode.empty()) {
            continue;
        }
        if (std::string clash = tieInline(livery); !clash.empty()) {
            clashes.push_back(std::move(clash));
        }
    }
    if (clashes.empty()) {
        return;
    }
    std::sort(clashes.begin(), clashes.end());
    const fs::path file = folders::errors / "InlineRegcodes.txt";
    writeReport(file, clashes);
    logLine(
        fmt::format("{} in-line regcode clashes, see \"{}\"", clashes.size(), platform::utf8FromPath(file)));
}

void gf_readRegcodeSources() {
    offlineLines.clear();
    applyList();
    applyFolder();
    const fs::path file = folders::info / "OfflineRegcodes.txt";
    std::error_code ignored;
    fs::remove(file, ignored);
    if (offlineLines.empty()) {
        return;
    }
    writeReport(file, offlineLines);
    logLine(fmt::format("Offline regcode files processed, results can be found in \"{}\"",
                        platform::utf8FromPath(file)));
    if (const std::size_t count = liveryTables().specialTitles.size(); count > 0) {
        logLine(fmt::format("{} special liveries", count));
    }
    offlineLines.clear();
}

void gf_readDontUseTitles() {
    const std::string listName = platform::utf8FromPath(listFile);
    if (!fetchList()) {
        logLine(fmt::format("reading {} failed?", listName));
    } else {
        std::vector<RegcodeEntry> entries;
        if (!lf_readRegcodeXml(listFile, entries)) {
            offlineLines.push_back(
                fmt::format("There were errors in processing the file \"{}\", see the Log.txt", listName));
        }
        const std::size_t count = takeDontUseTitles(entries);
        logLine(fmt::format("{} don't use title{} read", count, plural(count)));
        removeListFile();
    }
    if (countFiles(folders::myRegcodes) > 0) {
        std::vector<RegcodeEntry> entries;
        if (!lf_readRegcodeFolder(folders::myRegcodes, entries)) {
            offlineLines.push_back(folderErrors());
        }
        const std::size_t count = takeDontUseTitles(entries);
        logLine(fmt::format("{} don't use title{} read from files in {}", count, plural(count),
                            platform::utf8FromPath(folders::myRegcodes)));
    }
}

} // namespace kst
