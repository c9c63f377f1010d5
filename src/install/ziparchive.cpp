#include "install/ziparchive.h"

#include "platform/paths.h"

#include <memory>

#include <zip.h>

namespace kst {

namespace {

constexpr std::size_t textBlock = 64 * 1024;

zip_t* asZip(void* handle) {
    return static_cast<zip_t*>(handle);
}

struct CloseEntry {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

} // namespace

std::optional<std::string> ZipEntry::readAsText(std::size_t limit) const {
    std::string text;
    const auto append = [&text](std::string_view block) {
        text.append(block);
        return true;
    };
    if (readContent(append, textBlock, limit) != 0) {
        return std::nullopt;
    }
    return text;
}

int ZipEntry::readContent(const std::function<bool(std::string_view)>& take, std::size_t blockSize,
                          std::size_t limit) const {
    const std::unique_ptr<zip_file_t, CloseEntry> file(zip_fopen_index(asZip(archive_->handle_), index_, 0));
    if (!file) {
        return zip_error_code_zip(zip_get_error(asZip(archive_->handle_)));
    }
    std::string block(blockSize, '\0');
    std::size_t total = 0;
    while (true) {
        const zip_int64_t bytes = zip_fread(file.get(), block.data(), block.size());
        if (bytes < 0) {
            return zip_error_code_zip(zip_file_get_error(file.get()));
        }
        if (bytes == 0) {
            return 0;
        }
        total += static_cast<std::size_t>(bytes);
        if (total > limit || !take(std::string_view(block.data(), static_cast<std::size_t>(bytes)))) {
            return -1;
        }
    }
}

bool ZipArchive::open() {
    close();
    int error = 0;
    handle_ = zip_open(platform::utf8FromPath(path_).c_str(), ZIP_RDONLY, &error);
    return handle_ != nullptr;
}

void ZipArchive::close() {
    if (handle_ != nullptr) {
        zip_discard(asZip(handle_));
        handle_ = nullptr;
    }
}

std::vector<ZipEntry> ZipArchive::getEntries() {
    std::vector<ZipEntry> entries;
    if (handle_ == nullptr) {
        return entries;
    }
    const zip_int64_t count = zip_get_num_entries(asZip(handle_), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(asZip(handle_), static_cast<zip_uint64_t>(i), ZIP_FL_ENC_GUESS);
        if (name != nullptr) {
            entries.emplace_back(*this, static_cast<std::uint64_t>(i), name);
        }
    }
    return entries;
}

} // namespace kst
