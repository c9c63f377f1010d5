#pragma once

// The targets for which no livery is installed. Worker only.

#include "model/aircraft.h"

#include <string>

namespace kst {

/// The key of an aircraft in `unmatchedTargets`: operator, type and registration.
std::string unmatchedKey(const AcBase& ac);

} // namespace kst
