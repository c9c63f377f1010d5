// A user's file of registrations, in any encoding.

#include "catalogue/regcodefiles.h"
#include "core/files.h"
#include "model/liverydata.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto encoding = static_cast<kst::TextEncoding>(data[0] % 4);
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::vector<kst::RegcodeEntry> entries;
    try {
        for (const std::string& line : kst::decodeTextLines(text, encoding)) {
            kst::readRegcodeLine(line, "fuzz", entries);
        }
    } catch (const std::runtime_error&) {
        return 0; // UTF-16 that is none
    }
    for (const kst::RegcodeEntry& entry : entries) {
        for (const std::string& regcode : entry.regcodes) {
            if (regcode.empty() || regcode.size() > kst::longestRegcode) {
                std::abort();
            }
        }
    }
    return 0;
}
