#include "install/download.h"

#include "core/log.h"
#include "core/progress.h"
#include "core/runstate.h"
#include "install/ziparchive.h"
#include "platform/environment.h"
#include "platform/paths.h"

#include <array>
#include <fstream>
#include <memory>

#include <curl/curl.h>
#include <fmt/format.h>

namespace kst {

namespace {

constexpr const char* builtInRoot = "https://download.kestrane.example/downloads/";
constexpr long stallBytesPerSecond = 100;
constexpr long mostRedirects = 5;
/// How long an exit waits for a transfer to notice it.
constexpr int pollMilliseconds = 50;
constexpr std::size_t unpackBlock = 512 * 1024;

struct Transfer {
    std::ofstream file;
    curl_off_t written = 0;
};

std::size_t writeBlock(char* data, std::size_t size, std::size_t count, void* context) {
    auto& transfer = *static_cast<Transfer*>(context);
    const std::size_t bytes = size * count;
    transfer.written += static_cast<curl_off_t>(bytes);
    if (transfer.written > downloadLimits().largest) {
        return 0;
    }
    transfer.file.write(data, static_cast<std::streamsize>(bytes));
    return transfer.file ? bytes : 0;
}

void setOptions(CURL* curl, const std::string& url, Transfer& transfer) {
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Kestrane");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, writeBlock);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, downloadLimits().connectSeconds);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, stallBytesPerSecond);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, downloadLimits().stallSeconds);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(downloadLimits().largest));
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, mostRedirects);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https,http,file");
    // A redirect may not leave HTTPS.
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "https");
    if (const auto certificates = platform::environmentText("KESTRANE_CA_FILE")) {
        curl_easy_setopt(curl, CURLOPT_CAINFO, certificates->c_str());
    }
}

std::string sizeText(curl_off_t bytes) {
    return fmt::format("{:.1f}", static_cast<double>(bytes) / 1e6);
}

void showProgress(Progress& progress, CURL* curl, const std::string& name) {
    curl_off_t done = 0;
    curl_off_t all = -1;
    curl_easy_getinfo(curl, CURLINFO_SIZE_DOWNLOAD_T, &done);
    curl_easy_getinfo(curl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &all);
    if (all > 0) {
        progress.show(fmt::format("Downloading {} ... {} of {} MB", name, sizeText(done), sizeText(all)),
                      static_cast<double>(done) / static_cast<double>(all));
    } else {
        progress.show(fmt::format("Downloading {} ... {} MB", name, sizeText(done)), std::nullopt);
    }
}

struct CloseMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

/// As curl_easy_perform, but an exit ends it within a twentieth of a second, and the operator sees how far it
/// is.
CURLcode perform(CURL* curl, const std::string& name) {
    const std::unique_ptr<CURLM, CloseMulti> multi(curl_multi_init());
    if (!multi || curl_multi_add_handle(multi.get(), curl) != CURLM_OK) {
        return CURLE_FAILED_INIT;
    }
    CURLcode result = CURLE_ABORTED_BY_CALLBACK;
    Progress progress;
    int running = 1;
    while (running > 0 && !stopAsked()) {
        if (curl_multi_perform(multi.get(), &running) != CURLM_OK) {
            break;
        }
        if (progress.due()) {
            showProgress(progress, curl, name);
        }
        if (running > 0) {
            curl_multi_poll(multi.get(), nullptr, 0, pollMilliseconds, nullptr);
        }
    }
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi.get(), &left)) {
        if (message->msg == CURLMSG_DONE) {
            result = message->data.result;
        }
    }
    curl_multi_remove_handle(multi.get(), curl);
    return result;
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
    const CURLcode result = perform(curl, url.substr(url.find_last_of('/') + 1));
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

DownloadLimits& downloadLimits() {
    static DownloadLimits limits;
    return limits;
}

std::string downloadRoot() {
    return platform::environmentText("KESTRANE_DOWNLOAD_ROOT").value_or(builtInRoot);
}

std::string lf_airportServerBase() {
    return downloadRoot() + "P3D/";
}

int unpackEntry(const ZipEntry& entry, const std::filesystem::path& destination) {
    auto part = destination;
    part += ".part";
    std::ofstream file(part, std::ios::binary | std::ios::trunc);
    const auto write = [&file](std::string_view block) {
        file.write(block.data(), static_cast<std::streamsize>(block.size()));
        return file.good() && !stopAsked();
    };
    int result = entry.readContent(write, unpackBlock, static_cast<std::size_t>(downloadLimits().largest));
    file.close();
    std::error_code error;
    if (result == 0 && !file.fail()) {
        std::filesystem::rename(part, destination, error);
    } else if (result == 0) {
        result = -1;
    }
    if (result != 0 || error) {
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
    }
    return error ? -1 : result;
}

bool lf_fetchArchive(const std::string& zipName, const std::filesystem::path& destination) {
    const std::filesystem::path zipPath = zipName;
    const DownloadHandle handle;
    if (!gf_fetchFile(handle, downloadRoot() + zipName, zipPath, true)) {
        logAlert(fmt::format("downloading {} failed?", zipName));
        return false;
    }
    bool written = false;
    {
        ZipArchive archive(zipPath);
        bool good = archive.open();
        for (const ZipEntry& entry : archive.getEntries()) {
            if (!entry.isFolder()) {
                written = unpackEntry(entry, destination) == 0;
                good = good && written;
            }
        }
        if (!good) {
            written = false;
            std::error_code ignored;
            std::filesystem::remove(destination, ignored);
            logAlert(fmt::format("unzipping {} failed?", zipName));
        }
    }
    std::error_code ignored;
    std::filesystem::remove(zipPath, ignored);
    return written;
}

bool lf_fetchDatabase(const std::filesystem::path& destination) {
    return lf_fetchArchive("dbase.zip", destination);
}

} // namespace kst
