#pragma once

// The data files hold their codes in a shifted form, so that the lists are not readable at a glance. Every
// coder works on the 46 characters from '-' to 'Z' (ASCII 45 to 90), which wrap round.

#include "core/shorttext.h"

#include <string>
#include <string_view>

namespace kst {

inline constexpr std::size_t longestScrambledRegcode = 24;

using RegcodeCode = ShortText<longestScrambledRegcode>;
using ModelCode = ShortText<4>;
using AirlineCode = ShortText<3>;

/// The decoders below, for a caller that has hundreds of thousands of codes to keep.
RegcodeCode decodedRegcode(std::string_view text);
ModelCode decodedModel(std::string_view text);
AirlineCode decodedAirline(std::string_view text);

/// A registration of at most 24 characters; '+' stays as it is. Empty text gives empty text. Longer text
/// throws std::runtime_error.
std::string gf_decodeRegcode(std::string_view text);
std::string gf_encodeRegcode(std::string_view text);
/// A model code of 2, 3 or 4 characters. Any other length but 0 throws std::runtime_error.
std::string gf_decodeModel(std::string_view text);
std::string gf_encodeModel(std::string_view text);
/// An airline code: 6 characters of which 3 carry the code. A text of 3 characters is logged and returned
/// unchanged; any other length but 0 throws std::runtime_error.
std::string gf_decodeAirline(std::string_view text);
std::string gf_encodeAirline(std::string_view text);

} // namespace kst
