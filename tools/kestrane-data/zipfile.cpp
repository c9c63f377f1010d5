#include "zipfile.h"

#include "install/ziparchive.h"
#include "platform/paths.h"

#include <stdexcept>

#include <fmt/format.h>
#include <zip.h>

namespace kst::data {

void writeZip(const std::string& path, const std::string& entry, const std::string& content) {
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (archive == nullptr) {
        throw std::runtime_error(fmt::format("{}: could not be made, zip error {}", path, error));
    }
    zip_source_t* source = zip_source_buffer(archive, content.data(), content.size(), 0);
    const bool added =
        source != nullptr && zip_file_add(archive, entry.c_str(), source, ZIP_FL_ENC_UTF_8) >= 0;
    if (!added || zip_close(archive) != 0) {
        const std::string reason = zip_strerror(archive);
        zip_discard(archive);
        throw std::runtime_error(fmt::format("{}: could not be written: {}", path, reason));
    }
}

std::string readZip(const std::string& path) {
    constexpr std::size_t largest = std::size_t{512} * 1024 * 1024;
    ZipArchive archive(platform::pathFromUtf8(path));
    if (!archive.open()) {
        throw std::runtime_error(fmt::format("{}: no readable archive", path));
    }
    std::string text;
    for (const ZipEntry& entry : archive.getEntries()) {
        if (entry.isFolder()) {
            continue;
        }
        auto content = entry.readAsText(largest);
        if (!content) {
            throw std::runtime_error(fmt::format("{}: {} cannot be unpacked", path, entry.name()));
        }
        text = std::move(*content);
    }
    return text;
}

} // namespace kst::data
