// From the take-off roll to the climb out, and the touch and go.

#include "engine/takeoff.h"

#include "engine/curves.h"
#include "engine/flown.h"
#include "engine/groundleg.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "model/simconnect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t now = 10000;
constexpr double rollHeadingDeg = 90.0;

class TakeOff : public ::testing::Test {
protected:
    /// On the roll, with the next three points at these speeds, climbing at these rates.
    LiveAc& rolling(double speedKt, double vsFpm, bool airborne, std::string_view type = "A320") {
        std::vector<TrackPoint> points = {groundPoint(airportPlace, 50, now)};
        for (int i = 1; i <= 3; ++i) {
            TrackPoint point =
                airPoint(offset(airportPlace, rollHeadingDeg, 300.0 * i),
                         airborne ? airportElevationFt + 50.0 * i : 0.0, speedKt, now + 400 * i);
            point.airborne = airborne;
            point.vsFpm = vsFpm;
            points.push_back(point);
        }
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Taxi, points, type);
        ac.simState.heading = rollHeadingDeg * radPerDeg;
        ac.simState.altFt = airportElevationFt;
        ac.heightAgl = 0.0;
        ac.departing = true;
        return ac;
    }
    EngineWorld world;
};

struct Roll {
    const char* name;
    const char* type;
    double frontKt;
    double speedKt;
    double vsFpm;
    bool airborne;
    bool departing;
    bool takesOff;
};

TEST_F(TakeOff, AircraftRotatesWhenItsTrackFliesAndNotBefore) {
    const Roll table[] = {
        {"fast and airborne", "A320", 100, 140, 0, true, true, true},
        {"airborne but slow", "A320", 100, 139, 0, true, true, false},
        {"fast but still on the ground", "A320", 100, 150, 0, false, true, false},
        {"the whole track climbs", "A320", 100, 100, 257, false, true, true},
        {"barely climbing is not climbing", "A320", 100, 100, 256, false, true, false},
        {"front still slow", "A320", 42.9, 150, 900, true, true, false},
        {"front just rolling", "A320", 43, 150, 900, true, true, true},
        {"not departing", "A320", 100, 150, 900, true, false, false},
        {"fighter needs more", "F16", 150, 219, 0, true, true, false},
        {"a helicopter needs no speed", "EC35", 50, 0, 0, true, true, true},
    };
    for (const Roll& row : table) {
        LiveAc& ac = rolling(row.speedKt, row.vsFpm, row.airborne, row.type);
        ac.departing = row.departing;
        ac.track[0].gsKt = row.frontKt;
        checkTakeOff(ac);
        EXPECT_EQ(ac.phase == AcPhase::TakeOff, row.takesOff) << row.name;
    }
}

TEST_F(TakeOff, OnePointOnTheGroundInTheTrackDelaysTheRotation) {
    LiveAc& ac = rolling(160, 0, true);
    ac.track[3].airborne = false;
    checkTakeOff(ac);
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
}

TEST_F(TakeOff, ClimbRateComesFromTheTrackWhereItTellsOne) {
    LiveAc& told = rolling(160, 1200, true);
    told.track[1].altFt = airportElevationFt + 120.0;
    checkTakeOff(told);
    EXPECT_NEAR(told.dAlt, 120.0 / 400, 1e-9);
    LiveAc& lower = rolling(160, 1200, true);
    lower.track[1].altFt = airportElevationFt - 300.0; // pressure altitude in a high
    checkTakeOff(lower);
    EXPECT_NEAR(lower.dAlt, 0.1 / 400, 1e-12) << "never into the ground";
    LiveAc& untold = rolling(160, 0, true);
    checkTakeOff(untold);
    EXPECT_EQ(untold.dAlt, untold.maxClimbStep);
}

