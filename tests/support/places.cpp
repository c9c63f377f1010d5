#include "support/places.h"

#include "platform/paths.h"

#include <algorithm>

namespace kst::test {

std::filesystem::path sourceFolder() {
    return KST_SOURCE_DIR;
}

std::filesystem::path buildFolder() {
    return KST_BUILD_DIR;
}

std::string fileUrl(const std::filesystem::path& path) {
    const std::string text = withSlashes(platform::utf8FromPath(std::filesystem::absolute(path)));
    return (text.starts_with('/') ? "file://" : "file:///") + text;
}

std::string withSlashes(std::string text) {
    std::replace(text.begin(), text.end(), static_cast<char>(std::filesystem::path::preferred_separator),
                 '/');
    return text;
}

} // namespace kst::test
