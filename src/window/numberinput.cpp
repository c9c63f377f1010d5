#include "window/numberinput.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kst {

namespace {

template <typename Number>
NumberInput<Number> readNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1); // from_chars knows no plus sign
    }
    NumberInput<Number> input;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), input.value).ec;
    if (error == std::errc::result_out_of_range) {
        input.failure = NumberFailure::OutOfRange;
    } else if (error != std::errc{}) {
        input.failure = NumberFailure::NoNumber;
    }
    return input;
}

/// UTF-16 code units of the character that this byte begins; 0 for a byte within a character.
std::size_t codeUnitsFrom(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0U) == 0x80U) {
        return 0;
    }
    constexpr unsigned firstOfFour = 0xF0U;
    return value >= firstOfFour ? 2 : 1;
}

} // namespace

std::string_view failureWords(NumberFailure failure) {
    switch (failure) {
    case NumberFailure::None:
        return "no failure";
    case NumberFailure::NoNumber:
        return "not a number";
    case NumberFailure::OutOfRange:
        return "number out of range";
    }
    return "?";
}

NumberInput<int> readInt(std::string_view text) {
    return readNumber<int>(text);
}

NumberInput<float> readFloat(std::string_view text) {
    NumberInput<float> input = readNumber<float>(text);
    if (input.failure == NumberFailure::None && !std::isfinite(input.value)) {
        input.failure = NumberFailure::NoNumber;
    }
    return input;
}

std::size_t codeUnits(std::string_view text) {
    std::size_t units = 0;
    for (const char byte : text) {
        units += codeUnitsFrom(byte);
    }
    return units;
}

std::string firstCodeUnits(std::string_view text, std::size_t limit) {
    std::size_t units = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        units += codeUnitsFrom(text[at]);
        if (units > limit) {
            return std::string(text.substr(0, at));
        }
    }
    return std::string(text);
}

} // namespace kst
