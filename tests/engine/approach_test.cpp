// Flight laws on the way down and in the climb: altitude, pitch, bank, configuration, flare, touchdown.

#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/airleg.h"
#include "engine/approach.h"
#include "engine/configuration.h"
#include "engine/flare.h"
#include "engine/flown.h"
#include "engine/groundleg.h"
#include "engine/legs.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "engine/takeoff.h"
#include "model/simconnect.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t now = 10000;
/// Four miles west of the airport.
const LatLon onFinal = offset(airportPlace, 270.0, 7400.0);

class Approach : public ::testing::Test {
protected:
    LiveAc& onApproach(std::string_view type = "A320") {
        const LatLon next = offset(onFinal, 90.0, 350.0);
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Air,
                                   {airPoint(onFinal, 2400, 140, now), airPoint(next, 2350, 140, now + 500),
                                    airPoint(offset(next, 90.0, 350.0), 2300, 140, now + 1000)},
                                   type);
        ac.simState.heading = pi / 2;
        ac.heightAgl = 980.0;
        ac.lowLights = true;
        ac.track[0].vsFpm = ac.track[1].vsFpm = -700.0;
        return ac;
    }
    EngineWorld world;
};

// ---- altitude ----

TEST_F(Approach, LowPressureLegOntoTheRunwayEndsAtFieldElevation) {
    world.openAirport();
    for (const int pressure : {1000, 1013}) {
        qnh = pressure;
        LiveAc& ac = onApproach();
        ac.landing = true;
        ac.simState.altFt = airportElevationFt + 60;
        ac.heightAgl = 60.0;
        ac.track[1] = groundPoint(offset(onFinal, 90.0, 350.0), 130, now + 500);
        lf_setupAirStep(ac);
        EXPECT_NEAR(ac.simState.altFt + ac.dAlt * lf_stepsToNext(ac), airportElevationFt, 1e-6);
        EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(1U));
    }
}

TEST_F(Approach, LegOntoAnUnknownFieldDescendsAtTheLeastRateInLowPressure) {
    qnh = 1000;
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.track[1].airborne = false;
    ac.track[0].vsFpm = ac.track[1].vsFpm = -900.0;
    lf_setupAirStep(ac);
    EXPECT_EQ(ac.vsTarget, -601.0);
}

TEST_F(Approach, LegOffTheGroundClimbsToItsPointAndNeverSinks) {
    for (const auto& [riseFt, step] : {std::pair{100.0, 0.2}, {900.0, 0.6}, {-100.0, 0.0}}) {
        LiveAc& ac = onApproach();
        ac.track[0].airborne = false;
        ac.track[1].altFt = ac.simState.altFt + riseFt;
        lf_setupAirStep(ac);
        EXPECT_NEAR(ac.dAlt, step, 1e-9) << riseFt;
    }
}

TEST_F(Approach, HighPressureLegOntoTheRunwayDescendsByRate) {
    world.openAirport();
    qnh = 1020;
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.heightAgl = 300.0;
    ac.track[1] = groundPoint(offset(onFinal, 90.0, 350.0), 130, now + 500);
    ac.track[1].vsFpm = -900.0;
    lf_setupAirStep(ac);
    // Mean of -700 and -900, and 6 ft/min more for each of 7 hPa.
    EXPECT_NEAR(ac.vsTarget, -842.0, 1e-9);
    EXPECT_NEAR(ac.dAlt, -842.0 / 6000.0, 1e-9);
    EXPECT_NEAR(ac.track[1].vsFpm, -842.0, 1e-9);
}

TEST_F(Approach, DescentRateFollowsPressureAndIsNeverShallow) {
    LiveAc& ac = onApproach();
    struct {
        int qnh;
        double agl;
        double rate;
    } const table[] = {{1013, 900, -700.0}, {1033, 900, -820.0}, {1003, 900, -640.0},
                       {990, 900, -601.0},  {1040, 100, -600.0}, {1040, 100.1, -862.0}};
    for (const auto& row : table) {
        qnh = row.qnh;
        ac.heightAgl = row.agl;
        EXPECT_NEAR(lf_descentRate(ac), row.rate, 1e-9) << row.qnh << " hPa, " << row.agl << " ft";
    }
}

