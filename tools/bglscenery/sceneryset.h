#pragma once

#include "bglwriter.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kst::scenery {

struct NamedFile {
    std::string name; ///< without extension; says what is special about it
    File file;
};

/// An airport with everything that a stand can be, in both record forms, and one file for each way in which a
/// file can be unusual or broken.
std::vector<NamedFile> featuresAndDefects();

/// Scenery of the airports of which stands/ICAO.csv exists below the folder of facts, one file each, the two
/// record forms in turn. Throws std::runtime_error when a file of facts cannot be read.
std::vector<NamedFile> realAirports(const std::filesystem::path& facts);

/// A file as most of a simulator's are: without airports.
File plainFile(unsigned sections);

} // namespace kst::scenery
