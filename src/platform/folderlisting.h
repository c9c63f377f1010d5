#pragma once

// Looking into folders, for walks over a great many of them: one call of the system for each block of
// entries, and a query for a single entry only where it is a link.

#include "platform/folderidentity.h"

#include <filesystem>
#include <optional>
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

/// What is in a folder.
struct FolderListing {
    std::vector<FolderEntry> entries;       ///< in no particular order, without "." and ".."
    std::optional<FolderIdentity> identity; ///< of the folder itself; nothing when it cannot be asked
    std::error_code error;                  ///< set when not all entries could be read
};

/// Reads the entries of the folder. Any thread.
FolderListing listFolder(const std::filesystem::path& folder);

} // namespace kst::platform
