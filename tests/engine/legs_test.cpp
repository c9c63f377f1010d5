// Legs between track points: their time, their aim, and what must hold whatever the feed says.

#include "engine/legs.h"

#include "engine/flown.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "engine/ticks.h"

#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <limits>

namespace kst::test {
namespace {

constexpr std::int32_t now = 10000;
constexpr LatLon start{47.0, 8.0};

class Legs : public ::testing::Test {
protected:
    LiveAc& flying(std::vector<TrackPoint> points, std::string_view type = "A320") {
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Air, std::move(points), type);
        ac.heightAgl = 2500.0;
        return ac;
    }
    EngineWorld world;
};

TEST_F(Legs, OverdueSecondPointIsApproachedOverTwentyFiveTicksNotInOneJump) {
    const LatLon next = offset(start, 0.0, 2500.0);
    LiveAc& ac = flying({airPoint(start, 5000, 200, now - 3000), airPoint(next, 5000, 200, now - 2500),
                         airPoint(offset(next, 0.0, 2500.0), 5000, 200, now + 3000)});
    nextPosMain(ac);
    EXPECT_NEAR(ac.dLat * 25, next.lat - start.lat, 1e-9);
    EXPECT_EQ(ac.track.front().dueTick, now + 25) << "the next leg begins where this one has been flown";
}

TEST_F(Legs, LegAimsFromWhereTheAircraftIsNotFromTheLastPoint) {
    const LatLon next = offset(start, 90.0, 3000.0);
    LiveAc& ac = flying({airPoint(start, 5000, 200, now), airPoint(next, 5000, 200, now + 2000),
                         airPoint(offset(next, 90.0, 3000.0), 5000, 200, now + 4000)});
    ac.simState.lat += 0.002;
    Flown flown(world, ac);
    flown.flyTo(now + 1);
    flown.flyTo(flown.ac().track.front().dueTick);
    EXPECT_LT(gf_distanceNm(flown.ac().simState.position(), next) * metresPerNm, 3.0);
}

struct Drift {
    const char* name;
    std::int32_t ticks; ///< that the aircraft can make
    std::int32_t fed;   ///< due time of the feed, from now
    std::int32_t lead;
    std::int32_t lag;
    std::int32_t reckonLeft;
    std::int32_t due; ///< expected, from now
};

TEST_F(Legs, ReplayMayLeaveTheFeedsTimeOnlyWithinTheDriftLimits) {
    const Drift table[] = {
        {"own time within the limits", 1500, 1200, 1000, 1000, 0, 1500},
        {"no later than the lag", 5000, 1200, 1000, 1000, 0, 2200},
        {"no earlier than the lead", 100, 3000, 1000, 1000, 0, 2000},
        {"wider limits on a landing", 5000, 1200, 3000, 3000, 0, 4200},
        {"never in the past, behind", 25, -5000, 1000, 1000, 0, 0},
        {"never in the past, ahead", -100, 500, 1000, 1000, 0, 0},
        {"invented points have no feed to keep to", 9000, 1200, 1000, 1000, 5, 9000},
        {"used up points do", 9000, 1200, 1000, 1000, -1, 2200},
    };
    for (const Drift& row : table) {
        LiveAc& ac = flying({airPoint(start, 5000, 200, now),
                             airPoint(offset(start, 0.0, 1000.0), 5000, 200, now + row.fed)});
        ac.maxLeadTicks = row.lead;
        ac.maxLagTicks = row.lag;
        ac.reckonLeft = row.reckonLeft;
        lf_setDueTick(ac, row.ticks);
        EXPECT_EQ(ac.track[1].dueTick - now, row.due) << row.name;
    }
}

TEST_F(Legs, FlightLegTakesTheTimeOfItsSpeed) {
    struct {
        const char* name;
        bool landing;
        bool ontoGround;
        double frontKt;
        double secondKt;
        std::int32_t ticks; ///< for a nautical mile
    } const table[] = {{"mean of both ends", false, false, 200, 220, 1714},
                       {"on an approach too", true, false, 200, 220, 1714},
                       {"onto the ground without one", false, true, 140, 60, 3600},
                       {"last leg of an approach", true, true, 140, 60, 2571},
                       {"last leg without a speed", true, true, 0, 60, 3600}};
    for (const auto& row : table) {
        LiveAc& ac = flying({airPoint(start, 900, row.frontKt, now),
                             airPoint(offset(start, 0.0, metresPerNm), 900, row.secondKt, now + 3000)});
        ac.landing = row.landing;
        ac.track[1].airborne = !row.ontoGround;
        ac.maxLeadTicks = ac.maxLagTicks = 3000;
        nextPosMain(ac);
        EXPECT_NEAR(ac.track.front().dueTick - now, row.ticks, 2) << row.name;
    }
}

TEST_F(Legs, StandingLegMovesNothingAndCalmsTheDriftLimits) {
    for (const bool departing : {false, true}) {
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Taxi,
                                   {groundPoint(start, 5, now), groundPoint(start, 0, now + 500)});
        ac.departing = departing;
        ac.dLat = ac.dLon = 1e-6;
        ac.maxLagTicks = 3000;
        nextPosMain(ac);
        EXPECT_TRUE(ac.track.front().stationary);
        EXPECT_EQ(ac.dLat, 0.0);
        EXPECT_EQ(ac.dLon, 0.0);
        EXPECT_EQ(ac.maxLagTicks, departing ? 3000 : 2900);
    }
}

