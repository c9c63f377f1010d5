#pragma once

#include "bench/realism/apronfigures.h"

#include <string>

namespace kst::bench {

/// A page of one scene: the airport's stands, the recorded ways on the ground and the shown ones.
std::string pageOf(const ApronScene& scene, const PlayedApron& played);

} // namespace kst::bench
