#include "system/linux/madetracks.h"

#include <cmath>
#include <fstream>

#include <fmt/format.h>

namespace kst::test {

namespace {

constexpr double metresPerDegree = 111'195.0; ///< of latitude
constexpr double metresPerSecondPerKnot = 1852.0 / 3600.0;
constexpr int reportSeconds = 2;

Offset movedOn(const Move& move, int seconds) {
    const double metres = move.kt * metresPerSecondPerKnot * seconds;
    return {move.from.east + metres * std::sin(move.trackDeg * radPerDeg),
            move.from.north + metres * std::cos(move.trackDeg * radPerDeg)};
}

std::string textOf(const std::optional<double>& number) {
    return number ? fmt::format("{:.0f}", *number) : std::string();
}

} // namespace

LatLon placeAt(LatLon origin, Offset offset) {
    return {origin.lat + offset.north / metresPerDegree,
            origin.lon + offset.east / metresPerDegree / std::cos(origin.lat * radPerDeg)};
}

Offset endOf(const Move& move) {
    return movedOn(move, move.toSecond - move.fromSecond);
}

int MadeTracks::target(int address, const std::string& callsign, const std::string& type,
                       const std::string& registration) {
    const int number = static_cast<int>(introductions_.size()) + 1;
    introductions_.push_back(
        fmt::format("aircraft,{},{:06x},{},{},{}\n", number, address, callsign, registration, type));
    return number;
}

Offset MadeTracks::add(int number, const Move& move) {
    for (int second = move.fromSecond; second < move.toSecond; second += reportSeconds) {
        const LatLon place = placeAt(origin_, movedOn(move, second - move.fromSecond));
        points_.emplace(second, fmt::format("{},{},{:.7f},{:.7f},{},0,{:.1f},{:.1f},{},{}\n", second, number,
                                            place.lat, place.lon, textOf(move.altFt), move.trackDeg, move.kt,
                                            move.altFt ? 0 : 1, textOf(move.headingDeg)));
    }
    return endOf(move);
}

void MadeTracks::write(const std::filesystem::path& file) const {
    std::ofstream out(file);
    out << "start,0\n";
    for (const std::string& introduction : introductions_) {
        out << introduction;
    }
    for (const auto& [second, point] : points_) {
        out << point;
    }
}

} // namespace kst::test