TEST_F(Approach, FlatAltitudesOfTheFeedOnShortFinalStillDescend) {
    struct {
        double agl, vsFpm, step;
    } const table[] = {{1000.0, 50.0, -601.0 / 6000.0},
                       {1000.1, 50.0, 0.0},
                       {1000.0, 51.0, 0.0}}; // a flat track with a climb in it is followed
    for (const auto& row : table) {
        LiveAc& ac = onApproach();
        ac.landing = true;
        ac.heightAgl = row.agl;
        ac.track[1].altFt = ac.track[0].altFt;
        ac.track[0].vsFpm = ac.track[1].vsFpm = row.vsFpm;
        lf_setupAirStep(ac);
        EXPECT_NEAR(ac.dAlt, row.step, 1e-9) << row.agl << " ft, " << row.vsFpm << " ft/min";
    }
}

TEST_F(Approach, OutsideALandingNothingSinksTowardsTheGroundBelowAThousandFeet) {
    struct {
        double agl;
        double altFt;
        double step;
    } const table[] = {{1000.0, 2000.0, 0.2},   // the feed descends
                       {1000.0, 2500.0, 0.2},   // 100 ft in 500 ticks: too flat
                       {1000.0, 2600.0, 0.4},   // as the feed climbs
                       {1000.0, 9000.0, 0.6},   // no faster than the size class can
                       {1000.1, 2000.0, -0.8}}; // higher up the feed is followed down
    for (const auto& row : table) {
        LiveAc& ac = onApproach();
        ac.goAroundDone = true;
        ac.heightAgl = row.agl;
        ac.track[1].altFt = row.altFt;
        lf_setupAirStep(ac);
        EXPECT_NEAR(ac.dAlt, row.step, 1e-9) << row.agl << " ft above ground to " << row.altFt;
    }
}

struct GroundTrack {
    const char* name;
    std::size_t points;
    std::size_t airborneAt; ///< place of the first point in the air, the front is 1; 0 for none
    double vsFpm;           ///< of each point
    bool landing;
    std::size_t droppedPoints;
    double dAlt; ///< feet per tick
};

TEST_F(Approach, FlyingAircraftWhoseTrackSaysGroundFliesOnWhereItsTrackDoes) {
    // Points 400 ticks and 300 m apart, flown at 140 kt; 100 ft up to the first one in the air.
    const GroundTrack table[] = {
        {"third point flies", 12, 3, 100, false, 1, 100.0 / 833},
        {"tenth point flies", 12, 10, 100, false, 8, 100.0 / 3749},
        {"eleventh is too far ahead", 12, 11, 100, false, 0, 601.0 / 6000},
        {"last one is not looked at", 4, 4, 100, false, 0, 601.0 / 6000},
        {"climbs faster on its own", 4, 0, 900, false, 0, 900.0 / 6000},
        {"no climb in the track", 4, 3, 25, false, 0, -601.0 / 6000},
        {"hardly one", 4, 3, 26, false, 1, 100.0 / 833},
        {"landing", 12, 3, 100, true, 0, -601.0 / 6000},
    };
    for (const GroundTrack& row : table) {
        SCOPED_TRACE(row.name);
        LiveAc& ac = onApproach();
        ac.landing = row.landing;
        ac.maxLagTicks = 9000;
        ac.track.clear();
        for (std::size_t i = 0; i < row.points; ++i) {
            const auto step = static_cast<std::int32_t>(i);
            ac.track.push_back(groundPoint(offset(onFinal, 90.0, 300.0 * step), 140, now + 400 * step));
            ac.track.back().vsFpm = row.vsFpm;
            if (row.airborneAt > 0 && i + 1 >= row.airborneAt) {
                ac.track.back().airborne = true;
                ac.track.back().altFt = ac.simState.altFt + 100.0;
            }
        }
        forgetSent();
        lf_setupAirStep(ac);
        EXPECT_EQ(ac.track.size(), row.points - row.droppedPoints);
        EXPECT_NEAR(ac.dAlt, row.dAlt, 1e-6);
        EXPECT_EQ(sent(ac, simconnect::GearSet).front(), 1U);
        if (row.droppedPoints > 0) {
            // The leg ends at that point, not beyond it.
            EXPECT_NEAR(ac.simState.lon + ac.dLon * lf_stepsToNext(ac), ac.track[1].lon, 1e-9);
        } else {
            EXPECT_NEAR(ac.vsTarget, ac.track[1].vsFpm, 1e-9);
            EXPECT_NEAR(ac.vsTarget, row.dAlt * 6000, 1e-6);
        }
    }
}

