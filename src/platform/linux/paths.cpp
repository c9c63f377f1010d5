#include "platform/paths.h"

namespace kst::platform {

std::filesystem::path pathFromUtf8(std::string_view text) {
    return std::filesystem::path(text);
}

std::string utf8FromPath(const std::filesystem::path& path) {
    return path.native();
}

} // namespace kst::platform
