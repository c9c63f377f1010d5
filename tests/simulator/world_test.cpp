// The world under the traffic: ground, user, time.

#include "tests/simulator/client.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace kst::simconnect;
using namespace kst::standin;
using kst::test::Declared;

TEST(Terrain, IsFlatRoundAnAirportAndPassesGentlyIntoTheHills) {
    Terrain terrain;
    terrain.setHills(800.0, 200.0);
    terrain.addAirport(47.458, 8.548, 1416.0, 5.0);
    for (int step = -40; step <= 40; ++step)
        EXPECT_EQ(terrain.heightFt(47.458 + step * 0.002, 8.548), 1416.0) << step;
    double last = terrain.heightFt(47.458, 8.548);
    constexpr double stepDeg = 0.0005; // 55 m
    constexpr double steepestFt = 55.6 * feetPerMetre * 0.06;
    for (double lat = 47.458; lat < 48.5; lat += stepDeg) {
        const double height = terrain.heightFt(lat, 8.548);
        ASSERT_LT(std::abs(height - last), steepestFt) << "a cliff at " << lat;
        last = height;
    }
    EXPECT_NEAR(last, 800.0, 200.0);
    terrain.addAirport(47.458, 8.648, 1600.0);
    EXPECT_EQ(terrain.heightFt(47.458, 8.558), 1416.0) << "the nearer airport rules";
    EXPECT_EQ(terrain.heightFt(47.458, 8.638), 1600.0);
}

TEST(Geometry, DistancesAndMovesAgree) {
    EXPECT_NEAR(groundDistanceM(47.4582, 8.5555, 46.2370, 6.1092), 230200.0, 1000.0) << "Zurich to Geneva";
    double lat = 10.0;
    double lon = 179.99;
    moveOverGround(lat, lon, pi / 2.0, 5000.0);
    EXPECT_NEAR(groundDistanceM(10.0, 179.99, lat, lon), 5000.0, 0.01) << "across the date line";
    EXPECT_LT(lon, -179.9);
}

TEST(User, MovesStraightOnInTheAirAndOnTheGround) {
    World world;
    world.placeUser(47.0, 8.0, 5000.0, false);
    world.userMotion().straight(120.0, 600.0);
    for (int frame = 0; frame < 6000; ++frame)
        world.frame(0.01);
    EXPECT_NEAR(world.user().place.lat, 47.0 + 2.0 * metresPerNm / 111195.1, 1e-5);
    EXPECT_NEAR(world.user().place.altFt, 5600.0, 0.01);
    EXPECT_EQ(world.user().groundSpeedKt, 120.0);
    EXPECT_FALSE(world.onGround(world.user()));
    world.placeUser(47.0, 8.0, 0.0, true);
    world.user().place.headingRad = 1.0;
    world.userMotion().straight(30.0, 0.0);
    for (int second = 0; second < 600; ++second) {
        world.frame(1.0);
        ASSERT_NEAR(aboveGroundFt(world.user(), world.terrain()), world.user().sizes.cgToGroundFt, 1e-9);
    }
}

TEST(User, FollowsItsScriptFromTheGroundIntoTheAirAndHolds) {
    World world;
    world.terrain().addAirport(47.0, 8.0, 1000.0);
    world.placeUser(47.0, 8.0, 0.0, true);
    const double standing = world.user().place.altFt;
    world.userMotion().follow({{0.0, 47.0, 8.0, standing, true},
                               {60.0, 47.01, 8.0, standing, false},
                               {120.0, 47.02, 8.0, 3000.0, false}});
    world.frame(30.0);
    EXPECT_TRUE(world.onGround(world.user()));
    EXPECT_NEAR(world.user().place.lat, 47.005, 1e-9);
    EXPECT_NEAR(world.user().groundSpeedKt, 36.02, 0.01);
    world.frame(60.0);
    EXPECT_FALSE(world.onGround(world.user()));
    EXPECT_NEAR(world.user().place.altFt, (standing + 3000.0) / 2.0, 1e-6);
    world.frame(300.0);
    EXPECT_EQ(world.user().place.altFt, 3000.0);
    EXPECT_EQ(world.user().groundSpeedKt, 0.0);
}

TEST_F(Declared, ATeleportIsToldAndAPlacementIsNot) {
    world.placeUser(10.0, 10.0, 0.0, true);
    EXPECT_TRUE(client.take().empty());
    world.teleportUser(47.0, 8.0, 9000.0, false);
    EXPECT_EQ(client.takeOne(RecvEvent).words(2)[1], EventPositionChanged);
    EXPECT_EQ(world.user().place.altFt, 9000.0);
}

TEST(Time, RunsWithTheFramesAndStandsWhilePaused) {
    World world;
    world.setUtc(1735689599.0); // 2024-12-31 23:59:59
    EXPECT_EQ(world.date().dayOfYear, 366);
    world.frame(0.5);
    world.pause();
    world.frame(10.0);
    EXPECT_EQ(world.date().year, 2024);
    world.resume();
    world.frame(0.6);
    EXPECT_EQ(world.date().year, 2025);
    EXPECT_EQ(world.date().dayOfYear, 1);
    EXPECT_NEAR(world.date().secondsOfDay, 0.1, 1e-6);
}

TEST_F(Declared, SpeedIsMeasuredFromWhereTheObjectWentNotFromWhatItClaims) {
    const std::uint32_t id = client.created("A320", "SPEED", {47.0, 8.0, 0.0, 0.0, 0.0, 9000.0});
    client.freeze(id);
    world.second();
    for (const double lat : {47.001, 47.002, 47.003}) { // 111.2 m in a second
        client.set(DefinitionPosition, id, {lat, 8.0, 0.0, 0.0, 0.0, 9000.0, 0.0, 50.0});
        world.frame(1.0);
        world.second();
    }
    EXPECT_NEAR(world.find(id)->groundSpeedKt, 216.1, 0.1);
    EXPECT_EQ(world.find(id)->airspeedKt, 50.0);
}

} // namespace
