// An archive from the download server: no content beyond the limit, whatever its directory claims.

#include "install/ziparchive.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t limit = 100'000;
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kestrane-fuzz-" + std::to_string(getpid()) + ".zip");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    kst::ZipArchive archive(path);
    archive.open();
    for (const kst::ZipEntry& entry : archive.getEntries()) {
        const auto text = entry.readAsText(limit);
        if (text && text->size() > limit) {
            std::abort();
        }
    }
    archive.close();
    std::filesystem::remove(path);
    return 0;
}
