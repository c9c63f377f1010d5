#pragma once

#include "model/aircraft.h"

#include <string>
#include <string_view>

namespace kst {

/// Gives the aircraft an installed title of its type, of its own airline if there is one: fills `liveryTitle`
/// (empty when there is none) and `fsltlLivery`. The title is a view of a string that lives as long as the
/// catalogue. Worker.
void gf_matchLivery(AcBase& ac);
/// The simulator refused to create the aircraft with its title: the title is not used again. From the
/// twentieth title on throws UserErrorException 81. Worker.
void gf_liveryCreateFailed(const AcBase& ac);
/// Whether the simulator refused this title before.
bool gf_isFailedTitle(std::string_view title);
/// Writes the matching summary to the log, at the end of a run and once a day.
void gf_logMatchingSummary();

/// Adds an installed livery to the tables of the matcher.
void addLiveryTitle(std::string_view airline, std::string_view model, const std::string& title);
/// Forgets all liveries and refusals.
void resetMatching();

} // namespace kst
