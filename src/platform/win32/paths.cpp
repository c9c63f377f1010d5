#include "platform/paths.h"

#include "platform/win32/utf16.h"

namespace kst::platform {

// std::filesystem's own conversions throw at text that is not UTF-8, and at names that are not UTF-16.

std::filesystem::path pathFromUtf8(std::string_view text) {
    return wideFromUtf8(text);
}

std::string utf8FromPath(const std::filesystem::path& path) {
    return utf8FromWide(path.native());
}

std::filesystem::path caseInsensitivePath(const std::filesystem::path& path) {
    return path;
}

} // namespace kst::platform
