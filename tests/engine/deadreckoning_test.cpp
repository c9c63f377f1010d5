// What an aircraft does when the feed falls silent.

#include "engine/deadreckoning.h"

#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/flown.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "parking/stands.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr std::int32_t now = 10000;
constexpr LatLon place{47.45, 8.56};

class DeadReckoning : public ::testing::Test {
protected:
    DeadReckoning() {
        workingRangeNm = 40.0;
        world.placeUser(offset(place, 180.0, 20000.0), true);
    }
    LiveAc& flying(std::string_view type = "A320") {
        LiveAc& ac =
            world.addLive("SWR1", AcState::Live, AcPhase::Air, {airPoint(place, 8000, 200, now)}, type);
        ac.simState.heading = pi / 2;
        return ac;
    }
    LiveAc& onGround(AcPhase phase, double gsKt, std::string_view type = "A320") {
        LiveAc& ac = world.addLive("SWR1", AcState::Live, phase, {groundPoint(place, gsKt, now)}, type);
        ac.simState.heading = pi / 2;
        ac.heightAgl = 0.0;
        return ac;
    }
    EngineWorld world;
};

TEST_F(DeadReckoning, SilentAircraftInTheAirCoastsForAMinuteAndGoes) {
    Flown flown(world, flying());
    flown.reportHeights(false);
    LatLon last = place;
    double lastKt = 200.0;
    // Eight points of eight seconds, each reached a little early at the mean of two falling speeds.
    flown.flyTo(now + 6200, [&](const LiveAc& ac) {
        const TrackPoint& target = ac.track.front();
        if (!(target.position() == last)) {
            EXPECT_NEAR(target.gsKt, lastKt * 0.95, 1e-9);
            last = target.position();
            lastKt = target.gsKt;
        }
    });
    ASSERT_FALSE(flown.gone());
    EXPECT_NEAR(lastKt, 200.0 * std::pow(0.95, 8), 1e-6);
    EXPECT_LT(flown.motion().metres, 1.1) << "200 kt is 1.03 m a tick";
    EXPECT_LT(flown.motion().headingDeg, 0.01);
    EXPECT_NEAR(flown.ac().simState.lat, place.lat, 0.001);
    EXPECT_GT(flown.ac().simState.lon, place.lon + 0.05);
    flown.flyTo(now + 6401);
    EXPECT_TRUE(flown.gone());
    EXPECT_EQ(flown.ac().reason, Reason::TrackEnded);
}

TEST_F(DeadReckoning, CoastingIsRefusedWhereTheAircraftWouldNotBeShown) {
    struct {
        const char* name;
        double userKm;
        bool closeMode;
        bool coasts;
    } const table[] = {{"near", 20, false, true},
                       {"just inside the range", 73.0, false, true}, // 39.5 nm are 73.15 km
                       {"within half a mile of its end", 73.3, false, false},
                       {"only the airport is shown", 20, true, false}};
    for (const auto& row : table) {
        world.placeUser(offset(place, 180.0, row.userKm * 1000.0), true);
        closeAirportMode = row.closeMode;
        LiveAc& ac = flying();
        EXPECT_EQ(lf_extendTrack(ac), row.coasts) << row.name;
    }
    closeAirportMode = false;
    world.placeUser({0.0, 0.0}, true);
    LiveAc& ac = flying();
    EXPECT_TRUE(lf_extendTrack(ac)) << "before the user's position is known nothing is too far";
    EXPECT_EQ(ac.reckonLeft, 8);
}

TEST_F(DeadReckoning, SizeClassThatIsSwitchedOffIsNotKept) {
    struct {
        const char* type;
        BoolParameter& parameter;
    } const table[] = {{"C172", LIGHT_AIRCRAFT}, {"F16", HIGH_PERF_AIRCRAFT}, {"EC35", HELICOPTERS}};
    for (const auto& row : table) {
        for (const bool on : {true, false}) {
            row.parameter.set(on);
            LiveAc& ac = flying(row.type);
            EXPECT_EQ(lf_extendTrack(ac), on) << row.type;
        }
    }
}

