#include "platform/registry.h"

#include "platform/win32/utf16.h"

#include <windows.h>

namespace kst::platform {

namespace {

/// Far more than a path or a port number takes.
constexpr DWORD largestValueBytes = 1024 * 1024;

/// A key open for reading, in the 64-bit view.
class Key {
public:
    Key(RegistryHive hive, std::string_view name) {
        const HKEY root = hive == RegistryHive::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
        if (RegOpenKeyExW(root, wideFromUtf8(name).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key_) !=
            ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    ~Key() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY handle() const { return key_; }

private:
    HKEY key_ = nullptr;
};

} // namespace

bool registryKeyExists(RegistryHive hive, std::string_view key) {
    return Key(hive, key).handle() != nullptr;
}

std::optional<std::string> registryText(RegistryHive hive, std::string_view key, std::string_view name) {
    const Key open(hive, key);
    if (open.handle() == nullptr) {
        return std::nullopt;
    }
    const std::wstring wideName = wideFromUtf8(name);
    // A text may name environment variables; both kinds are given with the variables replaced.
    constexpr DWORD texts = RRF_RT_REG_SZ;
    std::wstring text;
    for (DWORD bytes = 512;;) {
        text.resize(bytes / sizeof(wchar_t));
        const LSTATUS status =
            RegGetValueW(open.handle(), nullptr, wideName.c_str(), texts, nullptr, text.data(), &bytes);
        if (status == ERROR_SUCCESS) {
            text.resize(bytes / sizeof(wchar_t));
            break;
        }
        if (status != ERROR_MORE_DATA || bytes > largestValueBytes) {
            return std::nullopt;
        }
    }
    // The system adds a final zero where the stored value has none; more of them are not part of the text.
    if (const std::size_t end = text.find(L'\0'); end != std::wstring::npos) {
        text.resize(end);
    }
    return utf8FromWide(text);
}

} // namespace kst::platform
