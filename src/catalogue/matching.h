#pragma once

#include "model/aircraft.h"

namespace kst {

/// Gives the aircraft the installed title that fits it best: fills `liveryTitle` (empty when there is none)
/// and `fsltlLivery`. The title is a view of a string that lives as long as the catalogue. Worker.
void gf_matchLivery(AcBase& ac);
/// The simulator refused to create the aircraft with its title: the title is not used again. Worker.
void gf_liveryCreateFailed(const AcBase& ac);
/// Whether the simulator refused this title before.
bool gf_titleFailed(std::string_view title);
/// Writes the matching summary to the log, at the end of a run and once a day.
void gf_logMatchingSummary();

} // namespace kst
