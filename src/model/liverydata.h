#pragma once

#include <string>

namespace kst {

/// One livery installed on this machine.
struct LiveryData {
    std::string title;   ///< the simulator's title, the key of a creation
    std::string airline; ///< ICAO operator code, "PVT" private, "ZZZ" generic
    std::string model;   ///< ICAO type designator
    std::string regcode; ///< registration painted on it, may be empty
    int priority = 0;    ///< number of the folder it was found in
    bool cargo = false;
};

} // namespace kst
