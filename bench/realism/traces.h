#pragma once

// One recording for a closer look.

#include "bench/realism/play.h"

#include <string>

namespace kst::bench {

/// A page with its map and the table; of a scene, which has stands, only what is on the ground.
std::string pageOf(const std::string& name, const PlayedScene& played, const std::string& table);

/// The flown paths as CSV, a line for each tenth of a second.
std::string pathOf(const PlayedScene& played);

} // namespace kst::bench
