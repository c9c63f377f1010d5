#include "platform/folderidentity.h"

#include <windows.h>

namespace kst::platform {

std::optional<FolderIdentity> folderIdentity(const std::filesystem::path& folder) {
    constexpr DWORD allShares = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr int halfBits = 32;
    // A folder is only opened with the flag for backups.
    const HANDLE handle = CreateFileW(folder.c_str(), 0, allShares, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION found{};
    const BOOL known = GetFileInformationByHandle(handle, &found);
    CloseHandle(handle);
    if (known == FALSE || (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return std::nullopt;
    }
    return FolderIdentity{found.dwVolumeSerialNumber,
                          std::uint64_t{found.nFileIndexHigh} << halfBits | found.nFileIndexLow};
}

} // namespace kst::platform
