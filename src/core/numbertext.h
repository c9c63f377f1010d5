#pragma once

// Numbers out of text that nobody has checked yet. Independent of the locale.

#include <cstdint>
#include <optional>
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

/// The whole number, of the one sign "-" or none, at the start of the text; nothing where there is none or on
/// an overflow.
std::optional<int> wholeNumberAtStart(std::string_view text);

} // namespace kst
