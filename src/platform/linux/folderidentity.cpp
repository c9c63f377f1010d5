#include "platform/folderidentity.h"

#include <sys/stat.h>

namespace kst::platform {

std::optional<FolderIdentity> folderIdentity(const std::filesystem::path& folder) {
    struct stat found {};
    if (stat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) {
        return std::nullopt;
    }
    return FolderIdentity{found.st_dev, found.st_ino};
}

} // namespace kst::platform
