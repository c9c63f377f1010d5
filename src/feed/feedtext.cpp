#include "feed/feedtext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kst {

namespace {
constexpr std::size_t longestExcerpt = 2000;

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

bool isPlainName(std::string_view text) {
    return text.size() <= maxNameLength &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string logExcerpt(std::string_view text) {
    std::string excerpt(text.substr(0, longestExcerpt));
    std::replace_if(
        excerpt.begin(), excerpt.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '.');
    if (text.size() > longestExcerpt) {
        excerpt += "...";
    }
    return excerpt;
}

} // namespace kst