TEST_F(DeadReckoning, SilentApproachDescendsToTheGroundAndKeepsItsLastSpeed) {
    LiveAc& ac = flying();
    ac.landing = true;
    ac.track.front().altFt = 100.0;
    lf_deadReckon(ac, 8);
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_NEAR(ac.track.back().gsKt, 180.0, 1e-9);
    EXPECT_NEAR(ac.track.back().altFt, 100.0 - 80.04, 1e-9);
    EXPECT_TRUE(ac.track.back().airborne);
    EXPECT_EQ(ac.track.back().vsFpm, -667.0);
    ac.track.erase(ac.track.begin());
    lf_deadReckon(ac, 4);
    EXPECT_NEAR(ac.track.back().gsKt, 162.0, 1e-9);
    ac.track.erase(ac.track.begin());
    lf_deadReckon(ac, 3);
    EXPECT_NEAR(ac.track.back().gsKt, 162.0, 1e-9);
    EXPECT_EQ(ac.track.back().altFt, 0.0);
    EXPECT_FALSE(ac.track.back().airborne);
}

TEST_F(DeadReckoning, SilentTakeOffKeepsClimbing) {
    LiveAc& ac = flying();
    ac.phase = AcPhase::TakeOff;
    ac.departing = true;
    lf_deadReckon(ac, 8);
    EXPECT_NEAR(ac.track.back().altFt, 8200.0, 1e-9);
    EXPECT_EQ(ac.track.back().vsFpm, 1500.0);
    // Last heard on the ground of a high airport, where points have no altitude.
    ac.track.assign(1, ac.track.front());
    ac.track.front().airborne = false;
    ac.track.front().altFt = 0.0;
    ac.simState.altFt = 2100.0;
    lf_deadReckon(ac, 8);
    EXPECT_NEAR(ac.track.back().altFt, 2300.0, 1e-9);
    EXPECT_TRUE(ac.track.back().airborne);
}

TEST_F(DeadReckoning, SilentRollsAccelerateAndBrake) {
    struct {
        double fromKt;
        double departingKt;
        double vsFpm; ///< kept where it is -1
        double landingKt;
    } const table[] = {{30, 40, -1, 20},      {31, 80, -1, 20},     {60, 80, -1, 30},    {61, 110, -1, 30},
                       {80, 110, -1, 60},     {100, 110, -1, 80},   {101, 150, 600, 80}, {140, 150, 600, 100},
                       {150, 170, 1200, 100}, {161, 180, 2400, 100}};
    for (const auto& row : table) {
        LiveAc& departing = onGround(AcPhase::Taxi, row.fromKt);
        departing.departing = true;
        departing.simState.heading = 0.8;
        departing.track.front().vsFpm = -1.0;
        lf_deadReckon(departing, 10);
        EXPECT_EQ(departing.track.back().gsKt, row.departingKt) << row.fromKt;
        EXPECT_EQ(departing.track.back().vsFpm, row.vsFpm) << row.fromKt;
        // Three seconds at the new speed, straight ahead.
        const double metres = gf_distanceNm(place, departing.track.back().position()) * metresPerNm;
        EXPECT_NEAR(metres, row.departingKt * metresPerNm / 3600 * 3, 0.1) << row.fromKt;
        EXPECT_NEAR(gf_bearing(place, departing.track.back().position()), 0.8, 1e-4) << row.fromKt;
        EXPECT_EQ(departing.track.back().dueTick, now + 300);

        LiveAc& landing = onGround(AcPhase::Taxi, row.fromKt);
        landing.rollingOut = true;
        landing.track.front().vsFpm = -1.0;
        lf_deadReckon(landing, 10);
        EXPECT_EQ(landing.track.back().gsKt, row.landingKt) << row.fromKt;
        EXPECT_EQ(landing.track.back().vsFpm, 0.0) << row.fromKt;
    }
}

