#pragma once

// Small made-up tracks for stories of the whole program, in metres from one place.

#include "model/units.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kst::test {

/// East and north of the place, metres.
struct Offset {
    double east = 0.0;
    double north = 0.0;
};

/// The point at this offset; good for some tens of kilometres.
LatLon placeAt(LatLon origin, Offset offset);

/// One steady movement: it begins `fromSecond` after the feed and is reported every two seconds, up to and
/// without `toSecond`.
struct Move {
    int fromSecond = 0;
    int toSecond = 0;
    Offset from;
    double trackDeg = 0.0;
    double kt = 0.0;
    std::optional<double> altFt{};      ///< on the ground without
    std::optional<double> headingDeg{}; ///< true; the feed says nothing of it without
};

/// Where it ends.
Offset endOf(const Move& move);

class MadeTracks {
public:
    explicit MadeTracks(LatLon origin) : origin_(origin) {}

    /// Introduces a target and returns its number. Targets with the same address are one, under another name.
    int target(int address, const std::string& callsign, const std::string& type,
               const std::string& registration = {});
    /// Returns where the movement ends.
    Offset add(int number, const Move& move);
    /// Writes them as recorded tracks (docs/formats.md).
    void write(const std::filesystem::path& file) const;

private:
    LatLon origin_;
    std::vector<std::string> introductions_;
    std::multimap<int, std::string> points_; ///< by second
};

} // namespace kst::test
