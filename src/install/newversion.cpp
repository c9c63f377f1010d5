#include "install/newversion.h"

#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "install/services.h"
#include "install/ziparchive.h"
#include "platform/paths.h"

#include <fmt/format.h>

namespace kst {

namespace {

constexpr const char* installerName = "install_new_version.exe";

bool lf_unzipInstaller(const ZipEntry& entry, const std::string& zipName) {
    const int result = unpackEntry(entry, installerName);
    if (result != 0) {
        logAlert(fmt::format("unzipping error code : {}", result));
        return false;
    }
    logLine(fmt::format("{} unzipped to {}", zipName, installerName));
    return true;
}

} // namespace

ProgramVersion lf_fetchVersion(const DownloadHandle& handle, const std::string& url) {
    const std::filesystem::path file = "version.json";
    if (!gf_fetchFile(handle, url, file, false)) {
        logAlert(fmt::format("downloading \"{}\" failed", url));
        return {};
    }
    std::vector<std::string> lines;
    const bool read = gf_readExtTextFileToStringVector(file, lines);
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return read && !lines.empty() ? parseVersion(lines.front()) : ProgramVersion{};
}

bool lf_downloadInstaller(const ProgramVersion& version) {
    const std::string zipName = fmt::format("setup_{}_d_v{}.zip", programName, version.text());
    const DownloadHandle handle;
    bool unpacked = false;
    if (!gf_fetchFile(handle, downloadRoot() + "release/" + zipName, zipName, true)) {
        showMessage(fmt::format("Downloading program installer file version {} failed", version.text()),
                    true);
    } else {
        logLine(fmt::format("downloaded {}", zipName));
        ZipArchive archive(zipName);
        if (!archive.open()) {
            logAlert(fmt::format("could not open {}", zipName));
        }
        // One of an older version is not to be taken for this one.
        std::filesystem::remove(installerName);
        for (const ZipEntry& entry : archive.getEntries()) {
            if (!entry.isFolder()) {
                unpacked = lf_unzipInstaller(entry, zipName) || unpacked;
            }
        }
    }
    std::filesystem::remove(zipName);
    return unpacked;
}

void gf_checkNewVersion() {
    ProgramVersion newest;
    {
        const DownloadHandle handle;
        newest = lf_fetchVersion(handle, downloadRoot() + "release/version_P3D.json");
    }
    if (!newest.known()) {
        logAlert("Program Version file not found?");
        return;
    }
    if (newest <= thisProgramVersion()) {
        return;
    }
    if (lf_downloadInstaller(newest)) {
        const auto installer = platform::pathFromUtf8(PROGRAM_INSTALL_PATH.get()) / installerName;
        throw UserErrorException(
            99, fmt::format("New version {} available. Exit here, and run as administrator:   \"{}\"",
                            newest.text(), platform::utf8FromPath(installer)));
    }
    showMessage("The downloading/unzipping of the new version failed? Try manually via brimvale website",
                true);
}

} // namespace kst