TEST_F(DeadReckoning, WaitIsExtendedByThreeSecondsAtATimeAndARollGoesOnForTen) {
    LiveAc& ac = onGround(AcPhase::Taxi, 8);
    ASSERT_TRUE(lf_extendTrack(ac));
    const TrackPoint& held = ac.track.back();
    EXPECT_EQ(held.dueTick, now + 300);
    EXPECT_EQ(held.position(), place);
    EXPECT_EQ(held.gsKt, 0.0);
    EXPECT_TRUE(held.stationary);
    EXPECT_EQ(ac.reckonLeft, 1);
    EXPECT_EQ(ac.holdStartTick, now);

    LiveAc& rolling = onGround(AcPhase::Taxi, 120);
    rolling.departing = true;
    ASSERT_TRUE(lf_extendTrack(rolling));
    EXPECT_EQ(rolling.reckonLeft, 10);
    rolling.reckonLeft = 1;
    EXPECT_FALSE(lf_extendTrack(rolling));
    EXPECT_EQ(rolling.reckonLeft, -1) << "nothing more is invented";
    EXPECT_FALSE(lf_extendTrack(rolling));
}

TEST_F(DeadReckoning, SlowestCoastIsOneKnotAndWhatStandsStaysThere) {
    LiveAc& slow = flying("EC35");
    slow.track.front().gsKt = 1.0;
    lf_deadReckon(slow, 8);
    EXPECT_EQ(slow.track.back().gsKt, 1.0);
    EXPECT_FALSE(slow.track.back().stationary);
    LiveAc& parked = onGround(AcPhase::Parked, 3);
    lf_deadReckon(parked, 1);
    EXPECT_EQ(parked.track.back().gsKt, 0.0);
    EXPECT_TRUE(parked.track.back().stationary);
    EXPECT_EQ(parked.track.back().position(), place);
}

TEST_F(DeadReckoning, WaitingAircraftMakesWayForAnotherThatTaxiesBy) {
    struct {
        const char* name;
        double halfSpans;
        AcPhase phase;
        AcState state;
        bool goes;
    } const table[] = {{"close", 1.19, AcPhase::Taxi, AcState::Live, true},
                       {"clear", 1.21, AcPhase::Taxi, AcState::Live, false},
                       {"parked", 0.5, AcPhase::Parked, AcState::Live, false},
                       {"leaving", 0.5, AcPhase::Taxi, AcState::Removing, false}};
    for (const auto& row : table) {
        liveAcs.clear();
        LiveAc& ac = onGround(AcPhase::Taxi, 8);
        ac.holding = true;
        ac.holdStartTick = now - 100;
        const LatLon by = offset(place, 0, row.halfSpans * 2.0 * ac.halfSpanNm * metresPerNm);
        world.addLive("SWR2", row.state, row.phase, {groundPoint(by, 8, now)});
        EXPECT_EQ(lf_extendTrack(ac), !row.goes) << row.name;
        EXPECT_EQ(ac.holding, !row.goes) << row.name;
        EXPECT_EQ(ac.holdStartTick, row.goes ? 0 : now - 100) << row.name;
        EXPECT_EQ(ac.reason == Reason::TaxiNeighbourClose, row.goes) << row.name;
    }
}

TEST_F(DeadReckoning, ParkedAircraftThatFallsSilentKeepsItsPlaceForAWeek) {
    ParkPos& stand = world.addStand("A1", place);
    stand.liveParked = true;
    LiveAc& ac = onGround(AcPhase::Parked, 0);
    ac.sid = stand.sid;
    ac.feedWhileParked = true;
    Flown flown(world, ac);
    flown.flyTo(now + 5);
    ASSERT_FALSE(flown.gone());
    EXPECT_EQ(flown.ac().track.front().dueTick, now + 60480000);
    EXPECT_EQ(flown.ac().reckonLeft, 1);
    EXPECT_FALSE(flown.ac().feedWhileParked);
    EXPECT_FALSE(stand.liveParked) << "another aircraft may take it";
    EXPECT_EQ(flown.ac().sid, stand.sid);
    world.setTick(now + 60480000 - 1);
    flown.flyTo(now + 60480000 + 1);
    EXPECT_TRUE(flown.gone());
}

TEST_F(DeadReckoning, AircraftWithoutAWayToGoOnNeverHangsThePass) {
    // Marked as taxiing but not on the ground: every invented point stands, and none may stand in the air.
    LiveAc& ac = flying();
    ac.phase = AcPhase::Taxi;
    nextPosMain(ac);
    EXPECT_EQ(ac.state, AcState::Removing);
}

} // namespace
} // namespace kst::test
