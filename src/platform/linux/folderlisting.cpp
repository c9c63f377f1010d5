#include "platform/folderlisting.h"

#include <cerrno>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace kst::platform {

namespace {

EntryKind kindOf(mode_t mode) {
    if (S_ISREG(mode)) {
        return EntryKind::File;
    }
    return S_ISDIR(mode) ? EntryKind::Folder : EntryKind::Other;
}

/// Asks the file system about one entry: for links, and where the listing did not say.
FolderEntry queried(int folder, const char* name, bool link) {
    struct stat status {};
    FolderEntry entry{name, EntryKind::Other, link};
    if (!link && ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.link = S_ISLNK(status.st_mode);
        entry.kind = kindOf(status.st_mode);
    }
    if (entry.link && ::fstatat(folder, name, &status, 0) == 0) {
        entry.kind = kindOf(status.st_mode);
    }
    return entry;
}

struct CloseFolder {
    void operator()(DIR* stream) const { ::closedir(stream); }
};

} // namespace

FolderListing listFolder(const std::filesystem::path& folder) {
    FolderListing listing;
    const std::unique_ptr<DIR, CloseFolder> stream(::opendir(folder.empty() ? "." : folder.c_str()));
    if (stream == nullptr) {
        listing.error = {errno, std::generic_category()};
        return listing;
    }
    struct stat status {};
    if (::fstat(::dirfd(stream.get()), &status) == 0) {
        listing.identity = FolderIdentity{status.st_dev, status.st_ino};
    }
    std::vector<FolderEntry>& entries = listing.entries;
    while (true) {
        errno = 0;
        const dirent* const found = ::readdir(stream.get());
        if (found == nullptr) {
            // Zero, and so no error, at the end of the folder.
            listing.error = {errno, std::generic_category()};
            return listing;
        }
        const std::string_view name = found->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        switch (found->d_type) {
        case DT_REG:
            entries.push_back({std::string(name), EntryKind::File, false});
            break;
        case DT_DIR:
            entries.push_back({std::string(name), EntryKind::Folder, false});
            break;
        case DT_LNK:
        case DT_UNKNOWN:
            entries.push_back(queried(::dirfd(stream.get()), found->d_name, found->d_type == DT_LNK));
            break;
        default:
            entries.push_back({std::string(name), EntryKind::Other, false});
        }
    }
}

} // namespace kst::platform