TEST_F(TakeOff, RotationPitchesUpThenTheClimbBuildsUpAndTheGearComesUpThreeSecondsAfterLiftOff) {
    for (const std::string_view type : {"A320", "B77W", "C172", "F16"}) {
        LiveAc& ac = rolling(160, 1500, true, type);
        forgetSent();
        checkTakeOff(ac);
        ASSERT_EQ(ac.phase, AcPhase::TakeOff);
        ac.dAlt = 0.5;
        ac.dBank = 0.0001;
        const double groundFt = ac.simState.altFt;
        double lastPitch = ac.simState.pitch;
        double fastestPitch = 0.0;
        for (int tick = 1; tick < ac.rotateTicks + 300; ++tick) {
            lf_stepAc(ac);
            EXPECT_FALSE(ac.onGround);
            if (tick <= ac.rotateTicks) {
                ASSERT_EQ(ac.simState.altFt, groundFt) << type << ": climbs while it rotates, tick " << tick;
            }
            ASSERT_LE(ac.simState.pitch, lastPitch + 1e-12) << type << ": lowers its nose, tick " << tick;
            fastestPitch = std::max(fastestPitch, lastPitch - ac.simState.pitch);
            lastPitch = ac.simState.pitch;
            ASSERT_THAT(sent(ac, simconnect::GearSet), IsEmpty()) << type << ", tick " << tick;
        }
        EXPECT_LT(fastestPitch * degPerRad, 0.15) << type;
        lf_stepAc(ac);
        EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(0U)) << type;
        EXPECT_NEAR(ac.simState.bank, 301 * 0.0001, 1e-9) << type << ": banks once it has left the ground";
        // 99 ticks at a tenth, 100 at a fifth, 100 at half, one in full.
        EXPECT_NEAR(ac.simState.altFt - groundFt, 0.5 * (9.9 + 20.0 + 50.0 + 1.0), 1e-6) << type;
    }
}

TEST_F(TakeOff, ClimbOutEndsAtEightHundredFeetWithTheClimbPitchReached) {
    LiveAc& ac = rolling(160, 1500, true);
    checkTakeOff(ac);
    ac.heightAgl = 799.0;
    for (int tick = 0; tick < 2000; ++tick) {
        lf_stepAc(ac);
    }
    EXPECT_EQ(ac.phase, AcPhase::TakeOff);
    EXPECT_LE(ac.simState.pitch, ac.climbPitch);
    EXPECT_GT(ac.simState.pitch, ac.climbPitch - 0.1 * radPerDeg);
    forgetSent();
    ac.heightAgl = 800.0;
    lf_stepAc(ac);
    EXPECT_EQ(ac.phase, AcPhase::Air);
    EXPECT_EQ(ac.groundCountdown, 1);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(11468U));
}

TEST_F(TakeOff, SteepClimbInTheTakeOffIsNoGoAround) {
    // The first air leg while the aircraft rotates: power, gear and flaps have their own moments.
    LiveAc& ac = rolling(160, 1800, true);
    checkTakeOff(ac);
    lf_stepAc(ac);
    ac.track[0].vsFpm = 1800.0;
    forgetSent();
    nextPosMain(ac);
    EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty());
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), IsEmpty());
    EXPECT_FALSE(ac.goAroundDone);
}

TEST_F(TakeOff, TakeOffFromAHighAirportKeepsItsGearUntilItHasClimbedOut) {
    LiveAc& ac = rolling(160, 1800, true);
    ac.simState.altFt = 13300.0;
    for (TrackPoint& point : ac.track) {
        point.altFt = 13400.0;
    }
    checkTakeOff(ac);
    lf_stepAc(ac);
    forgetSent();
    nextPosMain(ac);
    EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty());
    ac.phase = AcPhase::Air;
    nextPosMain(ac);
    EXPECT_EQ(lightsSent(ac), "1100001");
}

