#pragma once

// The walk through the folders of a scan: finds the configuration files, has them read by tasks on all
// processors, and joins what they found in the order of the walk. Worker.

#include "catalogue/configfile.h"
#include "catalogue/scanreports.h"
#include "core/orderedtasks.h"
#include "core/progress.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <unordered_set>

namespace kst {

/// What one scan has gathered over all its folders, beside `scannedLiveries`, and what it works with.
struct ScanState {
    struct FileResult {
        ConfigFile file;
        FileFindings findings;
    };

    ScanReports reports;
    /// Of two sections with one title the first in the order of the walk keeps it.
    std::unordered_set<std::string> scannedTitles;
    std::size_t foldersSeen = 0;
    std::size_t filesRead = 0;
    std::size_t folders = 1; ///< trees to walk
    std::size_t foldersWalked = 0;
    double shareOfFolder = 0.0; ///< done of the present one
    Progress progress;
    OrderedTasks<FileResult> tasks{scanThreadCount()};
};

/// Walks one folder tree and appends what it finds to `scannedLiveries`. What cannot be read is logged and
/// passed over. Ends within a moment once `stopAsked()`.
void lf_searchLiveriesinFolder(int priority, const std::filesystem::path& folder, ScanState& state);

} // namespace kst