TEST_F(Legs, WidenedDriftLimitsShrinkBackLegByLegAndNoFurther) {
    LiveAc& ac = flying({});
    ac.maxLeadTicks = 1150;
    ac.maxLagTicks = 3000;
    decayDriftLimits(ac);
    EXPECT_EQ(ac.maxLeadTicks, 1050);
    EXPECT_EQ(ac.maxLagTicks, 2900);
    decayDriftLimits(ac);
    EXPECT_EQ(ac.maxLeadTicks, 1000);
    decayDriftLimits(ac);
    EXPECT_EQ(ac.maxLeadTicks, 1000);
}

TEST_F(Legs, MeanSpeedComesFromDistanceAndTimeWhereTheFeedGivesNone) {
    LiveAc& ac = flying({airPoint(start, 0, 0, now), airPoint(offset(start, 0, 1852), 0, 0, now + 3600)});
    EXPECT_NEAR(lf_meanSpeed(ac), 100.0, 0.1);
    ac.track[1] = ac.track[0];
    EXPECT_EQ(lf_meanSpeed(ac), 1.0) << "standing still must not divide by nothing later";
    ac.track[0].gsKt = 100.0;
    ac.track[1].gsKt = 140.0;
    EXPECT_EQ(lf_meanSpeed(ac), 120.0);
}

TEST_F(Legs, FlyingAircraftDoesNotHangInTheAirAtAStandingPoint) {
    for (const bool marked : {true, false}) {
        TrackPoint standing = airPoint(start, 5000, 200, now + 500);
        standing.stationary = marked;
        const LatLon next = offset(start, 0.0, 3000.0);
        LiveAc& ac =
            flying({airPoint(start, 5000, 200, now), standing, airPoint(next, 5000, 200, now + 3000)});
        nextPosMain(ac);
        ASSERT_EQ(ac.track.size(), 1U) << marked;
        EXPECT_EQ(ac.track.front().position(), next) << marked;
        EXPECT_GT(ac.dLat, 0.0) << marked;
    }
}

TEST_F(Legs, HelicopterHoversAtAStandingPoint) {
    TrackPoint standing = airPoint(start, 500, 0, now + 500);
    standing.stationary = true;
    LiveAc& ac = flying(
        {airPoint(start, 500, 60, now), standing, airPoint(offset(start, 0.0, 900.0), 500, 60, now + 3000)},
        "EC35");
    nextPosMain(ac);
    EXPECT_EQ(ac.track.size(), 2U);
    EXPECT_TRUE(ac.track.front().stationary);
    EXPECT_EQ(ac.dLat, 0.0);
    EXPECT_EQ(ac.track.front().dueTick, now + 500) << "the hover lasts as long as the feed's";
    ac.dHeading = 0.001; // what is left of a turn
    ac.dBank = 0.001;
    Flown flown(world, ac);
    flown.flyTo(now + 499);
    EXPECT_EQ(flown.motion().headingDeg, 0.0);
    EXPECT_EQ(flown.motion().bankDeg, 0.0);
    EXPECT_EQ(flown.motion().metres, 0.0);
}

TEST_F(Legs, HelicopterThatComesToAHoverKeepsItsHeading) {
    const LatLon hover = offset(start, 90.0, 500.0);
    TrackPoint standing = airPoint(hover, 500, 0, now + 4000);
    standing.stationary = true;
    LiveAc& ac =
        flying({airPoint(start, 500, 40, now), airPoint(hover, 500, 20, now + 2000), standing}, "EC35");
    ac.simState.heading = pi / 2;
    nextPosMain(ac);
    EXPECT_EQ(ac.dHeading, 0.0) << "the bearing between two equal points is north, and means nothing";
}

TEST_F(Legs, DateLineIsCrossedTheShortWay) {
    const LatLon west{10.0, 179.99};
    LiveAc& ac = flying({airPoint(west, 30000, 450, now), airPoint({10.0, -179.98}, 30000, 450, now + 1420),
                         airPoint({10.0, -179.95}, 30000, 450, now + 2840)});
    Flown flown(world, ac);
    flown.flyTo(now + 1400, [](const LiveAc& flownAc) { EXPECT_LE(std::abs(flownAc.simState.lon), 180.0); });
    EXPECT_LT(flown.motion().metres, 4.0);
    EXPECT_NEAR(flown.ac().simState.lon, -179.98, 0.001);
}

