#include "catalogue/scanfolder.h"

#include "catalogue/scannedliveries.h"
#include "core/folderwalk.h"
#include "core/log.h"
#include "core/runstate.h"
#include "platform/filenames.h"
#include "platform/paths.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;
using platform::EntryKind;
using platform::FolderEntry;

/// So many files may wait for each thread, so that a slow one does not hold up the others.
constexpr std::size_t filesAheadPerThread = 16;

bool isConfigFile(const std::string& name) {
    constexpr std::size_t longestName = 12;
    if (name.size() > longestName) {
        return false;
    }
    const std::string folded = platform::foldedName(name);
    return folded == "aircraft.cfg" || folded == "sim.cfg";
}

/// There are no aircraft below a folder of scenery, and the simulator itself takes no longer paths.
bool isEntered(const fs::path& folder) {
    constexpr std::size_t tooLong = 250;
    const std::string path = platform::utf8FromPath(folder);
    return path.size() < tooLong && path.find("airport") == std::string::npos;
}

class FolderScan {
public:
    FolderScan(int priority, ScanState& state) : priority_(priority), state_(state) {}

    void walk(const fs::path& folder);
    void drain();

private:
    struct OpenFolder {
        std::shared_ptr<const AircraftFolder> folder;
        std::size_t filesToCome = 0;
    };

    void takeListing(const fs::path& path, const std::vector<FolderEntry>& entries);
    std::shared_ptr<const AircraftFolder> folderOf(const fs::path& file);
    void startTask(const fs::path& path);
    void joinNext(const char* place);
    void join(ScanState::FileResult&& result);
    void showProgress();

    int priority_;
    ScanState& state_;
    /// Listings of the folders whose configuration files the walk has not come to yet.
    std::map<fs::path, OpenFolder> open_;
};

void FolderScan::walk(const fs::path& folder) {
    FolderWalk walk;
    walk.enter = isEntered;
    walk.wants = isConfigFile;
    walk.listed = [this](const fs::path& path, const std::vector<FolderEntry>& entries) {
        takeListing(path, entries);
    };
    walk.file = [this](const fs::path& path) { startTask(path); };
    walk.progressed = [this](double share) { state_.shareOfFolder = share; };
    walk.unreadable = [](const fs::path& path, const std::error_code& error) {
        logLine(fmt::format("liveries search in folder {} aborted because of iterator problem: {}",
                            platform::utf8FromPath(path), error.message()));
    };
    walkFolder(folder, walk);
}

void FolderScan::takeListing(const fs::path& path, const std::vector<FolderEntry>& entries) {
    ++state_.foldersSeen;
    showProgress();
    const auto configFiles = std::count_if(entries.begin(), entries.end(), [](const FolderEntry& entry) {
        return entry.kind == EntryKind::File && isConfigFile(entry.name);
    });
    if (configFiles > 0) {
        open_[path] = {std::make_shared<const AircraftFolder>(platform::utf8FromPath(path), entries),
                       static_cast<std::size_t>(configFiles)};
    }
}

std::shared_ptr<const AircraftFolder> FolderScan::folderOf(const fs::path& file) {
    const auto found = open_.find(file.parent_path());
    std::shared_ptr<const AircraftFolder> folder = found->second.folder;
    if (--found->second.filesToCome == 0) {
        open_.erase(found);
    }
    return folder;
}

void FolderScan::startTask(const fs::path& path) {
    while (state_.tasks.ready() || state_.tasks.pending() >= filesAheadPerThread * scanThreadCount()) {
        joinNext("inner");
    }
    ConfigFile file;
    file.path = platform::utf8FromPath(path);
    file.kind = cfgKindOf(file.path);
    file.priority = priority_;
    state_.tasks.add([file = std::move(file), folder = folderOf(path)]() -> ScanState::FileResult {
        return {file, lf_searchLiveriesinFile(file, *folder)};
    });
}

void FolderScan::drain() {
    while (state_.tasks.pending() > 0) {
        joinNext("outer");
    }
}

void FolderScan::joinNext(const char* place) {
    try {
        join(state_.tasks.take());
    } catch (const std::exception& failure) {
        logLine(fmt::format("liveries search aborted, futs {}, {}", place, failure.what()));
    }
    showProgress();
}

void FolderScan::join(ScanState::FileResult&& result) {
    ++state_.filesRead;
    for (const std::string& line : result.findings.logLines) {
        logLine(line);
    }
    state_.reports.append(std::move(result.findings.reports));
    for (FoundLivery& found : result.findings.liveries) {
        if (state_.scannedTitles.insert(found.livery.title).second) {
            scannedLiveries.push_back(std::move(found.livery));
        } else {
            state_.reports.incompleteSections.push_back(titleTakenReport(result.file, found));
        }
    }
}

void FolderScan::showProgress() {
    if (state_.progress.due()) {
        state_.progress.show(fmt::format("Scanning for liveries: {} folders, {} files, {} liveries",
                                         state_.foldersSeen, state_.filesRead, scannedLiveries.size()),
                             (static_cast<double>(state_.foldersWalked) + state_.shareOfFolder) /
                                 static_cast<double>(state_.folders));
    }
}

} // namespace

void lf_searchLiveriesinFolder(int priority, const fs::path& folder, ScanState& state) {
    FolderScan scan(priority, state);
    try {
        scan.walk(folder);
    } catch (const std::exception& failure) {
        logLine(fmt::format("liveries search in {} aborted, cause: {}", platform::utf8FromPath(folder),
                            failure.what()));
    }
    scan.drain();
}

} // namespace kst
