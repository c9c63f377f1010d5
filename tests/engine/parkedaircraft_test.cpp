// Arrival on a stand, what a parked aircraft's positions mean, and the configuration of an object.

#include "core/clock.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/configuration.h"
#include "engine/flown.h"
#include "engine/groundleg.h"
#include "engine/legs.h"
#include "engine/parked.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "model/simconnect.h"
#include "parking/stands.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using ::testing::ElementsAre;

constexpr std::int32_t now = 10000;
constexpr LatLon place{47.45, 8.56};

class ParkedAircraft : public ::testing::Test {
protected:
    ParkedAircraft() : stand(world.addStand("B27", place, 30.0)) { stand.heading = 0.5; }

    LiveAc& atStand(AcPhase phase, double metresOff = 0.0, std::string_view type = "A320") {
        const LatLon where = offset(place, 180.0, metresOff);
        LiveAc& ac = world.addLive("SWR1", AcState::Live, phase, {groundPoint(where, 0, now)}, type);
        ac.sid = stand.sid;
        ac.standLat = place.lat;
        ac.standLon = place.lon;
        ac.standHeading = stand.heading;
        return ac;
    }
    /// A position this far from the stand; true if it enters the track.
    bool heard(LiveAc& ac, double metres) {
        TrackPoint msg = groundPoint(offset(place, 0.0, metres), 0, now + 500);
        msg.stationary = true;
        const bool enters = lf_parkedPositionCheck(ac, msg);
        EXPECT_EQ(msg.stationary, !enters) << "it would stand at " << metres << " m";
        return enters;
    }
    EngineWorld world;
    ParkPos& stand;
};

// ---- arrival ----

TEST_F(ParkedAircraft, ClaimedStandIsRolledOntoAndTheAircraftParksThere) {
    // Stopped 30 m short of the stand, nearly in line with it.
    stand.heading = 10.0 * radPerDeg;
    const LatLon stop = offset(place, 190.0, 30.0);
    LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Taxi, {groundPoint(stop, 4, now)});
    ac.sid = stand.sid;
    ac.standLat = place.lat;
    ac.standLon = place.lon;
    ac.standHeading = stand.heading;
    setPhase(ac, AcPhase::Parking);
    lf_routeToStand(ac, stand);
    ASSERT_EQ(ac.track.size(), 3U);
    Flown flown(world, ac);
    flown.flyTo(now + 2500);
    ASSERT_FALSE(flown.gone());
    EXPECT_EQ(flown.ac().phase, AcPhase::Parked);
    EXPECT_LT(gf_distanceNm(flown.ac().simState.position(), place) * metresPerNm, 0.5);
    EXPECT_NEAR(flown.ac().simState.heading * degPerRad, 10.0, 0.6);
    EXPECT_LT(flown.motion().metres, 0.03);
    EXPECT_EQ(flown.ac().simState.airspeedKt, 0.0);
    EXPECT_THAT(sent(flown.ac(), simconnect::EngineAutoShutdown), ElementsAre(0U));
    EXPECT_THAT(spawnedIds, ElementsAre(flown.ac().hexid));
}

TEST_F(ParkedAircraft, ShortWayOntoTheStandStillBringsTheNoseInLine) {
    stand.heading = 40.0 * radPerDeg;
    LiveAc& ac = atStand(AcPhase::Parking, 5.0);
    // The leg on which a stand is claimed, from the claim on.
    lf_routeToStand(ac, stand);
    lf_timeTaxiLeg(ac);
    aimAtSecond(ac);
    lf_setupGroundStep(ac);
    ac.track.erase(ac.track.begin());
    Flown flown(world, ac);
    flown.flyTo(now + 600);
    EXPECT_EQ(flown.ac().phase, AcPhase::Parked);
    EXPECT_NEAR(flown.ac().simState.heading * degPerRad, 40.0, 0.6);
    EXPECT_LT(flown.motion().headingDeg, 0.211) << "no faster than three times the rate of the size class";
    EXPECT_LT(flown.motion().metres, 0.03);
}

