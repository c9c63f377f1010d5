#pragma once

// One aircraft.cfg or sim.cfg: its encoding, its section numbers, its model, and its sections one by one.

#include "catalogue/aircraftfolder.h"
#include "catalogue/sectionrules.h"

#include <string>
#include <string_view>

namespace kst {

/// What a file's path says about its kind.
CfgKind cfgKindOf(std::string_view path);

/// Reads the file and judges its sections. A scan task: any thread. What the file does not hold to is told in
/// the findings; a file that is gone gives none. Ends early, with what it has, once `stopAsked()`.
FileFindings lf_searchLiveriesinFile(ConfigFile file, const AircraftFolder& folder);

/// The same for a text that is in memory already: UTF-8 or plain bytes.
FileFindings readConfigText(ConfigFile file, const AircraftFolder& folder, std::string_view text);

} // namespace kst
