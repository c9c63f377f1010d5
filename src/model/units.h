#pragma once

// Units and conversion factors that every subsystem shares.
//
// Positions are WGS-84 degrees, distances nautical miles, altitudes feet, speeds knots. Angles that the
// simulator is given are radians in its own sign: a negative pitch is nose up, a negative bank right wing
// down.

#include <numbers>

namespace kst {

inline constexpr double pi = std::numbers::pi;
inline constexpr double metresPerNm = 1852.0;
inline constexpr double nmPerMetre = 0.0005399568034557236;
inline constexpr double feetPerNm = 6076.11549;
inline constexpr double radPerDeg = pi / 180.0;
inline constexpr double degPerRad = 180.0 / pi;

/// Ticks of the engine in one second: one tick is one pass of the 10 ms loop.
inline constexpr int ticksPerSecond = 100;
/// Turns nautical miles per tick into knots.
inline constexpr double ticksPerHour = 360000.0;
/// How long a feed position waits before the aircraft is to be there: the traffic plays 30 seconds late.
inline constexpr int playDelayTicks = 3000;

/// A position in degrees, WGS-84.
struct LatLon {
    double lat = 0.0;
    double lon = 0.0;
    friend bool operator==(const LatLon&, const LatLon&) = default;
};

} // namespace kst
