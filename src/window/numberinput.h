#pragma once

// Text and numbers as an operator types them into a box.

#include <cstddef>
#include <string>
#include <string_view>

namespace kst {

enum class NumberFailure { None, NoNumber, OutOfRange };

/// The failure in words for the log.
std::string_view failureWords(NumberFailure failure);

template <typename Number>
struct NumberInput {
    Number value{};
    NumberFailure failure = NumberFailure::None;
};

/// A decimal number at the start of the text: leading blanks and a sign are passed, what follows the number
/// is ignored. Never depends on the locale.
NumberInput<int> readInt(std::string_view text);
/// The same with decimals and exponent. Infinity and NaN are no numbers.
NumberInput<float> readFloat(std::string_view text);

/// Length of a UTF-8 text in UTF-16 code units, as a text box counts.
std::size_t codeUnits(std::string_view text);
/// The text up to `limit` UTF-16 code units, never half a character.
std::string firstCodeUnits(std::string_view text, std::size_t limit);

} // namespace kst
