#include "catalogue/scanreports.h"

#include "catalogue/reportfile.h"
#include "catalogue/store.h"
#include "core/files.h"
#include "core/log.h"
#include "platform/paths.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

struct ReportFile {
    std::vector<std::string> ScanReports::*lines;
    const char* name;
    bool sorted;
    const char* summary; ///< its line in the log: count, plural where `plural`, file
    bool plural;         ///< the line has a place for the "s"
};

constexpr std::array errorReports = {
    ReportFile{&ScanReports::invalidAirlines, "InvalidAirlineCodes.txt", true,
               "{} invalid airline code{}, see {}", true},
    ReportFile{&ScanReports::invalidModels, "InvalidAircraftCodes.txt", true,
               "{} invalid model code{}, see {}", true},
    ReportFile{&ScanReports::codeFixes, "Fixes.txt", false, "{} code fixes, see {}", false},
    ReportFile{&ScanReports::invalidCfgFiles, "InvalidAircraftCfgFiles.txt", true,
               "{} invalid aircraft.cfg files, see {}", false},
    ReportFile{&ScanReports::incompleteSections, "IncompleFltsimSections.txt", true,
               "{} incomplete [fltsim.x] sections, see {}", false},
};

constexpr std::array infoReports = {
    ReportFile{&ScanReports::noFltsimFiles, "AircraftCfgWithNoFltsimSection.txt", true,
               "{} empty aircraft.cfg files, see {}", false},
    ReportFile{&ScanReports::conversionLines, "AirlineModelConversions.txt", false,
               "{} liveries updated with real live data from dbase, see {}", false},
};

std::string summaryLine(const ReportFile& report, std::size_t count, const std::string& file) {
    return report.plural ? fmt::format(fmt::runtime(report.summary), count, count == 1 ? "" : "s", file)
                         : fmt::format(fmt::runtime(report.summary), count, file);
}

void writeOne(const ReportFile& report, ScanReports& reports, const fs::path& folder) {
    std::vector<std::string>& lines = reports.*report.lines;
    if (lines.empty()) {
        return;
    }
    if (report.sorted) {
        std::sort(lines.begin(), lines.end());
    }
    const fs::path path = folder / report.name;
    writeReport(path, lines);
    logLine(summaryLine(report, lines.size(), platform::utf8FromPath(path)));
}

template <std::size_t size>
void writeReports(const std::array<ReportFile, size>& files, ScanReports& reports, const fs::path& folder,
                  const char* heading, const char* headingWithoutAny) {
    const bool any = std::any_of(files.begin(), files.end(),
                                 [&](const ReportFile& report) { return !(reports.*report.lines).empty(); });
    if (const char* const line = any ? heading : headingWithoutAny) {
        logLine(line);
    }
    for (const ReportFile& report : files) {
        writeOne(report, reports, folder);
    }
}

} // namespace

void ScanReports::append(ScanReports&& other) {
    for (const auto list :
         {&ScanReports::invalidAirlines, &ScanReports::invalidModels, &ScanReports::codeFixes,
          &ScanReports::invalidCfgFiles, &ScanReports::incompleteSections, &ScanReports::noFltsimFiles,
          &ScanReports::conversionLines}) {
        std::move((other.*list).begin(), (other.*list).end(), std::back_inserter(this->*list));
    }
}

void lf_writeScanReports(ScanReports& reports) {
    writeReports(errorReports, reports, folders::errors, "\nErrors:", "\nNo errors");
    writeReports(infoReports, reports, folders::info, "\nInformation:", nullptr);
}

void removeOldScanFiles() {
    try {
        // What a later step writes anew, if anything, stays until then: AirlineModelConversions.txt and
        // OfflineRegcodes.txt.
        fs::remove(folders::info / "AircraftCfgWithNoFltsimSection.txt");
        fs::remove(liveriesStorePath());
        fs::remove(folders::info / "LiveriesSkippedOnPriority.txt");
        fs::remove_all(folders::errors);
    } catch (const std::exception& failure) {
        logLine(fmt::format("problems with removing previous files: {}", failure.what()));
    }
}

} // namespace kst
