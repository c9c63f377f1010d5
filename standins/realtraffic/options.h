#pragma once

// Command line of the stand-in.

#include "feedservice.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kst::standin {

struct Options {
    ServiceOptions service;
    RecordedOptions recorded;
    GeneratorOptions generator;
    bool generate = false;
    bool centreGiven = false;
    std::filesystem::path sent; ///< empty: no record
    double seconds = 0.0;       ///< how long to run; 0 until ended
    bool help = false;
};

/// Reads the arguments behind the program's name. Throws std::runtime_error with a text for the user when
/// they do not make sense.
Options readOptions(const std::vector<std::string>& arguments);

/// The list of options for the user.
std::string optionsHelp();

} // namespace kst::standin
