#include "support/tempfolder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#include <fmt/format.h>

namespace kst::test {

namespace {

std::filesystem::path makeFreshFolder() {
    std::random_device entropy;
    const std::filesystem::path parent = std::filesystem::canonical(std::filesystem::temp_directory_path());
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::filesystem::path folder = parent / fmt::format("kestrane-test-{:08x}", entropy());
        if (std::filesystem::create_directory(folder)) {
            return folder;
        }
    }
    throw std::runtime_error("no fresh folder for a test");
}

} // namespace

TempFolder::TempFolder()
    : path_(makeFreshFolder()), workingDirectoryBefore_(std::filesystem::current_path()),
      userFolders_(path_ / "user") {
    std::filesystem::create_directory(path_ / "docs");
    std::filesystem::current_path(path_);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::current_path(workingDirectoryBefore_, ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempFolder::write(const std::filesystem::path& name, std::string_view content) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file;
}

std::optional<std::string> TempFolder::read(const std::filesystem::path& name) const {
    std::ifstream stream(path_ / name, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace kst::test