TEST_F(ParkedAircraft, AircraftThatStandsOnItsStandAlreadyParksInPlace) {
    LiveAc& ac = atStand(AcPhase::Parking);
    lf_routeToStand(ac, stand);
    EXPECT_TRUE(ac.track[1].stationary);
    Flown flown(world, ac);
    flown.flyTo(now + 148);
    EXPECT_EQ(flown.ac().phase, AcPhase::Parking) << "it waits a moment before it switches off";
    flown.flyTo(now + 400);
    EXPECT_EQ(flown.ac().phase, AcPhase::Parked);
    EXPECT_EQ(flown.motion().metres, 0.0);
}

TEST_F(ParkedAircraft, ArrivalMoreThanTwoMetresOffIsNone) {
    LiveAc& near = atStand(AcPhase::Parking, 1.9);
    lf_arriveAtStand(near);
    EXPECT_EQ(near.phase, AcPhase::Parked);
    EXPECT_TRUE(stand.liveParked);
    stand.liveParked = false;
    LiveAc& off = atStand(AcPhase::Parking, 3.0);
    lf_arriveAtStand(off);
    EXPECT_EQ(off.phase, AcPhase::Taxi);
    EXPECT_FALSE(stand.liveParked);
}

TEST_F(ParkedAircraft, ArrivalIsRememberedAndHoldsTheLimit) {
    world.openAirport();
    nowStamp = DayHH{2, 10}.packed();
    CUSTOM_MAX_PARK.set(1);
    StaticAc& parked =
        world.addStatic("DLH1*", AcState::Live, world.addStand("B28", offset(place, 90.0, 200.0)));
    for (const bool freighterOnPassengerStand : {true, false}) {
        LiveAc& ac = atStand(AcPhase::Parking);
        ac.airline = "SWR";
        ac.regcode = "HB-JLT";
        ac.standCargo = freighterOnPassengerStand;
        stand.liveParked = false;
        lf_arriveAtStand(ac);
        EXPECT_EQ(stand.options.size(), freighterOnPassengerStand ? 0U : 1U);
        EXPECT_EQ(parked.state, freighterOnPassengerStand ? AcState::Live : AcState::Removing);
    }
    EXPECT_EQ(stand.options.front().day, 2);
    EXPECT_TRUE(stand.options.front().hours.test(10));
    LiveAc& freighter = atStand(AcPhase::Parking);
    freighter.cargo = true;
    stand.liveParked = false;
    lf_arriveAtStand(freighter);
    EXPECT_TRUE(stand.cargo);
}

TEST_F(ParkedAircraft, WhoArrivesOnATakenStandGoesAndTheFirstKeepsIt) {
    stand.liveParked = true;
    LiveAc& ac = atStand(AcPhase::Parking);
    nextPosMain(ac);
    EXPECT_EQ(ac.state, AcState::Removing);
    EXPECT_EQ(ac.reason, Reason::StandTakenOnArrival);
    EXPECT_TRUE(stand.liveParked);
}

// ---- positions of a parked aircraft ----

// Half spans are 17.9 m and 32.4 m.
TEST_F(ParkedAircraft, DriftIsToldFromMovement) {
    struct {
        const char* name;
        const char* type;
        std::vector<double> metres; ///< heard in turn
        bool moves;                 ///< with the last one
    } const table[] = {
        {"to and fro", "A320", {1, 5, 2, 6, 1.5, 5, 9, 9.5}, false},
        {"three steps within a quarter of the span", "B77W", {1, 5, 9, 13}, false},
        {"three steps over a quarter of the span", "A320", {1, 5, 9, 13}, true},
        {"two steps over a quarter of the span", "A320", {1, 5, 13}, false},
        {"steps shorter than 3 m", "A320", {1, 3.9, 3.8, 3.9}, false},
        {"one step of almost half a span", "A320", {1, 18}, false},
        {"one step over half a span", "A320", {1, 20}, true},
        {"came back in between", "A320", {1, 5, 9, 3, 13}, false},
    };
    for (const auto& row : table) {
        LiveAc& ac = atStand(AcPhase::Parked, 0.0, row.type);
        stand.liveParked = true;
        ac.parkedSince = 0;
        for (const double& metres : row.metres) {
            const bool last = &metres == &row.metres.back();
            EXPECT_EQ(heard(ac, metres), last && row.moves) << row.name << ", " << metres;
        }
        EXPECT_EQ(ac.moveOffSeen, row.moves) << row.name;
        EXPECT_EQ(stand.liveParked, !row.moves) << row.name;
        EXPECT_TRUE(ac.feedWhileParked);
        EXPECT_EQ(ac.parkedSince, wallTicks100ns());
    }
}

