#pragma once

#include <string>

namespace kst {

/// One real aircraft of the reference database.
struct RegcodeRec {
    std::string airline;      ///< ICAO operator code, "PVT" for a private aircraft, may be empty
    std::string model;        ///< ICAO type designator, may be empty
    std::string operatorCode; ///< who really flies it, where that is another; may be empty
    bool cargo = false;
};

} // namespace kst
