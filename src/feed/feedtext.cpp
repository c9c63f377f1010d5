#include "feed/feedtext.h"

#include <algorithm>

namespace kst {

namespace {
constexpr std::size_t longestExcerpt = 2000;
} // namespace

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
