#pragma once

// The ground under the stand-in's world, and the few formulas of a sphere that it needs. Its own, so that a
// mistake in the program's geodesy shows.

#include <vector>

namespace kst::standin {

inline constexpr double metresPerNm = 1852.0;
inline constexpr double feetPerMetre = 1.0 / 0.3048;
inline constexpr double secondsPerHour = 3600.0;
inline constexpr double pi = 3.14159265358979323846;
inline constexpr double radPerDeg = pi / 180.0;

/// Great circle distance in metres on a sphere of 6371.0088 km mean radius.
double groundDistanceM(double latA, double lonA, double latB, double lonB);

/// Moves a point by metres on a true bearing (radians). Keeps the longitude in -180 to 180.
void moveOverGround(double& latDeg, double& lonDeg, double bearingRad, double metres);

/// An angle brought into 0 to 2 pi.
double wrapHeading(double rad);

/// The height of the ground: gentle hills, flat round each airport.
class Terrain {
public:
    struct Airport {
        double lat;
        double lon;
        double elevationFt;
        double flatM;
    };
    /// The mean height away from airports, and how far the hills rise above and fall below it. Feet.
    void setHills(double meanFt, double amplitudeFt);
    /// Flat ground of this elevation up to `flatNm` round the place, passing over into the hills at twice
    /// that. Where airports overlap, the ground is the nearer one's.
    void addAirport(double lat, double lon, double elevationFt, double flatNm = 5.0);
    /// Feet above sea level.
    double heightFt(double lat, double lon) const;
    const std::vector<Airport>& airports() const { return airports_; }

private:
    double meanFt_ = 300.0;
    double amplitudeFt_ = 150.0;
    std::vector<Airport> airports_;
};

} // namespace kst::standin
