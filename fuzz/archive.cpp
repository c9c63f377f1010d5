// An archive from the download server: no content beyond the limit, whatever its directory claims.

#include "fuzz/support/fuzzing.h"
#include "install/ziparchive.h"

#include <filesystem>
#include <fstream>

#include <unistd.h>

void fuzz(std::string_view input) {
    constexpr std::size_t limit = 100'000;
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kestrane-fuzz-" + std::to_string(getpid()) + ".zip");
    std::ofstream(path, std::ios::binary) << input;
    kst::ZipArchive archive(path);
    archive.open();
    for (const kst::ZipEntry& entry : archive.getEntries()) {
        require(entry.readAsText(limit).value_or("").size() <= limit);
    }
    archive.close();
    std::filesystem::remove(path);
}
