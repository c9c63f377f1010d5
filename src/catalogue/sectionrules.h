#pragma once

// The rules of one [fltsim.x] section: what it must hold to become a livery, what is repaired, what is
// reported. Called from the scan's tasks; reads only tables that stand still during a scan.

#include "catalogue/aircraftfolder.h"
#include "catalogue/scanreports.h"
#include "model/liverydata.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Files of the IVAO model sets keep the model in their path and the airline in the title.
enum class CfgKind { Standard, Ivao };

/// The configuration file that a section stands in.
struct ConfigFile {
    std::string path;
    CfgKind kind = CfgKind::Standard;
    int priority = 0;  ///< number of the scan folder
    std::string model; ///< valid model code of all its sections
};

/// A section that passed all rules but one: whether its title is taken already is known where all files come
/// together.
struct FoundLivery {
    LiveryData livery;
    std::string header; ///< the section's first line
};

/// What one file gave.
struct FileFindings {
    std::vector<FoundLivery> liveries;
    ScanReports reports;
    std::vector<std::string> logLines;
};

/// The livery of a section by the rules of its file's kind. The first of the lines is the section's header.
/// Nothing when the section is refused, which is told in `findings` where the rules want that.
std::optional<FoundLivery> lf_procesFltSimSection(const ConfigFile& file, const AircraftFolder& folder,
                                                  std::span<const std::string_view> lines,
                                                  FileFindings& findings);
/// The report on a section whose title another section had before.
std::string titleTakenReport(const ConfigFile& file, const FoundLivery& found);

} // namespace kst