struct FarPosition {
    const char* name;
    AcPhase phase;
    AcPhase prevPhase;
    double metres;
    bool enters;
    AcPhase after;
    bool removed;
};

TEST_F(ParkedAircraft, PositionsFartherOffAreMovementArrivalOrLoss) {
    const FarPosition table[] = {
        {"parked after taxi, 84.9 m", AcPhase::Parked, AcPhase::Taxi, 84.9, false, AcPhase::Parked, false},
        {"parked after taxi, 85.1 m", AcPhase::Parked, AcPhase::Taxi, 85.1, true, AcPhase::Parked, false},
        {"just parked, 169 m", AcPhase::Parked, AcPhase::Parking, 169, false, AcPhase::Parked, false},
        {"just parked, 171 m", AcPhase::Parked, AcPhase::Parking, 171, true, AcPhase::Parked, false},
        {"rolling onto the stand, 84 m", AcPhase::Parking, AcPhase::Taxi, 84, false, AcPhase::Parking, false},
        {"rolling onto the stand, 86 m", AcPhase::Parking, AcPhase::Taxi, 86, true, AcPhase::Taxi, false},
        {"rolling onto the stand, 300 m", AcPhase::Parking, AcPhase::Taxi, 300, true, AcPhase::Taxi, false},
        {"parked, 199 m", AcPhase::Parked, AcPhase::Taxi, 199, true, AcPhase::Parked, false},
        {"parked, 201 m", AcPhase::Parked, AcPhase::Taxi, 201, false, AcPhase::Parked, true},
    };
    for (const FarPosition& row : table) {
        LiveAc& ac = atStand(row.phase);
        ac.prevPhase = row.prevPhase;
        EXPECT_EQ(heard(ac, row.metres), row.enters) << row.name;
        EXPECT_EQ(ac.phase, row.after) << row.name;
        EXPECT_EQ(ac.state == AcState::Removing, row.removed) << row.name;
    }
}

TEST_F(ParkedAircraft, PositionsDoNotCountBeforeTheObjectIsThere) {
    LiveAc& ac = atStand(AcPhase::Parked);
    ac.state = AcState::Requested;
    lf_addPosition(ac, groundPoint(offset(place, 0.0, 120.0), 4, now + 500));
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_FALSE(ac.moveOffSeen);
}

TEST_F(ParkedAircraft, AircraftThatMovesSoonAfterItsLandingIsTowed) {
    struct {
        const char* type;
        double minutes;
        bool towed;
    } const table[] = {{"C56X", 14, true},    {"C56X", 15.1, false}, {"A320", 24, true},
                       {"A320", 25.1, false}, {"B77W", 59, true},    {"B77W", 60.1, false},
                       {"C172", 1, false},    {"EC35", 1, false},    {"F16", 1, false}};
    for (const auto& row : table) {
        world.setTick(now);
        LiveAc& ac = atStand(AcPhase::Parked, 0.0, row.type);
        ac.landed = true;
        LIGHT_AIRCRAFT.set(true);
        HELICOPTERS.set(true);
        HIGH_PERF_AIRCRAFT.set(true);
        nextPosMain(ac); // the feed is silent: the parked point lies a week ahead
        ASSERT_GT(ac.reckonLeft, 0) << row.type;
        world.setTick(now + static_cast<std::int32_t>(row.minutes * 6000));
        lf_addPosition(ac, groundPoint(offset(place, 0.0, 120.0), 4, updateCount + 3000));
        EXPECT_EQ(ac.towed, row.towed) << row.type << " after " << row.minutes;
        EXPECT_FALSE(ac.landed);
        EXPECT_EQ(ac.reckonLeft, 0);
        EXPECT_EQ(ac.track.front().dueTick, updateCount + 1) << "it leaves at once, not in a week";
    }
}