// ---- attitude ----

TEST_F(Approach, ClimbLawGivesThePitchOfEachVerticalSpeed) {
    struct {
        double vsFpm;
        double pitchDeg;
    } const table[] = {{0, -3.0},    {600, -5.2},  {2400, -11.8}, {9000, -11.8},
                       {-600, -1.9}, {-3000, 2.5}, {-9000, 2.5}};
    for (const auto& row : table) {
        EXPECT_NEAR(climbLawPitch(row.vsFpm) * degPerRad, row.pitchDeg, 1e-9) << row.vsFpm << " ft/min";
    }
}

TEST_F(Approach, PitchAndBankMoveNoFasterThanTheSizeClassCan) {
    for (const auto& [type, pitchRate, bankRate] :
         {std::tuple{"B77W", 0.005, 0.015}, std::tuple{"C172", 0.01, 0.035}}) {
        LiveAc& ac = onApproach(type);
        ac.simState.pitch = 0.5;
        ac.track[1].dueTick = now + 25;
        ac.track[2].lat += 0.05; // a sharp turn to the left
        lf_setupAirStep(ac);
        EXPECT_NEAR(ac.dPitch * degPerRad, -pitchRate, 1e-12) << type;
        EXPECT_NEAR(ac.dBank * degPerRad, bankRate, 1e-12) << type;
    }
}

TEST_F(Approach, AircraftIsOnTheNextLegsHeadingWhenItsLegEndsAndBanksIntoTheTurn) {
    LiveAc& ac = onApproach();
    ac.heightAgl = 2500.0;
    const LatLon corner = offset(onFinal, 90.0, 1500.0);
    ac.track = {airPoint(onFinal, 6000, 200, now), airPoint(corner, 6000, 200, now + 1500),
                airPoint(offset(corner, 110.0, 1500.0), 6000, 200, now + 3000),
                airPoint(offset(corner, 110.0, 3000.0), 6000, 200, now + 4500)};
    ac.simState.altFt = 6000.0;
    ac.track[1].vsFpm = 2400.0;
    ac.simState.pitch = -3.0 * radPerDeg;
    Flown flown(world, ac, 3000.0);
    flown.reportHeights(false);
    flown.flyTo(now + 1);
    const double turn = flown.ac().dHeading;
    EXPECT_GT(turn, 0.0);
    flown.flyTo(flown.ac().track.front().dueTick - 1);
    EXPECT_NEAR(flown.ac().simState.heading * degPerRad, 110.0, 0.3);
    EXPECT_NEAR(flown.ac().simState.bank * degPerRad, -20.0, 0.3) << "right wing down in a right turn";
    EXPECT_NEAR(flown.ac().simState.pitch * degPerRad, -11.8, 0.1) << "nose up in a climb";
}

TEST_F(Approach, BankStopsAtTheLimitOfTheSizeClass) {
    LiveAc& ac = onApproach("B77W");
    ac.heightAgl = 2500.0;
    const LatLon corner = offset(onFinal, 90.0, 3000.0);
    ac.track = {airPoint(onFinal, 6000, 200, now), airPoint(corner, 6000, 200, now + 3000),
                airPoint(offset(corner, 180.0, 3000.0), 6000, 200, now + 6000)};
    lf_setupAirStep(ac);
    EXPECT_NEAR((ac.simState.bank + ac.dBank * lf_stepsToNext(ac)) * degPerRad, -20.0, 1e-6);
}