TEST_F(Legs, PoleIsPassedWithoutAJump) {
    LiveAc& ac =
        flying({airPoint({89.95, 10.0}, 30000, 450, now), airPoint({89.99, 10.0}, 30000, 450, now + 1900),
                airPoint({89.97, -170.0}, 30000, 450, now + 3800),
                airPoint({89.90, -170.0}, 30000, 450, now + 7000)});
    Flown flown(world, ac);
    flown.flyTo(now + 5000, [](const LiveAc& flownAc) { EXPECT_LE(flownAc.simState.lat, 90.0); });
    EXPECT_LT(flown.motion().metres, 10.0);
}

TEST_F(Legs, DueTimesNearTheEndOfTheirRangeDoNotRunOver) {
    constexpr std::int32_t end = std::numeric_limits<std::int32_t>::max();
    world.setTick(end - 100);
    TrackPoint parked = groundPoint(start, 0, end - 100);
    parked.stationary = true;
    LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Parked, {parked});
    nextPosMain(ac);
    ASSERT_EQ(ac.track.size(), 1U);
    EXPECT_EQ(ac.track.front().dueTick, end);
    EXPECT_EQ(ac.state, AcState::Live);

    LiveAc& other =
        flying({airPoint(start, 5000, 200, end - 100), airPoint(offset(start, 0, 9000), 5000, 200, end)});
    other.maxLagTicks = 5000;
    nextPosMain(other);
    EXPECT_GE(other.track.front().dueTick, end - 100);
    EXPECT_GT(other.dLat, 0.0);
}

struct Hostile {
    const char* name;
    TrackPoint second;
    TrackPoint third;
};

TEST_F(Legs, WhateverTheFeedSaysTheSimulatorIsSentNumbers) {
    constexpr double huge = 1e300;
    const LatLon other{-47.0, -172.0}; // the far side of the world
    const Hostile table[] = {
        {"far side", airPoint(other, 5000, 200, now + 500), airPoint(start, 5000, 200, now + 1000)},
        {"huge speeds", airPoint(offset(start, 0, 900), 5000, huge, now + 500),
         airPoint(offset(start, 90, 900), 5000, huge, now + 1000)},
        {"negative speeds", airPoint(offset(start, 0, 900), 5000, -200, now + 500),
         airPoint(offset(start, 90, 900), 5000, 200, now + 1000)},
        {"speeds that cancel out", airPoint(offset(start, 0, 900), 5000, -100, now + 500),
         airPoint(offset(start, 90, 900), 5000, 0, now + 1000)},
        {"huge altitudes", airPoint(offset(start, 0, 900), huge, 200, now + 500),
         airPoint(offset(start, 90, 900), -huge, 200, now + 1000)},
        {"one spot", airPoint(start, 5000, 200, now + 1), airPoint(start, 5000, 200, now + 2)},
        {"due at once", airPoint(offset(start, 0, 900), 5000, 200, std::numeric_limits<std::int32_t>::min()),
         airPoint(offset(start, 90, 900), 5000, 200, std::numeric_limits<std::int32_t>::max())},
        {"opposite ends of longitude", airPoint({47.0, 180.0}, 5000, 200, now + 500),
         airPoint({47.0, -180.0}, 5000, 200, now + 1000)},
        {"poles", airPoint({90.0, 0.0}, 5000, 200, now + 500), airPoint({-90.0, 0.0}, 5000, 200, now + 1000)},
    };
    world.openAirport();
    for (const Hostile& row : table) {
        for (const bool onGround : {false, true}) {
            for (const std::string_view type : {"A320", "EC35"}) {
                world.setTick(now);
                TrackPoint first = airPoint(start, 5000, 100, now);
                first.airborne = !onGround;
                LiveAc& ac = world.addLive("SWR1", AcState::Live, onGround ? AcPhase::Taxi : AcPhase::Air,
                                           {first, row.second, row.third}, type);
                ac.heightAgl = onGround ? 0.0 : 900.0;
                SCOPED_TRACE(
                    fmt::format("{}, {} {}", row.name, type, onGround ? "on the ground" : "in the air"));
                Flown flown(world, ac);
                // Each tick is checked in there.
                flown.flyTo(now + 3000, [](const LiveAc& flownAc) {
                    ASSERT_LE(std::abs(flownAc.simState.lat), 90.0);
                    ASSERT_LE(std::abs(flownAc.simState.lon), 180.0);
                });
                liveAcs.clear();
            }
        }
    }
}

} // namespace
} // namespace kst::test
