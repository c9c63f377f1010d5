#pragma once

// How the readers take numbers and texts out of bytes that nobody has checked yet.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kst {

/// The number at the start of the text: an optional "-", then a decimal number (digits, an optional fraction,
/// an optional exponent) or "inf" or "nan" in either case. What follows it is ignored. Nothing where no
/// number stands there or where it is too large or too small for a double. Independent of the locale.
std::optional<double> numberAtStart(std::string_view text);

/// As `numberAtStart`, but nothing for an infinity or a NaN.
std::optional<double> finiteNumberAtStart(std::string_view text);

/// The unsigned decimal digits at the start of the text; nothing where there are none or on an overflow.
std::optional<std::uint32_t> digitsAtStart(std::string_view text);

/// The longest callsign or airport code that is believed. What the records of the feed keep is bounded by it.
inline constexpr std::size_t maxNameLength = 32;

/// At most `maxNameLength` printable ASCII characters: fit for the log, the window and the simulator.
bool isPlainName(std::string_view text);

/// The text as it may stand in a log line: control characters become dots, and what exceeds 2,000 characters
/// is cut and marked with "...", so that a datagram can neither forge log lines nor fill the disk.
std::string logExcerpt(std::string_view text);

} // namespace kst