TEST_F(Approach, FeedsOwnHeadingCountsOnlyNearTheGround) {
    struct {
        double agl;
        bool landing;
        bool follows;
    } const table[] = {{1999, true, true}, {2000, true, false}, {999, false, true}, {1000, false, false}};
    for (const auto& row : table) {
        LiveAc& ac = onApproach();
        ac.landing = row.landing;
        ac.goAroundDone = true;
        ac.heightAgl = row.agl;
        ac.track[1].headingFromFeed = true;
        ac.track[1].heading = 80.0 * radPerDeg; // drifting in a crosswind
        ac.track[1].roll = 0.1;
        lf_setupAirStep(ac);
        const double turn = ac.dHeading * lf_stepsToNext(ac) * degPerRad;
        EXPECT_NEAR(turn, row.follows ? -10.0 : 0.0, 0.1) << row.agl << " ft, landing " << row.landing;
        EXPECT_NEAR(ac.dBank * lf_stepsToNext(ac), 0.1, 1e-9) << "a known bank is flown at any height";
    }
}

TEST_F(Approach, LegShowsSpeedAndClimbOfItsEnd) {
    LiveAc& ac = onApproach();
    ac.phase = AcPhase::Taxi;
    ac.track[1].tasKt = 155.0;
    nextPosMain(ac);
    EXPECT_EQ(ac.phase, AcPhase::Air);
    EXPECT_EQ(ac.vsTarget, -700.0);
    EXPECT_EQ(ac.airspeedTarget, 155.0);
}

// ---- lights and configuration ----

TEST_F(Approach, LightSetsChangeOnceAtTenThousandFeet) {
    LiveAc& ac = onApproach();
    ac.heightAgl = 2500.0;
    ac.lowLights = false;
    ac.track[0].altFt = 9999.0;
    configureByAltitude(ac);
    EXPECT_EQ(lightsSent(ac), "1111111");
    forgetSent();
    configureByAltitude(ac);
    EXPECT_THAT(sent(ac, simconnect::BeaconLightsSet), IsEmpty());
    ac.track[0].altFt = 10000.0;
    ac.flapsLevel = 1;
    forgetSent();
    configureByAltitude(ac);
    EXPECT_EQ(lightsSent(ac), "1100001");
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(11468U));
    EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(0U));
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(0U));
    forgetSent();
    configureByAltitude(ac);
    EXPECT_EQ(eventsSent(ac), 0U);
    ac.track[0].altFt = 9999.0;
    configureByAltitude(ac);
    EXPECT_EQ(lightsSent(ac), "1111111");
    ac.track[0].altFt = 10000.0;
    forgetSent();
    configureByAltitude(ac);
    EXPECT_EQ(lightsSent(ac), "1100001") << "each time it passes";
}

TEST_F(Approach, FlapsComeOutStepByStepOnTheWayDown) {
    struct {
        const char* type;
        double agl;
        double vsFpm;
        int flaps;
        int after;
    } const table[] = {
        {"A320", 2400, -900, 1, 0}, {"A320", 2399, -900, 0, 1}, {"A320", 2399, 100, 0, 1},
        {"A320", 2399, 101, 0, 0},  {"A320", 2399, -900, 1, 1}, {"C172", 1999, -500, 0, 1},
        {"C172", 1999, -500, 1, 2}, {"C172", 1999, -500, 2, 2}, {"C172", 1999, 200, 1, 1},
        {"EC35", 1999, -500, 4, 4}, // a helicopter has none
    };
    for (const auto& row : table) {
        LiveAc& ac = onApproach(row.type);
        ac.heightAgl = row.agl;
        ac.track[0].vsFpm = row.vsFpm;
        ac.flapsLevel = row.flaps;
        configureByAltitude(ac);
        EXPECT_EQ(ac.flapsLevel, row.after) << row.type << " at " << row.agl << " ft, " << row.vsFpm;
        if (std::string_view(row.type) == "EC35") {
            EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty());
            EXPECT_THAT(sent(ac, simconnect::FlapsSet), IsEmpty());
        }
    }
}

