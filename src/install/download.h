#pragma once

// Files from the download server. Blocks the calling thread; an exit ends a transfer at once.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace kst {

/// One connection to the server, with its certificate checks and time limits.
class DownloadHandle {
public:
    DownloadHandle();
    ~DownloadHandle();
    DownloadHandle(const DownloadHandle&) = delete;
    DownloadHandle& operator=(const DownloadHandle&) = delete;
    /// libcurl's easy handle, null when it could not be made.
    void* get() const { return handle_; }

private:
    void* handle_;
};

/// What a transfer may take. Tests make the times short.
struct DownloadLimits {
    long connectSeconds = 15;
    long stallSeconds = 20;                                 ///< below 100 bytes a second for so long
    std::int64_t largest = std::int64_t{512} * 1024 * 1024; ///< bytes of one file, packed or unpacked
};
DownloadLimits& downloadLimits();

/// Fetches the address into the file. Only a transfer that is complete and no HTTP error replaces the file; a
/// failed one leaves nothing behind. Bounded in connect time, in stall time and in size. Returns success;
/// failures are logged with their reason.
bool gf_fetchFile(const DownloadHandle& handle, const std::string& url, const std::filesystem::path& path,
                  bool binary);

/// The server's base address: an address whose path ends in "downloads/". `KESTRANE_DOWNLOAD_ROOT` replaces
/// it.
std::string downloadRoot();
/// Where the airport files are.
std::string lf_airportServerBase();

class ZipEntry;
/// Unpacks one entry to the file, which is replaced only by a whole content. Gives 0, libzip's error number,
/// or -1 where the content is too large, the file cannot be written or an exit came.
int unpackEntry(const ZipEntry& entry, const std::filesystem::path& destination);

/// Fetches "{root}{zipName}" and unpacks the file in it to `destination`; of several files the last one
/// stands. False on failure, which is logged; `destination` is then gone or as it was, never half.
bool lf_fetchArchive(const std::string& zipName, const std::filesystem::path& destination);
/// The reference database.
bool lf_fetchDatabase(const std::filesystem::path& destination);

} // namespace kst
