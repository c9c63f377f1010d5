#pragma once

// Reading of downloaded archives, through libzip.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

class ZipArchive;

/// One entry of an open archive.
class ZipEntry {
public:
    ZipEntry(ZipArchive& archive, std::uint64_t index, std::string name)
        : archive_(&archive), index_(index), name_(std::move(name)) {}
    const std::string& name() const { return name_; }
    bool isFolder() const { return !name_.empty() && name_.back() == '/'; }
    /// The whole content, or nothing when it is damaged or larger than `limit` bytes.
    std::optional<std::string> readAsText(std::size_t limit) const;
    /// Hands the content over in blocks of at most `blockSize` bytes until `take` says false. 0 on success,
    /// else libzip's error number, or -1 where `take` refused or the content is larger than `limit`.
    int readContent(const std::function<bool(std::string_view)>& take, std::size_t blockSize,
                    std::size_t limit) const;

private:
    ZipArchive* archive_;
    std::uint64_t index_;
    std::string name_;
};

/// An archive file, opened read-only, without password and without a check of its consistency.
class ZipArchive {
public:
    explicit ZipArchive(std::filesystem::path path) : path_(std::move(path)) {}
    ~ZipArchive() { close(); }
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;
    /// False when the file is no readable archive.
    bool open();
    void close();
    /// All entries in archive order; empty while the archive is not open.
    std::vector<ZipEntry> getEntries();

private:
    friend class ZipEntry;
    std::filesystem::path path_;
    void* handle_ = nullptr;
};

} // namespace kst