TEST_F(Approach, AboveTheThresholdManoeuvresEndAndPowerFollowsTheClimb) {
    struct {
        double vsFpm;
        int throttle;
        int after;
    } const table[] = {{-250, 3, 2}, {-249, 3, 3}, {-900, 4, 4}, {401, 4, 3}, {400, 4, 4}, {900, 3, 3}};
    for (const auto& row : table) {
        LiveAc& ac = onApproach();
        ac.departing = true;
        ac.landing = true;
        ac.heightAgl = 2051.0;
        ac.maxLagTicks = 5000;
        ac.throttleLevel = row.throttle;
        ac.track[0].vsFpm = row.vsFpm;
        configureByAltitude(ac);
        EXPECT_FALSE(ac.departing);
        EXPECT_FALSE(ac.landing);
        EXPECT_EQ(ac.maxLagTicks, 4900);
        EXPECT_EQ(ac.throttleLevel, row.after) << row.vsFpm;
        EXPECT_THAT(sent(ac, simconnect::CabinLightsSet), ElementsAre(1U));
        EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty());
        ac.heightAgl = 2400.0;
        configureByAltitude(ac);
        EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(0U));
    }
}

TEST_F(Approach, JetsBeginTheirApproachHigherThanTheOthers) {
    world.openAirport();
    for (const auto& [type, agl] : {std::pair{"A320", 2050.0},
                                    {"B77W", 2050.0},
                                    {"C56X", 2050.0},
                                    {"C172", 625.0},
                                    {"F16", 625.0},
                                    {"EC35", 625.0}}) {
        for (const double above : {0.0, 0.1}) {
            LiveAc& ac = onApproach(type);
            ac.heightAgl = agl + above;
            configureByAltitude(ac);
            EXPECT_EQ(ac.landing, above == 0.0) << type;
        }
    }
}

TEST_F(Approach, DescentNearTheParkAirportBecomesALanding) {
    world.openAirport();
    LiveAc& ac = onApproach();
    ac.sid = 7;
    ac.standLat = ac.standLon = ac.standHeading = 1.0;
    ac.standCargo = true;
    ac.groundCountdown = -400;
    ac.goAroundDone = true;
    ac.track[0].vsFpm = -250.0;
    configureByAltitude(ac);
    EXPECT_EQ(ac.standLat + ac.standLon + ac.standHeading, 0.0);
    EXPECT_FALSE(ac.standCargo);
    EXPECT_EQ(ac.groundCountdown, 1) << "or its touchdown would not be noticed";
    EXPECT_TRUE(ac.landing);
    EXPECT_FALSE(ac.goAroundDone);
    EXPECT_EQ(ac.sid, 0U);
    EXPECT_EQ(ac.maxLeadTicks, 3000);
    EXPECT_EQ(ac.maxLagTicks, 3000);
    EXPECT_THAT(spawnedIds, ElementsAre(ac.hexid));
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(4914U));
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(16383U));
    EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(1U));
    EXPECT_THAT(sent(ac, simconnect::CabinLightsSet), ElementsAre(0U));
}

TEST_F(Approach, ApproachBecomesALandingOnlyWhenItDescendsNearTheParkAirport) {
    struct {
        const char* name;
        bool airport;
        double awayNm, vsFpm;
    } const table[] = {{"no airport", false, 4.0, -700.0},
                       {"10.1 nm away", true, 10.1, -700.0},
                       {"shallow", true, 4.0, -249.0}};
    for (const auto& row : table) {
        if (row.airport) {
            world.openAirport();
        }
        LiveAc& ac = onApproach();
        const LatLon away = offset(airportPlace, 270.0, row.awayNm * metresPerNm);
        ac.simState.lat = away.lat;
        ac.simState.lon = away.lon;
        ac.track[0].vsFpm = row.vsFpm;
        configureByAltitude(ac);
        EXPECT_FALSE(ac.landing) << row.name;
    }
}

