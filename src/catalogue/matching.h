#pragma once

// Which installed title shall represent this aircraft? A ladder of six rungs from this very aircraft down to
// anything of about its size. Worker.

#include "catalogue/liverytables.h"
#include "model/aircraft.h"
#include "model/parkpos.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// The rungs of the ladder, by the numbers of the statistics.
enum class Rung : int {
    None = 0,
    OwnLivery = 1,        ///< the registration's own livery
    AirlineModel = 2,     ///< same airline, same model
    AirlineSimilar = 3,   ///< same airline, similar model
    Generic = 4,          ///< generic livery of the model
    AnyOfModel = 5,       ///< any livery of the model
    AnyOfSimilarModel = 6 ///< any livery of a similar model
};
inline constexpr int rungCount = 6;

/// Gives the live aircraft an installed title: fills `liveryTitle` (empty when no rung that MATCHING_DEPTH
/// allows has one) and `fsltlLivery`, and counts the rung. The title is a view of a string that lives as long
/// as the tables. Gives the rung, which the caller may ignore.
Rung gf_matchLivery(AcBase& ac);
/// The same for an aircraft that is to be parked on `parked`, which says whether it is to be a freighter.
/// Nothing is counted; a title that the aircraft has already stays. Gives whether it has a title.
bool gf_matchStaticLivery(AcBase& ac, const ParkPos& parked);

/// The models that may stand in for this one, shuffled when RANDOM is on. Without any a single model of the
/// same small size class. Empty when nothing may.
std::vector<SimilarModel> gf_similarModels(std::string_view model);
/// Those of which the airline has a livery; only for a model of which it has none.
std::vector<SimilarModel> gf_similarForAirline(std::string_view airline, std::string_view model);

/// Live matches per rung, index rung minus 1, since the process began.
extern std::array<std::uint32_t, rungCount> matchSteps;

/// The simulator refused to create the aircraft with its title: the title is not used again. From the
/// twentieth title on throws UserErrorException 81.
void gf_liveryCreateFailed(const AcBase& ac);
/// Whether the simulator refused this title before.
bool gf_isFailedTitle(std::string_view title);
/// Writes the matches per rung and the refusals to the log, at the end of a run and once a day.
void gf_logMatchingSummary();

/// Forgets all liveries, statistics and refusals, for tests.
void resetMatching();

} // namespace kst
