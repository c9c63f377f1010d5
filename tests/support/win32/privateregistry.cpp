#include "support/win32/privateregistry.h"

#include <system_error>

namespace kst::test {

namespace {

void check(LSTATUS status) {
    if (status != ERROR_SUCCESS) {
        throw std::system_error(static_cast<int>(status), std::system_category(), "the registry of a test");
    }
}

/// A key open for everything, created where it is missing.
class Key {
public:
    Key(HKEY parent, const std::wstring& name) {
        check(RegCreateKeyExW(parent, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr,
                              &key_, nullptr));
    }
    ~Key() { RegCloseKey(key_); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY handle() const { return key_; }

private:
    HKEY key_ = nullptr;
};

} // namespace

PrivateRegistry::PrivateRegistry() {
    // What the system still holds open of the last one cannot be deleted yet.
    static int count = 0;
    key_ = L"Software\\Kestrane_P3D tests\\" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++count);
    const Key user(HKEY_CURRENT_USER, key_ + L"\\user");
    const Key machine(HKEY_CURRENT_USER, key_ + L"\\machine");
    check(RegOverridePredefKey(HKEY_CURRENT_USER, user.handle()));
    check(RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine.handle()));
}

PrivateRegistry::~PrivateRegistry() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, key_.c_str());
}

void makeRegistryKey(HKEY hive, const std::wstring& key) {
    const Key made(hive, key);
}

void setRegistryValue(HKEY hive, const std::wstring& key, const std::wstring& name, DWORD type,
                      const void* data, std::size_t bytes) {
    const Key open(hive, key);
    check(RegSetValueExW(open.handle(), name.c_str(), 0, type, static_cast<const BYTE*>(data),
                         static_cast<DWORD>(bytes)));
}

void setRegistryText(HKEY hive, const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    setRegistryValue(hive, key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

} // namespace kst::test
