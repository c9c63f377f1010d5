#pragma once

// What a scan has to say about the files that it read: the lists that become the report files in the output
// folder, and the summary in the log.

#include <string>
#include <vector>

namespace kst {

/// The lines of the report files. One file's lines while it is read by its task; all files' lines, in the
/// order of the walk, on the worker.
struct ScanReports {
    std::vector<std::string> invalidAirlines;
    std::vector<std::string> invalidModels;
    std::vector<std::string> codeFixes;
    std::vector<std::string> invalidCfgFiles;
    std::vector<std::string> incompleteSections;
    std::vector<std::string> noFltsimFiles;
    std::vector<std::string> conversionLines; ///< only on the worker

    /// Moves the lines of `other` to the end of these.
    void append(ScanReports&& other);
};

/// Writes a report file for each list that has entries, and the summary to the log. Sorts the lists. Worker.
void lf_writeScanReports(ScanReports& reports);

/// Deletes the store and the reports of the last scan that this one will not replace. Logs what fails.
void removeOldScanFiles();

} // namespace kst
