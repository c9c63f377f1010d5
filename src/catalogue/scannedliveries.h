#pragma once

// The list of liveries that the scan fills and the store keeps, between the folders on disk and the tables of
// the matcher. All of it belongs to the worker.

#include "catalogue/referencetables.h"
#include "model/liverydata.h"

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace kst {

using TitleSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

/// What a scan has found so far, or what was read from the store. Empty between those.
extern std::vector<LiveryData> scannedLiveries;
/// Titles that the registration lists exclude. Filled before a scan, only read while its tasks run, cleared
/// at its end.
extern TitleSet dontUseTitles;

/// Sorts by airline, model and title, bytewise; liveries that are equal in all three keep their order.
void lf_sortLiveries(std::vector<LiveryData>& liveries);

/// Replaces the store by `scannedLiveries`, one element `liv` each, and logs how many. Writes nothing when
/// there are none. Returns whether the store holds them.
bool lf_saveLiveries();

} // namespace kst
