#include "feed/rangetest.h"

#include "core/geodesy.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace kst;

LatLon randomPosition(std::mt19937& random) {
    std::uniform_real_distribution<double> latitude(-90.0, 90.0);
    std::uniform_real_distribution<double> longitude(-180.0, 180.0);
    return {latitude(random), longitude(random)};
}

/// Positions worth trying round a centre: at the range in all directions to within the last bits, and
/// anywhere.
LatLon tryPosition(std::mt19937& random, LatLon centre, double rangeNm) {
    if (random() % 4 == 0) {
        return randomPosition(random);
    }
    constexpr std::array<double, 6> scales = {1.0, 1.0 + 1e-15, 1.0 - 1e-15, 1.0 + 1e-6, 1.001, 0.999};
    const double bearing = static_cast<double>(random() % 3600) / 3600 * 2 * pi;
    const double feet = rangeNm * feetPerNm * scales[random() % scales.size()];
    return gf_destination(centre, bearing, feet);
}

TEST(RangeTest, AnswersAsThePlainFormula) {
    std::mt19937 random{4711};
    RangeTest test;
    std::size_t outside = 0;
    const std::vector<double> ranges = {0.0,    0.004,  2.0,    10.0,    40.0,   100.0,
                                        3000.0, 5400.0, 9000.0, 10799.9, 20000.0};
    constexpr int centres = 3'000;
    for (int i = 0; i < centres; ++i) {
        LatLon centre = randomPosition(random);
        if (i % 5 == 0) {
            // Round the poles, where meridians meet, and at the date line.
            centre = {i % 2 == 0 ? 89.9 : -90.0, centre.lon};
        } else if (i % 5 == 1) {
            centre.lon = i % 2 == 0 ? 179.95 : -180.0;
        }
        const double rangeNm = ranges[random() % ranges.size()];
        for (int j = 0; j < 100; ++j) {
            const LatLon position = tryPosition(random, centre, rangeNm);
            const bool expected = gf_distanceNm(centre, position) > rangeNm;
            outside += expected ? 1 : 0;
            ASSERT_EQ(test.outside(centre, rangeNm, position), expected)
                << centre.lat << "," << centre.lon << " " << rangeNm << " nm " << position.lat << ","
                << position.lon;
        }
    }
    EXPECT_GT(outside, 50'000U);
    EXPECT_LT(outside, 250'000U);
}

TEST(RangeTest, ACentreThatIsNoPlaceIsNeverOutside) {
    RangeTest test;
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(test.outside({none, none}, 40.0, {47.0, 8.0}));
    EXPECT_FALSE(test.outside({47.0, 8.0}, none, {48.0, 8.0}));
    EXPECT_TRUE(test.outside({47.0, 8.0}, 40.0, {48.0, 8.0})) << "the limits of before still hold";
}

} // namespace
