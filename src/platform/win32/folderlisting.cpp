#include "platform/folderlisting.h"

#include "platform/folderidentity.h"
#include "platform/paths.h"

#include <memory>
#include <string_view>

#include <windows.h>

namespace kst::platform {

namespace {

std::error_code lastError() {
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

struct CloseSearches {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::FindClose(handle); }
};

/// A link or junction whose target is no folder tells by its own attributes what it is; one to a folder may
/// lead nowhere.
EntryKind kindOf(const std::filesystem::path& path, DWORD attributes, bool link) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? EntryKind::Other : EntryKind::File;
    }
    return !link || folderIdentity(path) ? EntryKind::Folder : EntryKind::Other;
}

FolderEntry entryOf(const std::filesystem::path& folder, const WIN32_FIND_DATAW& found) {
    // Other reparse points, such as files of a cloud drive, are what they seem.
    const bool link =
        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
        (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
    const std::filesystem::path name = found.cFileName;
    return {utf8FromPath(name), kindOf(folder / name, found.dwFileAttributes, link), link};
}

} // namespace

FolderListing listFolder(const std::filesystem::path& folder) {
    FolderListing listing;
    WIN32_FIND_DATAW found{};
    const std::filesystem::path pattern = (folder.empty() ? std::filesystem::path(".") : folder) / "*";
    HANDLE const handle = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                             nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (handle == INVALID_HANDLE_VALUE) {
        listing.error = lastError();
        return listing;
    }
    const std::unique_ptr<HANDLE, CloseSearches> search(handle);
    listing.identity = folderIdentity(folder);
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            listing.entries.push_back(entryOf(folder, found));
        }
    } while (::FindNextFileW(handle, &found) != 0);
    if (const std::error_code error = lastError(); error.value() != ERROR_NO_MORE_FILES) {
        listing.error = error;
    }
    return listing;
}

} // namespace kst::platform
