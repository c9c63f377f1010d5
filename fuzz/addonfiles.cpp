// The files in which the simulator records add-ons. The first byte chooses the file, the second its encoding.

#include "catalogue/addonpackages.h"
#include "core/files.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::string_view content(reinterpret_cast<const char*>(data + 2), size - 2);
    constexpr kst::TextEncoding encodings[] = {kst::TextEncoding::NoMark, kst::TextEncoding::Unicode,
                                               kst::TextEncoding::Unicode_big_endian,
                                               kst::TextEncoding::UTF8_with_BOM};
    std::vector<std::string> lines;
    try {
        lines = kst::decodeTextLines(content, encodings[data[1] % std::size(encodings)]);
    } catch (const std::runtime_error&) {
        return 0;
    }
    std::vector<std::string> folders;
    switch (data[0] % 3) {
    case 0:
        folders = kst::packagesOfAddOns(lines);
        break;
    case 1:
        folders = kst::foldersOfPackage(lines);
        break;
    default:
        folders = kst::foldersOfSimObjects(lines);
    }
    if (folders.size() > lines.size()) {
        std::abort();
    }
    return 0;
}
