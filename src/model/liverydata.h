#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace kst {

/// The airline of a private aircraft, and that of a livery without any airline's paint.
inline constexpr std::string_view privateAirline = "PVT";
inline constexpr std::string_view genericAirline = "ZZZ";

/// A registration has at most so many characters.
inline constexpr std::size_t longestRegcode = 12;

/// One livery installed on this machine.
struct LiveryData {
    std::string airline; ///< ICAO operator code, "PVT" private, "ZZZ" generic
    std::string model;   ///< ICAO type designator
    std::string title;   ///< exactly what the simulator is asked to create; unique in one scan
    std::string regcode; ///< registration painted on it, at most 12 characters, may be empty
    int priority = 0;    ///< number of its scan folder from 1 to 10; 0 when read back from the store
    bool cargo = false;  ///< parks at cargo stands

    /// What liveries are compared by when folders are prioritised.
    std::pair<std::string_view, std::string_view> airlineModel() const { return {airline, model}; }

    /// The order of the store: airline, model, title, byte by byte.
    friend bool operator<(const LiveryData& a, const LiveryData& b) {
        return std::tie(a.airline, a.model, a.title) < std::tie(b.airline, b.model, b.title);
    }
    /// The same livery, whichever folder it was found in.
    friend bool operator==(const LiveryData& a, const LiveryData& b) {
        return std::tie(a.airline, a.model, a.title, a.regcode, a.cargo) ==
               std::tie(b.airline, b.model, b.title, b.regcode, b.cargo);
    }
};

} // namespace kst
