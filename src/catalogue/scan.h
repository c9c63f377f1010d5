#pragma once

// The scan of the installed liveries: from the folders on disk to the store and the reports. Worker. Its
// entry is `gf_scanLiveries` (catalogue/store.h).

#include "catalogue/scanreports.h"
#include "model/liverydata.h"

#include <string>
#include <vector>

namespace kst {

/// Scans the folders, given as text in the order of their priority, corrects what was found and writes store
/// and reports. False when nothing was found. True also when an exit ended it early: the store is then gone.
bool lf_scanFolders(const std::vector<std::string>& folders);

/// Gives a livery with a known registration the real operator, model and cargo property, with a line in
/// `conversionLines` for each change.
void lf_correctLivery(LiveryData& livery, std::vector<std::string>& conversionLines);

/// Of the liveries of one airline and model leaves those of the folder with the lowest number.
void prioritiseLiveries(std::vector<LiveryData>& liveries);

} // namespace kst
