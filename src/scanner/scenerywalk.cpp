#include "scanner/scenerywalk.h"

#include "catalogue/cfgpaths.h"
#include "catalogue/reference.h"
#include "core/display.h"
#include "core/folderwalk.h"
#include "core/runstate.h"
#include "platform/paths.h"
#include "scanner/airportarchive.h"
#include "scanner/bglfile.h"
#include "scanner/scanreport.h"
#include "scanner/stockscenery.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view alert = "===> ";

void showProgress(SceneryScan& scan) {
    if (scan.progress.due()) {
        scan.progress.show(fmt::format("Scanning for addon airports ... {} files, {} with airports",
                                       scan.bglFiles, scan.airportFiles),
                           (static_cast<double>(scan.foldersWalked) + scan.shareOfFolder) /
                               static_cast<double>(scan.folders));
    }
}

/// One walk through a folder with its tasks.
class FolderScan {
public:
    FolderScan(const fs::path& folder, SceneryScan& scan)
        : name_(platform::utf8FromPath(folder)), scan_(scan) {}

    void take(const fs::path& file) {
        try {
            handle(file);
        } catch (const std::exception& failure) {
            lf_scanLogLine(fmt::format("{} airports search in folder {} aborted, cause: {}", alert, name_,
                                       failure.what()));
        }
    }

    /// After a stop only the tasks that already run are waited for.
    void drain() {
        while (tasks_.pending() > 0 && !stopAsked()) {
            try {
                tasks_.take();
            } catch (const std::exception& failure) {
                lf_scanLogLine(fmt::format("{} airports search in {} aborted, futs outer error: {}", alert,
                                           name_, failure.what()));
            }
            showProgress(scan_);
        }
    }

private:
    void handle(const fs::path& file) {
        ++scan_.bglFiles;
        showProgress(scan_);
        const std::string text = platform::utf8FromPath(file);
        const auto holds = [&](const char* part) { return text.find(part) != std::string::npos; };
        if (holds("statics") || holds("_heliports") || !lf_bglHasAirports(file)) {
            return;
        }
        const std::size_t order = ++scan_.airportFiles;
        tasks_.add([file, order] { lf_readBglFile(file, order); });
        if (tasks_.pending() > scanThreadCount()) {
            takeOldest(text);
        }
    }

    void takeOldest(const std::string& present) {
        const std::size_t pending = tasks_.pending();
        try {
            tasks_.take();
        } catch (const std::exception& failure) {
            lf_scanLogLine(fmt::format("{} airports search aborted, futs inner, \n{}\n{}\n{}", alert,
                                       failure.what(), pending, present));
        }
    }

    std::string name_;
    SceneryScan& scan_;
    OrderedTasks<void> tasks_{scanThreadCount()};
};

void lf_scanFolder(const fs::path& folder, SceneryScan& scan) {
    lf_scanLogLine(fmt::format("Scanning for {}{}", "addon airports in ", platform::utf8FromPath(folder)));
    FolderScan tasks(folder, scan);
    FolderWalk walk;
    walk.enter = [](const fs::path& entered) { return !lf_isStockPath(entered); };
    walk.wants = [](const std::string& name) { return lf_isBglName(name); };
    walk.file = [&](const fs::path& file) { tasks.take(file); };
    walk.progressed = [&](double share) { scan.shareOfFolder = share; };
    walk.unreadable = [](const fs::path& unread, const std::error_code& error) {
        lf_scanLogLine(fmt::format("{} airports search in folder {} aborted because of iterator problem: {}",
                                   alert, platform::utf8FromPath(unread), error.message()));
    };
    walkFolder(folder, walk);
    tasks.drain();
}

/// The whole file; nothing when it cannot be opened or an exit is asked for. Throws std::runtime_error when
/// it is larger than any scenery with airports.
std::vector<std::byte> fileContent(const fs::path& path) {
    constexpr std::size_t blockBytes = 1024 * 1024;
    constexpr std::size_t largestBytes = 512 * blockBytes;
    std::ifstream file;
    // Blocks are read straight to their place.
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path, std::ios::binary);
    std::vector<std::byte> content;
    std::error_code gone;
    const std::uintmax_t expected = fs::file_size(path, gone);
    content.reserve(gone ? blockBytes : std::min<std::uintmax_t>(expected, largestBytes) + blockBytes);
    while (file && !stopAsked()) {
        const std::size_t before = content.size();
        if (before >= largestBytes) {
            throw std::runtime_error(
                fmt::format("{} is larger than {} bytes", platform::utf8FromPath(path), largestBytes));
        }
        content.resize(before + blockBytes);
        file.read(reinterpret_cast<char*>(content.data() + before), blockBytes);
        content.resize(before + static_cast<std::size_t>(file.gcount()));
    }
    return stopAsked() ? std::vector<std::byte>() : content;
}

} // namespace

bool lf_isBglName(std::string_view name) {
    return name.ends_with(".BGL") || name.ends_with(".bgl");
}

void lf_readBglFile(const fs::path& path, std::size_t order) {
    constexpr std::size_t mostLines = 1000;
    const std::vector<std::byte> content = fileContent(path);
    if (content.empty()) {
        return;
    }
    const std::string text = platform::utf8FromPath(path);
    const SceneryFile file{text, gf_publisherOfFile(text), order};
    bool linked = false;
    int archivedCount = 0;
    std::size_t lines = 0;
    BglOutput output;
    output.begun = [&](AirportFile& airport) { linked = lf_linkArchived(airport, archivedCount, file); };
    output.done = [&](AirportFile& airport) {
        lf_finishScannedAirport(airport, linked, archivedCount, order);
    };
    output.report = [&](std::string_view line) {
        if (++lines <= mostLines) {
            lf_scanLogLine(line);
        }
    };
    decodeBgl(BglWords(content), text, output);
    if (lines > mostLines) {
        lf_scanLogLine(fmt::format("{} more lines about {} are left out", lines - mostLines, text));
    }
}

void lf_scanEntry(std::string_view folder, SceneryScan& scan) {
    if (folder.empty() || stopAsked()) {
        return;
    }
    try {
        const fs::path path = platform::caseInsensitivePath(pathFromCfgText(folder));
        std::error_code error;
        if (!fs::exists(path, error)) {
            showMessage(fmt::format("{} does not exist, skipped!", folder), true);
        } else if (!fs::is_directory(path, error)) {
            showMessage(fmt::format("{} is not a folder name, skipped!", folder), true);
        } else if (!lf_isStockPath(path)) {
            lf_scanFolder(path, scan);
        }
    } catch (const std::exception& failure) {
        lf_scanLogLine(fmt::format("{} airports search in folder {} aborted because of iterator problem: {}",
                                   alert, folder, failure.what()));
    }
    ++scan.foldersWalked;
    scan.shareOfFolder = 0.0;
}

} // namespace kst