TEST_F(Approach, GoAroundIsConfiguredOnce) {
    world.openAirport();
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.flareStage = 2;
    ac.flapsLevel = 3;
    ac.maxLagTicks = 3000;
    ac.track[0].vsFpm = 600.0;
    configureByAltitude(ac);
    EXPECT_TRUE(ac.landing);
    ac.track[0].vsFpm = 601.0;
    configureByAltitude(ac);
    EXPECT_FALSE(ac.landing);
    EXPECT_EQ(ac.maxLagTicks, 2900);
    EXPECT_EQ(ac.flareStage, 0);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(16383U));
    EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(0U));
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(0U));
    forgetSent();
    configureByAltitude(ac);
    EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty());
}

TEST_F(Approach, LandingFarFromTheParkAirportIsBrokenOff) {
    world.openAirport();
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.track[0].vsFpm = 0.0;
    configureByAltitude(ac);
    EXPECT_TRUE(ac.landing) << "level flight near the airport is still an approach";
    const LatLon away = offset(airportPlace, 270.0, 10.1 * metresPerNm);
    ac.simState.lat = away.lat;
    ac.simState.lon = away.lon;
    configureByAltitude(ac);
    EXPECT_FALSE(ac.landing);
    EXPECT_TRUE(ac.goAroundDone);
    EXPECT_THAT(sent(ac, simconnect::GearSet), ElementsAre(0U));
    ac.landing = true;
    forgetSent();
    configureByAltitude(ac);
    EXPECT_THAT(sent(ac, simconnect::GearSet), IsEmpty()) << "once";
}

TEST_F(Approach, HelicopterHasNeitherGearNorFlapsNorSpoilersAndKeepsItsPower) {
    world.openAirport();
    LiveAc& ac = onApproach("EC35");
    ac.heightAgl = 500.0;
    const auto at = [&](double agl, double vsFpm) {
        ac.heightAgl = agl;
        ac.track[0].vsFpm = vsFpm;
        configureByAltitude(ac);
    };
    at(500, -300);
    ASSERT_TRUE(ac.landing);
    at(500, 700);
    ASSERT_TRUE(ac.goAroundDone);
    at(2450, -300);
    at(500, -300);
    lf_touchDown(ac);
    lf_setupGroundStep(ac);
    ac.simState.heading += 0.5;
    lf_setupGroundStep(ac);
    ASSERT_FALSE(ac.rollingOut);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(16383U));
    lf_startDeparture(ac);
    lf_takeOff(ac);
    for (const std::uint32_t event : {simconnect::GearSet, simconnect::FlapsSet, simconnect::SpoilersSet}) {
        EXPECT_THAT(sent(ac, event), IsEmpty());
    }
    EXPECT_EQ(ac.flapsLevel, flapsNotSent);
}

TEST_F(Approach, ThrottleAndFlapsAreNotSentAgain) {
    LiveAc& ac = onApproach();
    lf_setThrottle(ac, 2);
    lf_setThrottle(ac, 2);
    lf_setFlaps(ac, 1);
    lf_setFlaps(ac, 1);
    lf_setFlaps(ac, 2);
    EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(8191U));
    EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(3072U, 10240U));
}

TEST_F(Approach, RecordWithoutAnObjectCommandsNobodyLeastOfAllTheUser) {
    LiveAc& ac = onApproach();
    ac.objectId = 0;
    lf_startDeparture(ac);
    lf_parkLights(ac);
    lf_setGear(ac, true);
    lf_touchDown(ac);
    EXPECT_EQ(eventsSent(ac), 0U);
}

// ---- flare and touchdown ----

TEST_F(Approach, FlareMovesOnStageByStageWithTheHeight) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.cgHeightFt = 10.0;
    ac.throttleLevel = 1;
    struct {
        double agl;
        int stage;
        double dAlt;
        double vsFpm;
    } const table[] = {{40.1, 0, 0.0, -700.0},    {40.0, 1, -0.1, -601.0},   {30.1, 1, -0.1, -601.0},
                       {30.0, 2, -0.075, -450.0}, {20.1, 2, -0.075, -450.0}, {20.0, 3, -0.05, -300.0},
                       {13.0, 4, -0.025, -150.0}, {10.5, 4, -0.025, -150.0}};
    for (const auto& row : table) {
        ac.heightAgl = row.agl;
        lf_flare(ac);
        EXPECT_EQ(ac.flareStage, row.stage) << row.agl;
        EXPECT_NEAR(ac.dAlt, row.dAlt, 1e-12) << row.agl;
        EXPECT_NEAR(ac.track.front().vsFpm, row.vsFpm, 1e-12) << row.agl;
        EXPECT_EQ(ac.throttleLevel, row.stage >= 3 ? 0 : 1) << row.agl;
        EXPECT_EQ(flareActive, row.stage >= 1) << row.agl;
    }
}

