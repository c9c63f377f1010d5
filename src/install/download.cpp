#include "install/download.h"

#include "core/files.h"
#include "core/log.h"
#include "core/runstate.h"
#include "install/ziparchive.h"
#include "platform/environment.h"
#include "platform/paths.h"

#include <array>
#include <fstream>

#include <curl/curl.h>
#include <fmt/format.h>

namespace kst {

namespace {

constexpr const char* builtInRoot = "https://download.kestrane.example/downloads/";
constexpr long connectSeconds = 15;
constexpr long stallSeconds = 20;
constexpr long stallBytesPerSecond = 100;
constexpr curl_off_t largestDownload = curl_off_t{512} * 1024 * 1024;
constexpr std::size_t largestText = std::size_t{512} * 1024 * 1024;

struct Transfer {
    std::ofstream file;
    curl_off_t written = 0;
};

std::size_t writeBlock(char* data, std::size_t size, std::size_t count, void* context) {
    auto& transfer = *static_cast<Transfer*>(context);
    const std::size_t bytes = size * count;
    transfer.written += static_cast<curl_off_t>(bytes);
    if (transfer.written > largestDownload) {
        return 0;
    }
    transfer.file.write(data, static_cast<std::streamsize>(bytes));
    return transfer.file ? bytes : 0;
}

int stopWhenAsked(void*, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return stopAsked() ? 1 : 0;
}

void setOptions(CURL* curl, const std::string& url, Transfer& transfer) {
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Kestrane");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, writeBlock);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, stallBytesPerSecond);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, stallSeconds);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, largestDownload);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, stopWhenAsked);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https,http,file");
    // A redirect may not leave HTTPS.
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "https");
    if (const auto certificates = platform::environmentText("KESTRANE_CA_FILE")) {
        curl_easy_setopt(curl, CURLOPT_CAINFO, certificates->c_str());
    }
}

bool transferInto(CURL* curl, const std::string& url, const std::filesystem::path& part, bool binary) {
    Transfer transfer;
    transfer.file.open(part, binary ? std::ios::binary | std::ios::trunc : std::ios::trunc);
    if (!transfer.file) {
        logLine(fmt::format("could not open output file: {}", platform::utf8FromPath(part)));
        return false;
    }
    std::array<char, CURL_ERROR_SIZE> reason{};
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, reason.data());
    setOptions(curl, url, transfer);
    const CURLcode result = curl_easy_perform(curl);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
    transfer.file.close();
    if (result != CURLE_OK || transfer.file.fail()) {
        logLine(fmt::format("download of \"{}\" ended: {}", url,
                            reason[0] != '\0' ? reason.data() : curl_easy_strerror(result)));
        return false;
    }
    return true;
}

} // namespace

DownloadHandle::DownloadHandle() {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    handle_ = started == CURLE_OK ? curl_easy_init() : nullptr;
}

DownloadHandle::~DownloadHandle() {
    if (handle_ != nullptr) {
        curl_easy_cleanup(handle_);
    }
}

bool gf_fetchFile(const DownloadHandle& handle, const std::string& url, const std::filesystem::path& path,
                  bool binary) {
    if (handle.get() == nullptr) {
        return false;
    }
    try {
        auto part = path;
        part += ".part";
        const bool complete = transferInto(handle.get(), url, part, binary);
        std::error_code error;
        if (complete) {
            std::filesystem::rename(part, path, error);
        }
        if (!complete || error) {
            std::error_code ignored;
            std::filesystem::remove(part, ignored);
            return false;
        }
        return true;
    } catch (const std::exception& error) {
        logAlert(fmt::format("downloader exception: \"{}\", {} => {}", error.what(), url,
                             platform::utf8FromPath(path)));
        return false;
    }
}

std::string downloadRoot() {
    return platform::environmentText("KESTRANE_DOWNLOAD_ROOT").value_or(builtInRoot);
}

std::string lf_airportServerBase() {
    return downloadRoot() + "P3D/";
}

bool lf_fetchArchive(const std::string& zipName, const std::filesystem::path& destination) {
    const std::filesystem::path zipPath = zipName;
    const DownloadHandle handle;
    if (!gf_fetchFile(handle, downloadRoot() + zipName, zipPath, true)) {
        logAlert(fmt::format("downloading {} failed?", zipName));
        return false;
    }
    bool written = false;
    ZipArchive archive(zipPath);
    if (!archive.open()) {
        std::error_code ignored;
        std::filesystem::remove(destination, ignored);
        logAlert(fmt::format("unzipping {} failed?", zipName));
    } else {
        for (ZipEntry& entry : archive.getEntries()) {
            if (entry.isFolder()) {
                continue;
            }
            const auto text = entry.readAsText(largestText);
            if (!text) {
                logAlert(fmt::format("unzipping {} failed?", zipName));
                written = false;
                break;
            }
            written = writeTextFile(*text, destination, false);
        }
        archive.close();
    }
    std::error_code ignored;
    std::filesystem::remove(zipPath, ignored);
    return written;
}

bool lf_fetchDatabase(const std::filesystem::path& destination) {
    return lf_fetchArchive("dbase.zip", destination);
}

} // namespace kst
