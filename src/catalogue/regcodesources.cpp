#include "catalogue/regcodesources.h"

#include "catalogue/regcodefiles.h"
#include "catalogue/scannedliveries.h"
#include "core/files.h"
#include "core/log.h"
#include "install/download.h"
#include "platform/paths.h"

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

} // namespace

void gf_readDontUseTitles() {
    const std::string listName = platform::utf8FromPath(listFile);
    if (!lf_fetchArchive(listArchive, listFile)) {
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
