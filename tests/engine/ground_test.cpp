// Ground legs: corners, timing, speed changes, push back and pulling out.

#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/curves.h"
#include "engine/flown.h"
#include "engine/groundleg.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "engine/pushback.h"
#include "model/simconnect.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace kst::test {
namespace {

using ::testing::ElementsAre;

constexpr std::int32_t now = 10000;
constexpr LatLon place{47.45, 8.56};

class Ground : public ::testing::Test {
protected:
    /// Taxiing east; the corner lies `legM` ahead and turns by `turnDeg`.
    LiveAc& atCorner(double turnDeg, double legM = 40.0, double gsKt = 12.0) {
        const LatLon corner = offset(place, 90.0, legM);
        const auto legTicks = static_cast<std::int32_t>(legM / metresPerNm * ticksPerHour / gsKt);
        LiveAc& ac =
            world.addLive("SWR1", AcState::Live, AcPhase::Taxi,
                          {groundPoint(place, gsKt, now), groundPoint(corner, gsKt, now + legTicks),
                           groundPoint(offset(corner, 90.0 + turnDeg, 60.0), gsKt, now + 2 * legTicks)});
        ac.simState.heading = pi / 2;
        return ac;
    }
    EngineWorld world;
};

struct Corner {
    double turnDeg;
    double legM;
    bool curve;
    bool midPoint;
};

TEST_F(Ground, CornersAreRoundedBrakedIntoOrLeftAlone) {
    const Corner table[] = {{2.9, 40, false, false}, {3.5, 40, true, false},   {44, 40, true, false},
                            {44, 90, true, false},   {46, 40, true, false},    {46, 90, false, true},
                            {159, 40, true, false},  {170, 40, false, false},  {170, 90, false, true},
                            {-90, 40, true, false},  {-170, 40, false, false}, {-60, 90, false, true}};
    for (const Corner& row : table) {
        LiveAc& ac = atCorner(row.turnDeg, row.legM);
        nextPosGround(ac);
        EXPECT_EQ(curveActive(ac), row.curve) << row.turnDeg << " over " << row.legM;
        EXPECT_EQ(ac.track.size(), 3U + (row.midPoint ? 1U : 0U) - (row.curve ? 1U : 0U))
            << row.turnDeg << " over " << row.legM;
        if (row.curve) {
            EXPECT_NEAR(ac.curveTurnDeg, std::abs(row.turnDeg), 0.2);
        }
    }
}

TEST_F(Ground, CornerOfExactlyFortyFiveDegreesNeedsNoBrakingLeg) {
    // On the equator, with a heading chosen so that the sum is exact in the last bit.
    LiveAc& ac = atCorner(0, 90);
    ac.track[0].lat = ac.track[1].lat = ac.track[2].lat = 0.0;
    ac.simState.lat = 0.0;
    ac.simState.heading = pi / 4; // the next leg lies due east
    nextPosGround(ac);
    EXPECT_TRUE(curveActive(ac));
    EXPECT_DOUBLE_EQ(ac.curveTurnDeg, 45.0);
}

TEST_F(Ground, SharpCornerIsBrakedIntoOnlyOnALongSlowLeg) {
    struct {
        double gsKt;
        std::int32_t legTicks;
        bool brakes;
    } const table[] = {{43, 600, true}, {44, 600, false}, {43, 599, false}};
    for (const auto& row : table) {
        LiveAc& ac = atCorner(60, 90, row.gsKt);
        ac.track[1].dueTick = now + row.legTicks;
        nextPosGround(ac);
        EXPECT_EQ(curveActive(ac), !row.brakes) << row.gsKt << " for " << row.legTicks;
    }
}

TEST_F(Ground, LegThatReturnsToItsStartGetsNoCurve) {
    LiveAc& ac = atCorner(0);
    ac.track[2] = groundPoint(place, 12, now + 3000);
    ac.simState.heading = 0.9 * pi; // so that the angle itself would allow one
    nextPosGround(ac);
    EXPECT_FALSE(curveActive(ac));
    EXPECT_EQ(ac.track.size(), 3U);
}

TEST_F(Ground, CornerBeforeAStopGetsNoCurve) {
    LiveAc& ac = atCorner(90);
    ac.track[2].stationary = true;
    nextPosGround(ac);
    EXPECT_FALSE(curveActive(ac));
}

TEST_F(Ground, CurveGivesAThirdPointWithoutSpeedTheMeanOfTheFirstTwo) {
    LiveAc& ac = atCorner(90);
    ac.track[0].gsKt = 10.0;
    ac.track[1].gsKt = 16.0;
    ac.track[2].gsKt = 0.0;
    const LatLon goal = ac.track[2].position();
    lf_buildCurve(ac);
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(ac.track[1].gsKt, 13.0);
    EXPECT_EQ(ac.track[1].position(), goal);
}

TEST_F(Ground, CurveRunsFromTheAircraftToTheThirdPointRoundTheCorner) {
    for (const double lat : {47.45, -33.9, 0.0, 78.2}) {
        LiveAc& ac = atCorner(0);
        const LatLon start{lat, 179.9998};
        const LatLon corner = offset(start, 90.0, 40.0);
        const LatLon goal = offset(corner, 180.0, 40.0);
        ac.track = {groundPoint(start, 12, now), groundPoint(corner, 12, now + 600),
                    groundPoint(goal, 12, now + 1200)};
        ac.simState.lat = start.lat;
        ac.simState.lon = start.lon;
        lf_buildCurve(ac);
        const auto first = lf_evalCurve(ac, 0.0);
        const auto middle = lf_evalCurve(ac, 0.5);
        const auto last = lf_evalCurve(ac, 1.0);
        ASSERT_TRUE(first && middle && last);
        EXPECT_LT(gf_distanceNm(first->position, start) * metresPerNm, 0.1) << lat;
        EXPECT_NEAR(first->heading * degPerRad, 90.0, 0.1) << lat;
        EXPECT_NEAR(middle->heading * degPerRad, 135.0, 0.2) << lat;
        EXPECT_LT(gf_distanceNm(last->position, goal) * metresPerNm, 0.3) << lat;
        EXPECT_NEAR(last->heading * degPerRad, 180.0, 0.1) << lat;
        EXPECT_LE(std::abs(middle->position.lon), 180.0);
    }
}

TEST_F(Ground, CurveHasNoPointOutsideItsRangeNorWithoutItsControlPoint) {
    LiveAc& ac = atCorner(90);
    EXPECT_FALSE(lf_evalCurve(ac, 0.5)) << "none is active";
    lf_buildCurve(ac);
    EXPECT_TRUE(lf_evalCurve(ac, 0.5));
    for (const double t : {-0.001, 1.001, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(lf_evalCurve(ac, t)) << t;
    }
}

TEST_F(Ground, LongLegWithAChangeOfSpeedIsSplit) {
    struct {
        const char* name;
        double frontKt;
        double secondKt;
        double legM;
        bool split;
    } const table[] = {{"brakes", 20, 14, 110, true},
                       {"barely", 20, 15, 110, false},
                       {"short leg", 20, 5, 99, false},
                       {"stops", 12, 0, 110, true},
                       {"no speeds", 0, 0, 110, false}};
    for (const auto& row : table) {
        LiveAc& ac = atCorner(0, row.legM);
        ac.track[0].gsKt = row.frontKt;
        ac.track[1].gsKt = row.secondKt;
        lf_smoothSpeed(ac);
        EXPECT_EQ(ac.track.size(), row.split ? 4U : 3U) << row.name;
    }
}

TEST_F(Ground, MidPointLiesHalfWayInPlaceTimeAndSpeedAlsoAcrossTheDateLine) {
    LiveAc& ac = atCorner(0);
    ac.track[0].lon = 179.9;
    ac.track[1].lon = -179.7;
    ac.track[0].dueTick = std::numeric_limits<std::int32_t>::max() - 1;
    ac.track[1].dueTick = std::numeric_limits<std::int32_t>::max();
    ac.track[0].gsKt = 10;
    ac.track[1].gsKt = 20;
    ac.track[0].stationary = true;
    ac.track[1].altFt = 100;
    lf_insertMidPoint(ac);
    ASSERT_EQ(ac.track.size(), 4U);
    EXPECT_NEAR(ac.track[1].lon, -179.9, 1e-9);
    EXPECT_EQ(ac.track[1].dueTick, std::numeric_limits<std::int32_t>::max() - 1);
    EXPECT_EQ(ac.track[1].gsKt, 15.0);
    EXPECT_EQ(ac.track[1].altFt, 50.0);
    EXPECT_TRUE(ac.track[1].airborne);
    EXPECT_FALSE(ac.track[1].stationary);
}

TEST_F(Ground, StandingLegLastsAsLongAsTheFeeds) {
    LiveAc& ac = atCorner(0);
    ac.track[1].stationary = true;
    ac.track[1].dueTick = now + 777;
    lf_timeTaxiLeg(ac);
    EXPECT_EQ(ac.track[1].dueTick, now + 777);
    ac.track[1].dueTick = now - 5;
    lf_timeTaxiLeg(ac);
    EXPECT_EQ(ac.track[1].dueTick, now + 25);
}

TEST_F(Ground, TurnIsFittedToTheTimeOfItsLeg) {
    LiveAc& plain = atCorner(0);
    plain.turnRate = 99.0;
    lf_timeTaxiLeg(plain);
    EXPECT_EQ(plain.turnRate, plain.baseTurnRate) << "each leg begins at the rate of the size class";

    // An A320 turns 40 degrees in 5.7 s and taxies 6.2 m/s at 12 kt.
    struct {
        const char* name;
        double turnDeg, legM, gsKt;
        double rates; ///< the leg's rate of turn in rates of the size class
        std::int32_t driftTicks;
    } const table[] = {
        {"gentle with time to spare: fast at its beginning", 40, 40, 12, 2.02, 1000},
        {"slight over a long leg: done within 30 m", 8, 80, 12, 0.134, 1000},
        {"slight over a short leg: all along it", 5, 20, 12, 0.127, 1000},
        {"gentle with hardly any time to spare", 40, 22, 12, 0.917, 1000},
        {"gentle in less than its time", 40, 15, 12, 1.346, 1000},
        {"sharp", 60, 80, 12, 2.0, 1000},
        {"sharp in less than its time", 60, 15, 12, 0.495, 1000},
        {"right angle", 90, 150, 12, 3.0, 2000},
        {"nearly back", 150, 400, 12, 3.0, 2000},
    };
    for (const auto& row : table) {
        LiveAc& ac = atCorner(0, row.legM, row.gsKt);
        ac.turnOnly = true;
        ac.turnDeg = row.turnDeg;
        lf_timeTaxiLeg(ac);
        EXPECT_NEAR(ac.turnRate / ac.baseTurnRate, row.rates, 0.01 * row.rates) << row.name;
        EXPECT_EQ(ac.maxLeadTicks, row.driftTicks) << row.name;
        EXPECT_EQ(ac.maxLagTicks, row.driftTicks) << row.name;
    }
}

TEST_F(Ground, TaxiTurnsOnTheSpotOnlyTowardsItsLegAndNeverBeyond) {
    LiveAc& ac = atCorner(0, 80.0, 6.0);
    ac.simState.heading = 60.0 * radPerDeg;
    ac.track.pop_back();
    Flown flown(world, ac);
    double closest = 30.0;
    flown.flyTo(now + 1500, [&](const LiveAc& flownAc) {
        const double off = std::abs(gf_angleDiff(flownAc.simState.heading, pi / 2)) * degPerRad;
        ASSERT_LE(off, closest + 1e-9) << "swings back";
        closest = off;
    });
    EXPECT_LE(closest, 0.51);
}

TEST_F(Ground, GroundLegKeepsTheAircraftLevelAtItsPitchOfRest) {
    LiveAc& ac = atCorner(0);
    ac.staticPitch = 0.01;
    ac.simState.pitch = -0.2;
    ac.simState.bank = 0.3;
    ac.departing = true;
    ac.maxLagTicks = 5000;
    nextPosMain(ac);
    EXPECT_EQ(ac.simState.pitch, 0.01);
    EXPECT_EQ(ac.simState.bank, 0.0);
    EXPECT_EQ(ac.maxLagTicks, 5000) << "a departure keeps its room";
}

TEST_F(Ground, LandedAircraftBeginsToTaxi) {
    LiveAc& ac = atCorner(0);
    ac.phase = AcPhase::Air;
    nextPosMain(ac);
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
    EXPECT_EQ(ac.prevPhase, AcPhase::Air);
}

// ---- leaving the stand ----

class LeavingStand : public ::testing::Test {
protected:
    /// Parked with the nose to the north; the feed has been heard `feedDeg` off the stand's heading.
    LiveAc& parkedAndMoving(double feedDeg) {
        ParkPos& stand = world.addStand("B27", place, 20.0);
        TrackPoint front = groundPoint(place, 0, now);
        front.stationary = true;
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Parked,
                                   {front, groundPoint(offset(place, feedDeg, 90.0), 3, now + 500)});
        ac.sid = stand.sid;
        ac.standLat = place.lat;
        ac.standLon = place.lon;
        ac.moveOffSeen = true;
        ac.airline = "SWR";
        // What its last turn, years ago, has left behind.
        ac.turnOnly = true;
        ac.turnDeg = 90.0;
        return ac;
    }
    EngineWorld world;
};

TEST_F(LeavingStand, AircraftPullsOutTowardsAPositionAheadAndIsPushedTowardsOneBehind) {
    for (const auto& [feedDeg, pulls] :
         {std::pair{30.0, true}, std::pair{89.0, true}, std::pair{120.0, false}, std::pair{-30.0, true},
          std::pair{-120.0, false}, std::pair{90.0, false}}) {
        LiveAc& ac = parkedAndMoving(feedDeg);
        nextPosMain(ac);
        EXPECT_EQ(ac.phase, pulls ? AcPhase::Taxi : AcPhase::PushBack) << feedDeg;
        EXPECT_EQ(lightsSent(ac), "1101010");
        EXPECT_EQ(ac.maxLagTicks >= 2900, true);
    }
}

TEST_F(LeavingStand, PushBackWithoutNewsStaysStraightAndMovesTailFirst) {
    LiveAc& ac = parkedAndMoving(170.0);
    Flown flown(world, ac);
    bool backwards = false;
    flown.flyTo(now + 9000, [&](const LiveAc& pushed) {
        if (pushed.phase == AcPhase::PushBack && pushed.airspeedTarget != 0.0) {
            EXPECT_LT(pushed.airspeedTarget, 0.0);
            backwards = true;
        }
    });
    EXPECT_TRUE(backwards);
    ASSERT_FALSE(flown.gone());
    EXPECT_EQ(flown.ac().phase, AcPhase::AfterPush);
    EXPECT_LT(flown.motion().metres, 0.03);
    EXPECT_LT(flown.motion().headingDeg, 0.01) << "spins on the spot";
    EXPECT_NEAR(flown.ac().simState.heading, 0.0, 1e-6);
    // 2.5 stand radii straight out.
    EXPECT_NEAR(gf_distanceNm(flown.ac().simState.position(), offset(place, 180.0, 50.0)) * metresPerNm, 0.0,
                0.5);
    EXPECT_THAT(sent(flown.ac(), simconnect::EngineAutoStart), ElementsAre(0U));
    EXPECT_EQ(flown.ac().throttleLevel, 0);
    EXPECT_EQ(flown.ac().flapsLevel, 1);
    // It begins to taxi when a second position lies farther off than the first.
    for (const double metres : {60.0, 70.0}) {
        EXPECT_EQ(flown.ac().phase, AcPhase::AfterPush);
        lf_addPosition(flown.ac(), groundPoint(offset(place, 180.0, 50.0 + metres), 5, updateCount + 3000));
    }
    EXPECT_EQ(flown.ac().phase, AcPhase::Taxi);
}

TEST_F(LeavingStand, StandThatIsGonePushesNobody) {
    LiveAc& ac = parkedAndMoving(170.0);
    ac.sid = 99;
    lf_pushBack(ac);
    EXPECT_EQ(ac.phase, AcPhase::Parked);
    EXPECT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(eventsSent(ac), 0U);
}

} // namespace
} // namespace kst::test
