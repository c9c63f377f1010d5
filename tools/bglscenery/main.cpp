// bglscenery: makes add-on scenery of its own, for tests, measurements and the demo.
//
//   bglscenery airports FACTS FOLDER    the airports whose stands are in FACTS/stands, one BGL file each
//   bglscenery defects FOLDER           one BGL file for each feature and each way to be broken
//   bglscenery plain FOLDER COUNT       so many BGL files without airports

#include "bglwriter.h"
#include "sceneryset.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace kst::scenery;

void write(const fs::path& path, const File& content) {
    const std::string bytes = bglBytes(content);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error(path.string() + " could not be written");
    }
}

void writeAll(const fs::path& folder, const std::vector<NamedFile>& files) {
    fs::create_directories(folder);
    for (const NamedFile& named : files) {
        write(folder / (named.name + ".bgl"), named.file);
    }
    std::cout << files.size() << " files written to " << folder.string() << '\n';
}

void writePlain(const fs::path& folder, unsigned long count) {
    std::vector<NamedFile> files;
    for (unsigned long i = 0; i < count; ++i) {
        files.push_back({"plain" + std::to_string(i), plainFile(1 + static_cast<unsigned>(i % 8))});
    }
    writeAll(folder, files);
}

int usage() {
    std::cerr << "usage: bglscenery airports FACTS FOLDER\n"
                 "       bglscenery defects FOLDER\n"
                 "       bglscenery plain FOLDER COUNT\n";
    return 2;
}

int run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "airports") {
        writeAll(words[2], realAirports(words[1]));
    } else if (words.size() == 2 && words[0] == "defects") {
        writeAll(words[1], featuresAndDefects());
    } else if (words.size() == 3 && words[0] == "plain") {
        writePlain(words[1], std::stoul(words[2]));
    } else {
        return usage();
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return run(std::vector<std::string>(arguments + 1, arguments + count));
    } catch (const std::exception& error) {
        std::cerr << "bglscenery: " << error.what() << '\n';
        return 1;
    }
}
