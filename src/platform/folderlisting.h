#pragma once

// Looking into folders, for walks over a great many of them: one call of the system for each block of
// entries, and a query for a single entry only where it is a link.

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace kst::platform {

enum class EntryKind { File, Folder, Other };

struct FolderEntry {
    std::string name;                  ///< UTF-8, without its folder
    EntryKind kind = EntryKind::Other; ///< of what a link leads to; a broken link is Other
    bool link = false;                 ///< a symbolic link, or a junction
};

/// Reads the entries of the folder, in no particular order, without "." and "..". Gives the error when the
/// folder cannot be read; what was read before it stands in `entries`, which is replaced.
std::error_code listFolder(const std::filesystem::path& folder, std::vector<FolderEntry>& entries);

} // namespace kst::platform