// ---- lights and engines ----

TEST_F(ParkedAircraft, LightsOfAParkedAircraftFollowTheSettings) {
    RANDOM.set(false);
    struct {
        bool nav;
        bool cargoStand;
        const char* lights;
    } const table[] = {{false, false, "0000011"},
                       {true, false, "1000011"},
                       {false, true, "0000010"},
                       {true, true, "1000010"}};
    for (const auto& row : table) {
        forgetSent();
        NAV_LIGHTS_WHILE_PARKED.set(row.nav);
        LiveAc& ac = atStand(AcPhase::Parked);
        ac.standCargo = row.cargoStand;
        lf_parkLights(ac);
        EXPECT_EQ(lightsSent(ac), row.lights);
        EXPECT_THAT(sent(ac, simconnect::ThrottleSet), ElementsAre(0U));
        EXPECT_THAT(sent(ac, simconnect::FlapsSet), ElementsAre(0U));
    }
}

TEST_F(ParkedAircraft, MostParkedAircraftHaveTheirCabinLit) {
    RANDOM.set(true);
    seedRandom(7);
    int lit = 0;
    constexpr int parked = 400;
    for (int i = 0; i < parked; ++i) {
        forgetSent();
        LiveAc& ac = atStand(AcPhase::Parked);
        lf_parkLights(ac);
        lit += lightsSent(ac).back() == '1' ? 1 : 0;
        liveAcs.pop_back();
    }
    EXPECT_NEAR(lit / static_cast<double>(parked), 0.9, 0.05);
}

TEST_F(ParkedAircraft, NewObjectIsConfiguredForWhereItIs) {
    struct {
        const char* name;
        const char* type;
        AcPhase phase;
        double altFt; ///< 0 on the ground
        double agl;
        const char* lights;
        int throttle;
        int flaps;
        bool engines;
    } const table[] = {
        {"cruise", "A320", AcPhase::Air, 10001, 2500, "1100101", throttleNotSent, flapsNotSent, true},
        {"descent", "A320", AcPhase::Air, 10000, 2000, "1110111", throttleNotSent, flapsNotSent, true},
        {"final", "A320", AcPhase::Air, 2000, 1999, "1110110", throttleNotSent, flapsNotSent, true},
        {"taxi", "A320", AcPhase::Taxi, 0, 0, "1101011", 0, 1, true},
        {"parked", "A320", AcPhase::Parked, 0, 0, "0000011", 0, 0, false},
        {"undecided", "A320", AcPhase::Unknown, 0, 0, "1100011", 0, 0, true},
        {"helicopter", "EC35", AcPhase::Taxi, 0, 0, "1101011", 4, flapsNotSent, true},
    };
    NAV_LIGHTS_WHILE_PARKED.set(false);
    for (const auto& row : table) {
        LiveAc& ac = atStand(row.phase, 0.0, row.type);
        ac.state = AcState::Requested;
        ac.objectId = 77;
        ac.heightAgl = row.agl;
        ac.track.front().airborne = row.altFt > 0;
        ac.track.front().altFt = row.altFt;
        forgetSent();
        lf_initialConfig(ac);
        EXPECT_EQ(ac.state, AcState::Live) << row.name;
        EXPECT_EQ(lightsSent(ac), row.lights) << row.name;
        EXPECT_EQ(ac.throttleLevel, row.throttle) << row.name;
        EXPECT_EQ(ac.flapsLevel, row.flaps) << row.name;
        EXPECT_EQ(sent(ac, simconnect::EngineAutoStart).size(), row.engines ? 1U : 0U) << row.name;
        EXPECT_EQ(sent(ac, simconnect::EngineAutoShutdown).size(), row.engines ? 0U : 1U) << row.name;
        EXPECT_EQ(sent(ac, simconnect::SpoilersSet).empty(), row.type == std::string_view("EC35"))
            << row.name;
    }
}

} // namespace
} // namespace kst::test
