// A text file of the user in any encoding. The first byte of the input says which.

#include "core/files.h"
#include "fuzz/support/fuzzing.h"

#include <algorithm>
#include <stdexcept>

#include <utf8.h>

void fuzz(std::string_view input) {
    const auto encoding = static_cast<kst::TextEncoding>(takeChoice(input) % 6);
    const bool wide =
        encoding == kst::TextEncoding::Unicode || encoding == kst::TextEncoding::Unicode_big_endian;
    try {
        const std::vector<std::string> lines = kst::decodeTextLines(input, encoding);
        for (const std::string& line : lines) {
            require(line.find('\n') == std::string::npos);
            require(!wide || utf8::is_valid(line.begin(), line.end()));
        }
        const auto lineEnds = static_cast<std::size_t>(std::ranges::count(input, '\n'));
        require(wide || lines.size() <= lineEnds + 1);
    } catch (const std::runtime_error&) {
        // The one way to refuse a text.
    }
}
