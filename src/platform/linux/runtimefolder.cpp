#include "platform/linux/runtimefolder.h"

#include <cstdlib>

#include <fmt/format.h>

#include <sys/stat.h>
#include <unistd.h>

namespace kst::platform {

std::filesystem::path xdgRuntimeFolder() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || folder[0] != '/') {
        return {};
    }
    return folder;
}

std::filesystem::path fallbackRuntimeFolder() {
    const std::string folder = fmt::format("/tmp/pipe-{}", getuid());
    mkdir(folder.c_str(), S_IRWXU);
    // Anybody may write to /tmp: a link, or a folder that another user made first, is not ours to use.
    struct stat found {};
    if (lstat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode) || found.st_uid != getuid()) {
        return {};
    }
    return folder;
}

} // namespace kst::platform
