#pragma once

// The data files hold their codes in a shifted form, so that the lists are not readable at a glance. Every
// coder works on the 46 characters from '-' to 'Z' (ASCII 45 to 90), which wrap round.

#include <string>
#include <string_view>

namespace kst {

inline constexpr std::size_t longestScrambledRegcode = 24;

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
