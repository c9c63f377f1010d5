#pragma once

#include "tools/measureflights/measure.h"

#include <string>

namespace kst::tool {

/// One HTML page that needs nothing else: a map of what was told (grey) and what was flown (coloured), the
/// figures, and a line for each object.
std::string pageOf(const Measured& measured);

} // namespace kst::tool
