#include "platform/win32/utf16.h"

#include <windows.h>

namespace kst::platform {

namespace {

/// Empty when the system refuses the text.
std::wstring toWide(std::string_view text, DWORD flags) {
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_UTF8, flags, text.data(), size, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(CP_UTF8, flags, text.data(), size, result.data(), needed);
    return result;
}

} // namespace

std::wstring wideFromUtf8(std::string_view text) {
    return text.empty() ? std::wstring() : toWide(text, 0);
}

std::optional<std::wstring> strictWideFromUtf8(std::string_view text) {
    std::wstring result = text.empty() ? std::wstring() : toWide(text, MB_ERR_INVALID_CHARS);
    if (result.empty() != text.empty()) {
        return std::nullopt;
    }
    return result;
}

std::string utf8FromWide(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), needed, nullptr, nullptr);
    return result;
}

} // namespace kst::platform
