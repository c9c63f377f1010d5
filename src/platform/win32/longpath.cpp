#include "platform/win32/longpath.h"

#include <windows.h>

namespace kst::platform {

std::filesystem::path longPath(const std::filesystem::path& path) {
    // The name of a file that is written beside another is a little longer than the other's; and what one
    // call takes, the next may combine with the working directory.
    constexpr DWORD room = 60;
    const std::wstring& text = path.native();
    const DWORD needed = GetFullPathNameW(text.c_str(), 0, nullptr, nullptr);
    if (needed == 0 || needed + room < MAX_PATH || text.starts_with(LR"(\\?\)") ||
        text.starts_with(LR"(\\.\)")) {
        return path;
    }
    std::wstring full(needed, L'\0');
    full.resize(GetFullPathNameW(text.c_str(), needed, full.data(), nullptr));
    constexpr std::wstring_view server = LR"(\\)";
    return full.starts_with(server) ? LR"(\\?\UNC\)" + full.substr(server.size()) : LR"(\\?\)" + full;
}

} // namespace kst::platform
