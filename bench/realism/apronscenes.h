#pragma once

// Recordings cut into scenes on the apron: all traffic round one airport whose stands are known, from one
// silence of minutes to the next.

#include "bench/realism/recordings.h"

#include <filesystem>
#include <vector>

namespace kst::bench {

/// The scenes with movement on the ground of every *.csv of `tracks` at each airport for which `stands` holds
/// an <ICAO>.csv. `dataFolder` holds the lists of airports and types. Throws std::runtime_error for a folder
/// that holds nothing.
std::vector<Recording> readScenes(const std::filesystem::path& tracks, const std::filesystem::path& stands,
                                  const std::filesystem::path& dataFolder);

/// The scenes of each airport on top of each other, one beginning every so many seconds: a crowded apron, on
/// which aircraft of different days are in each other's way.
std::vector<Recording> scenesTogether(const std::vector<Recording>& scenes, double everyS);

} // namespace kst::bench
