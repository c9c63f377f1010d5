#include "catalogue/regcodefiles.h"

#include "catalogue/referencereader.h"
#include "catalogue/scramble.h"
#include "core/files.h"
#include "core/log.h"
#include "model/liverydata.h"
#include "platform/paths.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>
#include <pugixml.hpp>

namespace kst {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t shortestListedRegcode = 3;
constexpr std::string_view specialMark = "#";

std::string_view plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

bool wrongLength(std::string_view regcode, std::string_view file) {
    logLine(fmt::format("wrong regcode length \"{}\" in {}", regcode, file));
    return false;
}

fs::path withZeros(const fs::path& file, std::string_view zeros) {
    fs::path name = file.stem();
    name += zeros;
    name += file.extension();
    return file.parent_path() / name;
}

/// A copy that fails costs nothing but the copy.
void keepCopies(const fs::path& file) {
    const auto copy = [](const fs::path& from, const fs::path& to) {
        std::error_code error;
        fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
        if (error) {
            logLine(fmt::format("no copy of {}: {}", platform::utf8FromPath(from), error.message()));
        }
    };
    const fs::path last = withZeros(file, "0");
    std::error_code ignored;
    if (fs::exists(last, ignored)) {
        copy(last, withZeros(file, "00"));
    }
    copy(file, last);
}

/// The items of a comma list that are not empty.
std::vector<std::string_view> listedRegcodes(std::string_view list) {
    std::vector<std::string_view> items = splitCommaList(list);
    std::erase(items, std::string_view{});
    return items;
}

bool decodeInto(RegcodeEntry& entry, std::string_view list, std::string_view file) {
    bool good = true;
    for (const std::string_view item : listedRegcodes(list)) {
        if (item.size() > longestScrambledRegcode) {
            good = wrongLength(item, file);
        } else {
            entry.regcodes.push_back(gf_decodeRegcode(item));
        }
    }
    return good;
}

bool isTextFile(const fs::directory_entry& entry) {
    std::error_code ignored;
    std::string extension = platform::utf8FromPath(entry.path().extension());
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return extension == ".TXT" && entry.is_regular_file(ignored);
}

bool readRegcodeFile(const fs::path& path, std::vector<RegcodeEntry>& entries) {
    const std::string name = platform::utf8FromPath(path);
    logLine(fmt::format("Processing regcodes file \"{}\"", name));
    std::vector<std::string> lines;
    bool good = gf_readExtTextFileToStringVector(path, lines);
    for (const std::string& line : lines) {
        good = readRegcodeLine(line, name, entries) && good;
    }
    return good;
}

/// Two or more registrations: those of a possible length count.
bool addListed(RegcodeEntry entry, const std::vector<std::string_view>& regcodes, std::string_view file,
               std::vector<RegcodeEntry>& entries) {
    bool good = true;
    for (const std::string_view regcode : regcodes) {
        if (regcode.size() < shortestListedRegcode || regcode.size() > longestRegcode) {
            good = wrongLength(regcode, file);
        } else {
            entry.regcodes.emplace_back(regcode);
        }
    }
    if (entry.regcodes.empty()) {
        logLine(fmt::format("{} ; regs empty? ", file));
    } else {
        entries.push_back(std::move(entry));
    }
    return good;
}

} // namespace

bool lf_readRegcodeXml(const fs::path& file, std::vector<RegcodeEntry>& entries) {
    const std::string name = platform::utf8FromPath(file);
    pugi::xml_document document;
    if (!document.load_file(file.c_str())) {
        logLine(fmt::format("Failed to load {}", name));
        return false;
    }
    const std::size_t before = entries.size();
    bool good = true;
    for (const pugi::xml_node node : document.child("AIG-regcodes").children("livery")) {
        RegcodeEntry entry{.title = node.attribute("title").value(),
                           .regcodes = {},
                           .special = textMeansTrue(node.attribute("special").value())};
        if (entry.title.empty()) {
            continue;
        }
        const std::string_view list = node.attribute("reg").value();
        good = decodeInto(entry, list, name) && good;
        // Only a list that was empty to begin with bars the title.
        if (!entry.regcodes.empty() || listedRegcodes(list).empty()) {
            entries.push_back(std::move(entry));
        }
    }
    keepCopies(file);
    const std::size_t count = entries.size() - before;
    logLine(fmt::format("{} liverie{} read from {}", count, plural(count), name));
    return good;
}

bool readRegcodeLine(std::string_view line, std::string_view file, std::vector<RegcodeEntry>& entries) {
    constexpr std::size_t mostFields = 3;
    const std::vector<std::string_view> fields = splitTrimmed(line, ';');
    if (fields.size() > mostFields) {
        logLine(fmt::format("{}: wrong format \"{}\"", file, line));
        return false;
    }
    RegcodeEntry entry{.title = std::string(fields.front()), .regcodes = {}, .special = false};
    if (fields.size() == 1) {
        if (!entry.title.empty()) {
            entries.push_back(std::move(entry));
        }
        return true;
    }
    const std::vector<std::string_view> regcodes = listedRegcodes(fields[1]);
    if (regcodes.empty()) {
        return true;
    }
    if (regcodes.size() == 1) {
        if (fields[1].size() > longestRegcode) {
            return wrongLength(fields[1], file);
        }
        // A title with one registration is taken to be that aircraft's own.
        entry.special = true;
        entry.regcodes.emplace_back(regcodes.front());
        entries.push_back(std::move(entry));
        return true;
    }
    entry.special = fields.size() == mostFields && fields[2] == specialMark;
    return addListed(std::move(entry), regcodes, file, entries);
}

bool lf_readRegcodeFolder(const fs::path& folder, std::vector<RegcodeEntry>& entries) {
    const std::size_t before = entries.size();
    bool good = true;
    fs::path present = folder;
    try {
        std::vector<fs::path> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            if (isTextFile(entry)) {
                files.push_back(entry.path());
            }
        }
        std::sort(files.begin(), files.end());
        for (const fs::path& file : files) {
            present = file;
            good = readRegcodeFile(file, entries) && good;
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("Error in reading regcode file {}, what: {}", platform::utf8FromPath(present),
                            error.what()));
        good = false;
    }
    const std::size_t count = entries.size() - before;
    logLine(fmt::format("{} liverie{} read", count, plural(count)));
    return good;
}

} // namespace kst
