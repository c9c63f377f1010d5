#pragma once

// How the readers take numbers and texts out of bytes that nobody has checked yet.

#include "core/numbertext.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kst {

/// The longest callsign or airport code that is believed. What the records of the feed keep is bounded by it.
inline constexpr std::size_t maxNameLength = 32;

/// At most `maxNameLength` printable ASCII characters: fit for the log, the window and the simulator.
bool isPlainName(std::string_view text);

/// The text as it may stand in a log line: control characters become dots, and what exceeds 2,000 characters
/// is cut and marked with "...", so that a datagram can neither forge log lines nor fill the disk.
std::string logExcerpt(std::string_view text);

} // namespace kst
