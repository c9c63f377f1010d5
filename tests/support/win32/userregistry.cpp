#include "support/userregistry.h"

#include "platform/win32/utf16.h"
#include "support/win32/privateregistry.h"

#include <sstream>
#include <utility>
#include <vector>

namespace kst::test {

void writeRegistry(const TempFolder&, std::string_view text) {
    // What the last call wrote is replaced.
    static std::vector<std::pair<HKEY, std::wstring>> written;
    for (const auto& [hive, key] : written) {
        RegDeleteKeyExW(hive, key.c_str(), KEY_WOW64_64KEY, 0);
    }
    written.clear();
    std::istringstream lines{std::string(text)};
    std::string line;
    HKEY hive = nullptr;
    std::wstring key;
    while (std::getline(lines, line)) {
        const std::size_t split = line.find(line.starts_with('[') ? '\\' : '=');
        if (split == std::string::npos) {
            continue;
        }
        if (line.starts_with('[')) {
            hive = line.substr(1, split - 1) == "HKEY_LOCAL_MACHINE" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
            key = platform::wideFromUtf8(line.substr(split + 1, line.find(']') - split - 1));
            makeRegistryKey(hive, key);
            written.emplace_back(hive, key);
        } else {
            setRegistryText(hive, key, platform::wideFromUtf8(line.substr(0, split)),
                            platform::wideFromUtf8(line.substr(split + 1)));
        }
    }
}

} // namespace kst::test
