#pragma once

#include <string>

#include <windows.h>

namespace kst::test {

/// Both hives of the registry are empty, and private to this process, as long as the object lives. One at a
/// time.
class PrivateRegistry {
public:
    PrivateRegistry();
    ~PrivateRegistry();
    PrivateRegistry(const PrivateRegistry&) = delete;
    PrivateRegistry& operator=(const PrivateRegistry&) = delete;

private:
    std::wstring key_;
};

/// Creates a key in the 64-bit view where it is missing. Throws std::system_error.
void makeRegistryKey(HKEY hive, const std::wstring& key);

/// Writes a value in the 64-bit view, creating its key. Throws std::system_error.
void setRegistryValue(HKEY hive, const std::wstring& key, const std::wstring& name, DWORD type,
                      const void* data, std::size_t bytes);
void setRegistryText(HKEY hive, const std::wstring& key, const std::wstring& name, const std::wstring& text);

} // namespace kst::test
