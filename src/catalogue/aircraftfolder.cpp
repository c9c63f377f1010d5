#include "catalogue/aircraftfolder.h"

#include "catalogue/cfgpaths.h"
#include "platform/filenames.h"
#include "platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include <utf8.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

/// The simulator's system drops dots and blanks at the end of a name.
std::string_view withoutTrailingDots(std::string_view name) {
    return name.substr(0, name.find_last_not_of(". ") + 1);
}

/// A file without a mark may be in the old 8-bit character set of the system; its file names are not.
std::string utf8Name(std::string_view name) {
    if (utf8::is_valid(name)) {
        return std::string(name);
    }
    std::string converted;
    for (const char c : name) {
        utf8::append(static_cast<char32_t>(static_cast<unsigned char>(c)), std::back_inserter(converted));
    }
    return converted;
}

std::string comparedName(std::string_view name) {
    return platform::foldedName(withoutTrailingDots(name));
}

bool isPath(std::string_view name) {
    return name.find_first_of("\\/") != std::string_view::npos;
}

fs::path pathIn(const std::string& folder, const std::string& name) {
    const fs::path path = platform::pathFromUtf8(folder) / pathFromCfgText(withoutTrailingDots(name));
    return platform::caseInsensitivePath(path);
}

} // namespace

AircraftFolder::AircraftFolder(std::string path, std::span<const platform::FolderEntry> entries)
    : path_(std::move(path)) {
    for (const platform::FolderEntry& entry : entries) {
        if (entry.kind == platform::EntryKind::Folder) {
            folders_.insert(comparedName(entry.name));
        } else if (entry.kind == platform::EntryKind::File) {
            if (std::string name = comparedName(entry.name); name.ends_with(".air")) {
                airFiles_.insert(std::move(name));
            }
        }
    }
}

bool AircraftFolder::holdsFolder(std::string_view name) const {
    const std::string wanted = utf8Name(name);
    if (!isPath(wanted)) {
        return folders_.contains(comparedName(wanted));
    }
    std::error_code ignored;
    return fs::is_directory(pathIn(path_, wanted), ignored);
}

bool AircraftFolder::holdsAirFile(std::string_view name) const {
    const std::string wanted = utf8Name(name);
    if (!isPath(wanted)) {
        return airFiles_.contains(comparedName(wanted));
    }
    std::error_code ignored;
    return fs::is_regular_file(pathIn(path_, wanted), ignored);
}

} // namespace kst
