#pragma once

#include "model/aircraft.h"

#include <string>

namespace kst {

/// The aircraft in a few words for a log line: callsign, registration, operator, type, identity.
std::string describe(const AcBase& ac);

} // namespace kst
