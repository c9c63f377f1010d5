#include "core/numbertext.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace kst {

namespace {

template <class Number>
std::optional<Number> convert(std::string_view text) {
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{}) {
        return std::nullopt;
    }
    return number;
}

} // namespace

std::optional<double> numberAtStart(std::string_view text) {
    return convert<double>(text);
}

std::optional<double> finiteNumberAtStart(std::string_view text) {
    const std::optional<double> number = numberAtStart(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<std::uint32_t> digitsAtStart(std::string_view text) {
    return convert<std::uint32_t>(text);
}

std::optional<int> wholeNumberAtStart(std::string_view text) {
    return convert<int>(text);
}

} // namespace kst
