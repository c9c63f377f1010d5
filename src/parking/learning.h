#pragma once

// What this system learned at the loaded airport: the learned file that lies over the airport's own one, how
// much waits to be saved, and whether soft observations may be added. Worker only.

#include "model/airportfile.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kst {

/// Where the learned file of an airport lies whose own file `gf_locateApf` found at `location`. An empty
/// location gives an empty path.
std::filesystem::path lf_learnedApfPath(std::string_view location, std::string_view publisher);
/// The folder of a publisher's learned files, below `airports/learned`. Always a name that can be a folder's.
std::string learnedFolder(std::string_view publisher);

/// Merges the learned file over the airport's stands, or puts its stands in their place when it is handmade,
/// and takes over the settings that it holds. A file that cannot be parsed is set aside. Throws
/// UserErrorException at an id that stands twice in a handmade file.
void lf_readLearned(const std::filesystem::path& path, AirportFile& airport);

/// How much is known about the stands of the loaded airport; both -1 when there is no observation at all.
QualityFactors gf_qualityFactor();

/// Writes the learned file of the loaded airport, tells the user, and forgets what waited to be saved. A
/// failed save leaves the old file as it was.
void lf_saveLearned();
/// Saves when an airport is loaded and a stand or one of its settings has changed: when the airport is
/// closed, and at each renewal, so that a crash loses little of what was learned. What could not be saved
/// stays waiting.
void lf_saveLearnedChanges();

/// A stand of the loaded airport changed: raises the update counter and shows it.
void noteStandChange();
/// The number of changes to stands since the last save.
std::uint32_t standChanges();
/// Nothing waits to be saved any more: the airport is closed.
void clearStandChanges();

/// Applies the rule for `LEARN_SOFT` to the airport that was just loaded: where much is known already,
/// guesses would only spoil it, and it is switched off and its box disabled.
void lf_applyLearnSoftRule();
/// Soft learning is barred at the loaded airport.
bool softLearningBarred();

/// Whether the airport's stock file shows that its add-on's stands can be learned off line. Asks the server.
bool gf_stockIsSuitable(std::string_view icao);

} // namespace kst