TEST_F(TakeOff, DepartureSetsPowerByTheSpeedOfTheRoll) {
    struct {
        const char* type;
        double frontKt;
        double secondKt;
        std::uint32_t throttle;
    } const table[] = {{"A320", 25, 0, 16383},  {"A320", 0, 30, 16383},     {"A320", 24.9, 29.9, 8191},
                       {"A320", 20, 0, 8191},   {"A320", 19.9, 24.9, 4914}, {"A320", 15, 0, 4914},
                       {"A320", 14.9, 19.9, 0}, {"EC35", 0, 0, 16383}};
    for (const auto& row : table) {
        LiveAc& ac = rolling(row.secondKt, 0, false, row.type);
        ac.track[0].gsKt = row.frontKt;
        forgetSent();
        lf_setupGroundStep(ac);
        EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(row.throttle))
            << row.type << ' ' << row.frontKt << ' ' << row.secondKt;
    }
}

TEST_F(TakeOff, DepartureIsAnnouncedByLightsFlapsAndWideDriftLimits) {
    LiveAc& ac = rolling(100, 0, false);
    ac.departing = false;
    ac.landing = ac.landed = ac.goAroundDone = true;
    ac.throttleLevel = 4;
    lf_startDeparture(ac);
    EXPECT_TRUE(ac.departing);
    EXPECT_FALSE(ac.landing);
    EXPECT_FALSE(ac.landed);
    EXPECT_FALSE(ac.goAroundDone);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(0U));
    EXPECT_EQ(lightsSent(ac), "1111110");
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(3072U));
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(0U));
    EXPECT_EQ(ac.maxLagTicks, 5000);
    EXPECT_EQ(ac.maxLeadTicks, 3000);
}

TEST_F(TakeOff, RotationOutOfACurveIsADepartureStraightAhead) {
    LiveAc& ac = rolling(160, 0, true);
    ac.departing = false;
    ac.curveEndNorth = ac.curveEndEast = ac.curveControlNorth = ac.curveControlEast = 10.0;
    lf_takeOff(ac);
    EXPECT_FALSE(curveActive(ac));
    EXPECT_TRUE(ac.departing);
    EXPECT_EQ(ac.maxLagTicks, 5000);
    EXPECT_EQ(ac.groundCountdown, ac.rotateTicks);
}

TEST_F(TakeOff, TouchAndGoFliesAgainWithFullPower) {
    // Nose still coming down when the feed shows the aircraft in the air again.
    LiveAc& ac = rolling(150, 900, true);
    ac.departing = false;
    ac.rollingOut = true;
    ac.landed = true;
    ac.flaring = true;
    ac.flareStage = 4;
    ac.landing = true;
    ac.goAroundDone = true;
    ac.throttleLevel = 0;
    ac.flapsLevel = 3;
    ac.simState.bank = ac.dBank = ac.dHeading = 0.01;
    forgetSent();
    TrackPoint up =
        airPoint(offset(airportPlace, rollHeadingDeg, 1300.0), airportElevationFt + 300, 150, now + 1700);
    up.vsFpm = 900.0;
    ac.phase = AcPhase::Air;
    lf_addPosition(ac, up);
    EXPECT_TRUE(ac.departing);
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
    EXPECT_FALSE(ac.landing);
    EXPECT_FALSE(ac.landed);
    EXPECT_FALSE(ac.goAroundDone);
    EXPECT_EQ(ac.maxLagTicks, 5000);
    EXPECT_EQ(ac.maxLeadTicks, 3000);
    EXPECT_EQ(lightsSent(ac), "1111110");
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(11468U));
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(16383U));
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(3072U));
    ac.landing = ac.landed = true;
    ac.flapsLevel = 3;
    forgetSent();
    checkTakeOff(ac);
    EXPECT_FALSE(ac.landing);
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(3072U));
    EXPECT_EQ(ac.simState.bank, 0.0);
    EXPECT_EQ(ac.dBank, 0.0);
    EXPECT_EQ(ac.dHeading, 0.0) << "it keeps to the runway";
    EXPECT_EQ(ac.phase, AcPhase::TakeOff);
    EXPECT_FALSE(ac.rollingOut);
    EXPECT_FALSE(ac.landed);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(16383U));
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(16383U));
    // The landing's flare must not hold the altitude of the climb.
    EXPECT_EQ(ac.flareStage, 0);
    EXPECT_FALSE(ac.flaring);
}

} // namespace
} // namespace kst::test
