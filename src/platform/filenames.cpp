#include "platform/filenames.h"

#include <algorithm>

#include <utf8.h>

namespace kst::platform {

namespace {

/// Lower case of the letters that folder and file names of this field use.
char32_t lowerCase(char32_t c) {
    const auto within = [c](char32_t first, char32_t last) { return c >= first && c <= last; };
    constexpr char32_t multiplicationSign = 0xD7;
    if (within('A', 'Z') || (within(0xC0, 0xDE) && c != multiplicationSign) || within(0x391, 0x3A9) ||
        within(0x410, 0x42F)) {
        return c + 32;
    }
    return within(0x400, 0x40F) ? c + 80 : c;
}

} // namespace

std::string foldedName(std::string_view name) {
    std::string folded(name);
    bool ascii = true;
    for (char& c : folded) {
        ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
    if (ascii) {
        return folded;
    }
    std::u32string letters = utf8::utf8to32(utf8::replace_invalid(name));
    std::transform(letters.begin(), letters.end(), letters.begin(), lowerCase);
    return utf8::utf32to8(letters);
}

} // namespace kst::platform