TEST_F(Approach, FlareBeginsByFieldElevationWhereTheReportedHeightLags) {
    world.openAirport();
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.cgHeightFt = 10.0;
    ac.heightAgl = 120.0;
    ac.simState.altFt = airportElevationFt + 41.0;
    lf_flare(ac);
    EXPECT_EQ(ac.flareStage, 0);
    ac.simState.altFt = airportElevationFt + 39.0;
    ac.heightAgl = 400.1;
    lf_stepAc(ac);
    EXPECT_EQ(ac.flareStage, 0) << "not before the simulator has it below 400 ft";
    ac.heightAgl = 400.0;
    lf_stepAc(ac);
    EXPECT_EQ(ac.flareStage, 1);
}

TEST_F(Approach, SinkingAircraftWaitsOnItsWheelsForTheReportOfItsContact) {
    LiveAc& ac = onApproach();
    ac.cgHeightFt = 10.0;
    ac.groundAltFt = airportElevationFt;
    ac.heightAgl = 11.0;
    ac.simState.altFt = airportElevationFt + 11.0;
    ac.dAlt = -0.5;
    for (int tick = 0; tick < 10; ++tick) {
        lf_stepAc(ac);
    }
    EXPECT_NEAR(ac.simState.altFt, airportElevationFt + 9.7, 1e-9);
}

TEST_F(Approach, FlarePitchStopsAtFourDegrees) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.heightAgl = 35.0;
    ac.cgHeightFt = 10.0;
    ac.simState.pitch = -1.0 * radPerDeg;
    for (int tick = 0; tick < 1000; ++tick) {
        lf_stepAc(ac);
        ASSERT_GE(ac.simState.pitch * degPerRad, -4.0 - 1e-9);
    }
    EXPECT_NEAR(ac.simState.pitch * degPerRad, -4.0, 1e-9);
}

TEST_F(Approach, FlareKeepsItsOwnDescentWhateverTheNextPointSays) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.flareStage = 2;
    ac.dAlt = -0.075;
    ac.dPitch = -0.0001;
    nextPosMain(ac);
    EXPECT_EQ(ac.dAlt, -0.075);
    EXPECT_EQ(ac.dPitch, -0.0001);
}

TEST_F(Approach, TouchdownLowersTheNoseAndBeginsTheRollout) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.flareStage = 4;
    ac.simState.pitch = -4.0 * radPerDeg;
    ac.simState.bank = 0.02;
    ac.staticPitch = 0.5 * radPerDeg;
    ac.dAlt = -0.1;
    ac.groundCountdown = -10;
    lf_touchDown(ac);
    EXPECT_TRUE(ac.onGround);
    EXPECT_TRUE(ac.rollingOut);
    EXPECT_TRUE(ac.landed);
    EXPECT_FALSE(ac.landing);
    EXPECT_EQ(ac.touchdownHeading, ac.simState.heading);
    EXPECT_EQ(ac.dAlt, 0.0);
    EXPECT_EQ(ac.groundCountdown, 1);
    EXPECT_THAT(spawnedIds, ElementsAre(ac.hexid));
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(16383U));
    double last = ac.simState.pitch;
    for (int tick = 0; tick < 350 + 2; ++tick) {
        lf_stepAc(ac);
        ASSERT_LE((ac.simState.pitch - last) * degPerRad, 4.5 / 350 + 1e-9);
        last = ac.simState.pitch;
    }
    EXPECT_FALSE(ac.flaring);
    EXPECT_EQ(ac.flareStage, 0);
    EXPECT_EQ(ac.simState.pitch, ac.staticPitch);
    EXPECT_EQ(ac.simState.bank, 0.0);
}

