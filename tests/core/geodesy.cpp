#include "core/geodesy.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace kst {
namespace {

constexpr LatLon zurich{47.458, 8.548};
constexpr LatLon losAngeles{33.9425, -118.4081};
constexpr LatLon newYork{40.6398, -73.7789};
constexpr LatLon fiji{-17.7554, 177.4434};
constexpr LatLon apia{-13.83, -172.0083};

TEST(GeodesyTest, KnownDistances) {
    struct Case {
        LatLon from, to;
        double nm, tolerance;
    };
    const Case cases[] = {
        // One minute of arc is a nautical mile on this sphere.
        {{0, 0}, {1.0 / 60, 0}, 1.0, 1e-9},
        {{47.0, 8.0}, {47.00001, 8.0}, 0.0006, 1e-9}, // a stand's width away
        {{0, 0}, {0, 1}, 60.0, 0.002},
        {{60, 10}, {60, 11}, 30.0, 0.002},
        {{90, 0}, {-90, 0}, 10800.0, 0.2},
        {{0, 0}, {0, 180}, 10800.0, 0.2},
        {{89, 0}, {89, 180}, 120.0, 0.01},
        // Tables of airline distances, on the ellipsoid: within half a percent of the sphere.
        {losAngeles, newYork, 2145.5, 11},
        {fiji, apia, 654.0, 6},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(gf_distanceNm(c.from, c.to), c.nm, c.tolerance);
        EXPECT_EQ(gf_distanceNm(c.from, c.to), gf_distanceNm(c.to, c.from));
    }
    EXPECT_EQ(gf_distanceNm(zurich, zurich), 0.0);
}

TEST(GeodesyTest, Bearings) {
    struct Case {
        LatLon from, to;
        double degrees, tolerance;
    };
    const Case cases[] = {
        {{0, 0}, {1, 0}, 0, 1e-9},     {{0, 0}, {0, 1}, 90, 1e-9},          {{1, 0}, {0, 0}, 180, 1e-9},
        {{0, 1}, {0, 0}, 270, 1e-9},   {{0, 179.5}, {0, -179.5}, 90, 1e-9}, {losAngeles, newYork, 65.9, 0.2},
        {{10, 20}, {10, 20}, 0, 1e-9}, {{0, 0}, {0.5, -0.5}, 315, 0.01},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(gf_bearing(c.from, c.to) * degPerRad, c.degrees, c.tolerance);
    }
}

TEST(GeodesyTest, ADestinationIsAsFarAndWhereItWasAsked) {
    for (const LatLon from :
         {zurich, newYork, fiji, LatLon{0, 0}, LatLon{84, 179.99}, LatLon{-60, -179.999}}) {
        for (const double feet : {10.0, 5000.0, 300000.0, 3.0e6}) {
            for (double bearing = 0; bearing < 2 * pi; bearing += 0.37) {
                const LatLon to = gf_destination(from, bearing, feet);
                ASSERT_LE(std::abs(to.lon), 180.0);
                const double expected = feet / feetPerNm;
                ASSERT_NEAR(gf_distanceNm(from, to), expected, expected * 2e-4 + 1e-7);
                ASSERT_NEAR(gf_angleDiff(gf_bearing(from, to), bearing), 0.0, 1e-4);
            }
        }
    }
}

TEST(GeodesyTest, TheShortWayRound) {
    const std::tuple<double, double, double> cases[] = {
        {0, 90, 90}, {350, 10, 20}, {10, 350, -20}, {0, 359, -1}, {90, 90, 0}, {0, 721, 1}, {-170, 170, -20},
    };
    for (const auto& [from, to, diff] : cases) {
        EXPECT_NEAR(gf_angleDiff(from * radPerDeg, to * radPerDeg) * degPerRad, diff, 1e-9)
            << from << " " << to;
    }
    EXPECT_NEAR(std::abs(gf_angleDiff(0, pi)), pi, 1e-12);
}

TEST(GeodesyTest, HeadingsStayWithinTheCircle) {
    EXPECT_EQ(wrapHeading(0), 0.0);
    EXPECT_EQ(wrapHeading(2 * pi), 0.0);
    EXPECT_NEAR(wrapHeading(-0.5), 2 * pi - 0.5, 1e-12);
    EXPECT_NEAR(wrapHeading(7 * pi), pi, 1e-12);
    for (const double tiny : {-1e-300, -1e-17, -std::numeric_limits<double>::denorm_min()}) {
        EXPECT_GE(wrapHeading(tiny), 0.0);
        EXPECT_LT(wrapHeading(tiny), 2 * pi) << "rounded up to the full circle";
    }
    EXPECT_NEAR(wrapLongitude(181), -179.0, 1e-12);
    EXPECT_NEAR(wrapLongitude(-541), 179.0, 1e-12);
    EXPECT_EQ(wrapLongitude(12.5), 12.5);
}

} // namespace
} // namespace kst
