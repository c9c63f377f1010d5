// The files in which the simulator records add-ons. The first byte chooses the file, the second its encoding.

#include "catalogue/addonpackages.h"
#include "core/files.h"
#include "fuzz/support/fuzzing.h"

#include <stdexcept>

void fuzz(std::string_view input) {
    constexpr kst::TextEncoding encodings[] = {kst::TextEncoding::NoMark, kst::TextEncoding::Unicode,
                                               kst::TextEncoding::Unicode_big_endian,
                                               kst::TextEncoding::UTF8_with_BOM};
    const unsigned file = takeChoice(input) % 3;
    const auto encoding = encodings[takeChoice(input) % std::size(encodings)];
    try {
        const auto lines = kst::decodeTextLines(input, encoding);
        const auto folders = file == 0   ? kst::packagesOfAddOns(lines)
                             : file == 1 ? kst::foldersOfPackage(lines)
                                         : kst::foldersOfSimObjects(lines);
        require(folders.size() <= lines.size());
    } catch (const std::runtime_error&) {
        // UTF-16 that is none.
    }
}
