#include "platform/environment.h"

#include "platform/win32/utf16.h"

#include <windows.h>

namespace kst::platform {

std::optional<std::string> environmentText(const std::string& name) {
    const std::wstring wideName = wideFromUtf8(name);
    std::wstring value;
    // The size that the system names and the value can differ when another thread sets it meanwhile.
    for (DWORD needed = 1; needed > value.size();) {
        value.resize(needed);
        needed = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
        if (needed == 0) {
            return std::nullopt;
        }
        if (needed < value.size()) {
            value.resize(needed);
            break;
        }
    }
    return utf8FromWide(value);
}

} // namespace kst::platform
