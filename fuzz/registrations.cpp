// A user's file of registrations, in any encoding.

#include "catalogue/regcodefiles.h"
#include "core/files.h"
#include "fuzz/support/fuzzing.h"
#include "model/liverydata.h"

#include <stdexcept>

void fuzz(std::string_view input) {
    const auto encoding = static_cast<kst::TextEncoding>(takeChoice(input) % 4);
    std::vector<kst::RegcodeEntry> entries;
    try {
        for (const std::string& line : kst::decodeTextLines(input, encoding)) {
            kst::readRegcodeLine(line, "fuzz", entries);
        }
    } catch (const std::runtime_error&) {
        return; // UTF-16 that is none
    }
    for (const kst::RegcodeEntry& entry : entries) {
        for (const std::string& regcode : entry.regcodes) {
            require(!regcode.empty() && regcode.size() <= kst::longestRegcode);
        }
    }
}
