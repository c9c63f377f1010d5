#pragma once

// Makes a folder of installed aircraft as users have them, with everything in it that add-on makers do right
// and wrong, and knows for each section what a scan must make of it: each kind of section and file is written
// together with its outcome, without a look at the scanner's rules.

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kst::made {

struct ExpectedLivery {
    std::string airline;
    std::string model;
    std::string title;
    std::string regcode;
    bool cargo = false;

    /// The livery as one line of text, for comparisons and files.
    std::string text() const;
};

/// What a scan of the made folder must come to.
struct Expectation {
    std::vector<ExpectedLivery> liveries;                    ///< in the order of the walk
    std::map<std::string, std::vector<std::string>> reports; ///< report file name: its lines, not sorted
    std::vector<std::string> unwantedTitles;                 ///< must stand in a file of my_regcodes
    std::map<std::string, std::size_t> kinds;                ///< how many of each kind were made
    std::size_t files = 0;
    std::size_t sections = 0;
};

/// Makes `files` configuration files of `sections` sections each below `folder`, which is created. Throws
/// std::filesystem::filesystem_error or std::runtime_error.
Expectation makeInstallation(const std::filesystem::path& folder, std::size_t files, std::size_t sections);

/// Writes the expectation beside the installation: LiveriesScanned.txt, and each report under its own name,
/// all sorted.
void writeExpectation(const Expectation& expected, const std::filesystem::path& folder);

} // namespace kst::made
