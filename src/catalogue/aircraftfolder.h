#pragma once

// The folder of one aircraft.cfg, as far as its sections refer to it: subfolders and .air files. Taken from
// the walk's own listing, so that checking ten sections asks the file system nothing.

#include "platform/folderlisting.h"

#include <span>
#include <string>
#include <string_view>
#include <unordered_set>

namespace kst {

class AircraftFolder {
public:
    /// `path` is the folder's path as text, `entries` what it holds.
    AircraftFolder(std::string path, std::span<const platform::FolderEntry> entries);

    const std::string& path() const { return path_; }
    /// Whether the folder holds a subfolder, or an .air file, of this name, as a configuration file writes
    /// it: case does not count, dots and blanks at the end do not count, and it may be a path (with
    /// backslashes).
    bool holdsFolder(std::string_view name) const;
    bool holdsAirFile(std::string_view name) const;

private:
    std::string path_;
    std::unordered_set<std::string> folders_;  ///< names as they are compared
    std::unordered_set<std::string> airFiles_; ///< names as they are compared
};

} // namespace kst
