// A text file of the user in any encoding. The first byte of the input says which.

#include "core/files.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <utf8.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto encoding = static_cast<kst::TextEncoding>(data[0] % 6);
    const std::string_view content(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        const std::vector<std::string> lines = kst::decodeTextLines(content, encoding);
        const bool wide =
            encoding == kst::TextEncoding::Unicode || encoding == kst::TextEncoding::Unicode_big_endian;
        for (const std::string& line : lines) {
            const bool isOneLine = line.find('\n') == std::string::npos;
            if (!isOneLine || (wide && !utf8::is_valid(line.begin(), line.end()))) {
                std::abort();
            }
        }
        const auto lineEnds = std::count(content.begin(), content.end(), '\n');
        if (!wide && lines.size() > static_cast<std::size_t>(lineEnds) + 1) {
            std::abort();
        }
    } catch (const std::runtime_error&) {
        // The one way to refuse a text.
    }
    return 0;
}