TEST_F(Approach, TouchdownWithTheNoseBelowRestRaisesItWithoutASnap) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.simState.pitch = 2.0 * radPerDeg;
    lf_touchDown(ac);
    lf_stepAc(ac);
    EXPECT_NEAR(ac.simState.pitch * degPerRad, 2.0, 0.01);

    LiveAc& atOnce = onApproach();
    atOnce.landing = true;
    atOnce.derotateTicks = 0;
    atOnce.staticPitch = 0.5 * radPerDeg;
    atOnce.dBank = 1.0;
    lf_touchDown(atOnce);
    EXPECT_EQ(atOnce.dPitch, atOnce.staticPitch);
    EXPECT_EQ(atOnce.dBank, 0.0);
}

TEST_F(Approach, TouchdownAtTheVeryPitchOfRestNeitherEndsTheNoseDownNorRollsTheAircraftOver) {
    LiveAc& ac = onApproach();
    ac.landing = true;
    ac.staticPitch = 0.5 * radPerDeg;
    ac.simState.pitch = ac.staticPitch;
    ac.simState.bank = 0.05;
    lf_touchDown(ac);
    for (int tick = 0; tick < 2000; ++tick) {
        lf_stepAc(ac);
    }
    EXPECT_TRUE(ac.flaring) << "only a pitch past it does";
    EXPECT_EQ(ac.simState.pitch, ac.staticPitch);
    EXPECT_EQ(ac.simState.bank, 0.0);
}

TEST_F(Approach, GroundContactIsATouchdownOnlyForWhomItMayBeOne) {
    struct {
        const char* name;
        AcState state;
        AcPhase phase;
        bool landing, onGround;
    } const table[] = {{"outside a landing", AcState::Live, AcPhase::Air, false, true},
                       {"in the take-off", AcState::Live, AcPhase::TakeOff, true, false},
                       {"leaving", AcState::Removing, AcPhase::Air, true, false}};
    for (const auto& row : table) {
        LiveAc& ac = onApproach();
        ac.state = row.state;
        ac.phase = row.phase;
        ac.landing = row.landing;
        lf_touchDown(ac);
        EXPECT_EQ(ac.onGround, row.onGround) << row.name;
        EXPECT_FALSE(ac.rollingOut) << row.name;
        EXPECT_THAT(sent(ac, simconnect::SpoilersSet), IsEmpty()) << row.name;
    }
}

TEST_F(Approach, RolloutCleansUpAsItSlowsAndEndsWhenTheRunwayIsLeft) {
    LiveAc& ac = onApproach();
    ac.onGround = true;
    ac.rollingOut = true;
    ac.touchdownHeading = ac.simState.heading;
    ac.track[0].gsKt = 91.0;
    lf_rollout(ac);
    EXPECT_EQ(eventsSent(ac), 0U);
    ac.track[0].gsKt = 90.0;
    lf_rollout(ac);
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(0U));
    EXPECT_EQ(ac.flapsLevel, 1);
    EXPECT_TRUE(ac.rollingOut);
    ac.simState.heading -= 15.1 * radPerDeg;
    lf_rollout(ac);
    EXPECT_FALSE(ac.rollingOut);
    EXPECT_EQ(ac.touchdownHeading, 0.0);
    EXPECT_EQ(ac.flapsLevel, 0);
    EXPECT_EQ(ac.throttleLevel, 0);
    EXPECT_THAT(sent(ac, simconnect::SpoilersSet), ElementsAre(0U, 0U));
    EXPECT_EQ(lightsSent(ac), "1101011");
}

TEST_F(Approach, RolloutToTheNorthIsNotEndedByTheHeadingsWrap) {
    LiveAc& ac = onApproach();
    ac.rollingOut = true;
    ac.touchdownHeading = 359.0 * radPerDeg;
    ac.simState.heading = 3.0 * radPerDeg;
    ac.track[0].gsKt = 120.0;
    lf_rollout(ac);
    EXPECT_TRUE(ac.rollingOut);
}

} // namespace
} // namespace kst::test
