#include "tools/measureflights/files.h"

#include <fmt/format.h>
#include <stdexcept>

namespace kst::tool {

std::ifstream openFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error(fmt::format("cannot open {}", path.filename().string()));
    }
    return in;
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush()) {
        throw std::runtime_error(fmt::format("cannot write {}", path.filename().string()));
    }
}

} // namespace kst::tool
