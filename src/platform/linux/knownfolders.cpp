#include "platform/knownfolders.h"

#include <array>
#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace kst::platform {

namespace {

std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') {
        return home;
    }
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    return {};
}

/// The folder that an environment variable of the XDG base directories names; they must be absolute paths
/// and are ignored otherwise. Else a folder below the home folder.
std::filesystem::path folderOf(const char* variable, const char* belowHome) {
    const char* folder = std::getenv(variable);
    if (folder != nullptr && folder[0] == '/') {
        return folder;
    }
    const std::filesystem::path home = homeFolder();
    return home.empty() ? home : home / belowHome;
}

} // namespace

std::filesystem::path roamingAppData() {
    return folderOf("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path programData() {
    return folderOf("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path userDocuments() {
    return folderOf("XDG_DOCUMENTS_DIR", "Documents");
}

std::filesystem::path publicDocuments() {
    return folderOf("XDG_PUBLICSHARE_DIR", "Public");
}

} // namespace kst::platform
