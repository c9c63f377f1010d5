#include "platform/paths.h"
#include "platform/replacement.h"
#include "platform/win32/longpath.h"

#include <algorithm>

#include <windows.h>

namespace kst::platform {

namespace {

std::error_code lastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

/// Closes a handle at the end of its scope.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (valid()) {
            CloseHandle(handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    bool valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

std::error_code writeTemporary(const std::filesystem::path& temporary, std::string_view content) {
    const Handle file(CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid()) {
        return lastError();
    }
    constexpr std::size_t largestPiece = 1 << 30;
    while (!content.empty()) {
        DWORD written = 0;
        const auto piece = static_cast<DWORD>(std::min(content.size(), largestPiece));
        if (!WriteFile(file.get(), content.data(), piece, &written, nullptr)) {
            return lastError();
        }
        content.remove_prefix(written);
    }
    return FlushFileBuffers(file.get()) ? std::error_code{} : lastError();
}

/// A reader that does not share the file, a virus scanner or an indexer say, is gone within moments; another
/// writer of the same file as well.
bool mayPass(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_ACCESS_DENIED;
}

std::error_code moveOver(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    constexpr int attempts = 20;
    constexpr DWORD pauseMs = 25;
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(temporary.c_str(), target.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return {};
        }
        const std::error_code error = lastError();
        const DWORD attributes = GetFileAttributesW(target.c_str());
        constexpr DWORD lasting = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
        const bool forGood = attributes != INVALID_FILE_ATTRIBUTES && (attributes & lasting) != 0;
        if (!mayPass(static_cast<DWORD>(error.value())) || forGood || attempt == attempts) {
            return error;
        }
        Sleep(pauseMs);
    }
}

bool processRuns(std::uint32_t process) {
    const Handle handle(OpenProcess(SYNCHRONIZE, FALSE, process));
    return handle.valid() ? WaitForSingleObject(handle.get(), 0) == WAIT_TIMEOUT
                          : GetLastError() == ERROR_ACCESS_DENIED;
}

} // namespace

std::error_code replaceFileContent(const std::filesystem::path& path, std::string_view content) {
    const std::filesystem::path target = longPath(path);
    const std::filesystem::path temporary = replacementPath(target, GetCurrentProcessId());
    std::error_code error = writeTemporary(temporary, content);
    if (!error) {
        error = moveOver(temporary, target);
    }
    if (error && error != std::errc::file_exists) {
        DeleteFileW(temporary.c_str());
    }
    return error;
}

void removeLeftovers(const std::filesystem::path& folder) {
    removeReplacements(folder, processRuns);
}

} // namespace kst::platform
