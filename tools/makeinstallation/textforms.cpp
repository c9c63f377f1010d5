#include "textforms.h"

#include <utf8.h>

namespace kst::made {

std::string fileBytes(std::string_view text, TextForm form, bool windowsLineEnds) {
    std::string lines;
    for (const char c : text) {
        lines += c == '\n' && windowsLineEnds ? "\r\n" : std::string(1, c);
    }
    if (form == TextForm::Utf8) {
        return lines;
    }
    if (form == TextForm::Utf8WithMark) {
        return "\xEF\xBB\xBF" + lines;
    }
    std::string bytes = form == TextForm::Utf16Little ? "\xFF\xFE" : "\xFE\xFF";
    for (const char16_t unit : utf8::utf8to16(lines)) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += form == TextForm::Utf16Little ? std::string{low, high} : std::string{high, low};
    }
    return bytes;
}

} // namespace kst::made
