// How a target on the ground enters: on a stand, on a taxiway, or not yet.

#include "engine/spawning.h"

#include "core/clock.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/reservedstand.h"
#include "parking/stands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr std::int32_t due = 20000;
constexpr double standHeading = 0.7;

class Spawning : public ::testing::Test {
protected:
    Spawning() {
        world.openAirport();
        world.placeUser(offset(airportPlace, 0.0, 20000.0), true);
        world.setTick(due);
    }
    ~Spawning() override { resetReservedStand(); }

    ParkPos& addStand(LatLon place = airportPlace) {
        ParkPos& stand = world.addStand("A1", place);
        stand.heading = standHeading;
        return stand;
    }

    /// A target of three points that moves so many metres east in all.
    LiveAc& addTarget(LatLon from, double metres, double gsKt, std::string_view type = "A320") {
        std::vector<TrackPoint> points;
        for (int i = 0; i < 3; ++i) {
            points.push_back(groundPoint(offset(from, 90.0, metres * i / 2.0), gsKt, due + 500 * i));
            points.back().stationary = metres == 0.0 || i == 0; // the first one is judged by the second
            points.back().trackDeg = 200.0;
        }
        LiveAc& ac = world.addLive("SWR100", AcState::Buffered, AcPhase::Unknown, points, type);
        ac.regcode = "HB-JCA";
        ac.simState = {};
        return ac;
    }

    EngineWorld world;
};

struct Entry {
    const char* name;
    double besideM; ///< of the stand, at first
    double movesM;
    double gsKt;
    double airportNm; ///< from the stand
    bool enters;
    AcPhase phase;
};

TEST_F(Spawning, WhoStandsNearAStandEntersOnItAndTheOthersOnTheTaxiway) {
    const Entry table[] = {
        {"on the stand", 0, 0, 0, 0, true, AcPhase::Parked},
        {"30 m from it", 30, 0, 0, 0, true, AcPhase::Parked},
        {"60 m from it waits for a stand", 60, 0, 0, 0, false, AcPhase::Unknown},
        {"rolls onto it", -44, 34, 5, 0, true, AcPhase::Parked},
        {"rolls onto it too fast", -44, 34, 5.1, 0, true, AcPhase::Taxi},
        {"rolls too far", -44, 36, 5, 0, true, AcPhase::Taxi},
        {"rolls away from it", 44, 34, 5, 0, true, AcPhase::Taxi},
        {"of an airport 4.9 nm away", 30, 0, 0, 4.9, true, AcPhase::Parked},
        {"of an airport 5.1 nm away", 30, 0, 0, 5.1, true, AcPhase::Taxi},
    };
    for (const Entry& row : table) {
        SCOPED_TRACE(row.name);
        resetEngine(false);
        world.clearStands();
        const LatLon place = offset(airportPlace, 180.0, row.airportNm * metresPerNm);
        ParkPos& stand = addStand(place);
        stand.cargo = true;
        LiveAc& ac = addTarget(offset(place, 90.0, row.besideM), row.movesM, row.gsKt);
        updateBufferAc(ac);
        EXPECT_EQ(ac.phase, row.phase);
        EXPECT_EQ(ac.state, row.enters ? AcState::Requested : AcState::Buffered);
        const bool parked = row.phase == AcPhase::Parked;
        EXPECT_EQ(stand.liveParked, parked);
        EXPECT_EQ(ac.standCargo, parked);
        EXPECT_EQ(ac.track.front().stationary && ac.track.front().gsKt == 0.0,
                  row.phase != AcPhase::Taxi || row.movesM == 0.0);
        EXPECT_EQ(ac.track.size(), parked ? 1U : row.enters ? 3U : 2U);
        if (!row.enters) {
            EXPECT_EQ(ac.reason, Reason::NoFreeStand);
        }
    }
}

TEST_F(Spawning, TargetBesideItsStandStandsOnItFromTheFirstFrame) {
    const ParkPos& stand = addStand();
    LiveAc& ac = addTarget(offset(airportPlace, 90.0, 30.0), 0.0, 3.0);
    ac.cargo = true;
    ac.awayCount = 2;
    ac.lastParkDist = 1.0;
    updateBufferAc(ac);
    const TrackPoint& point = ac.track.front();
    EXPECT_EQ(ac.simState.position(), airportPlace);
    EXPECT_NEAR(ac.simState.heading, standHeading, 1e-12);
    EXPECT_EQ(point.position(), airportPlace);
    EXPECT_NEAR(point.trackDeg, standHeading * degPerRad, 1e-12);
    EXPECT_TRUE(point.stationary);
    EXPECT_EQ(point.gsKt, 0.0);
    EXPECT_EQ(ac.sid, stand.sid);
    EXPECT_EQ((LatLon{ac.standLat, ac.standLon}), airportPlace);
    EXPECT_EQ(ac.standHeading, standHeading);
    EXPECT_EQ(ac.parkedSince, wallTicks100ns());
    EXPECT_EQ(ac.awayCount, 0U);
    EXPECT_EQ(ac.lastParkDist, 0.0);
    EXPECT_TRUE(ac.standCargo) << "a freighter makes it a cargo stand";
    ASSERT_EQ(stand.options.size(), 1U) << "it was seen there";
    EXPECT_EQ(stand.options.front().cs, "SWR100");
    EXPECT_FALSE(lf_mayLearn(nowDayHH(), ac.hexid, false)) << "and need not be guessed there";
}

TEST_F(Spawning, WhoMeetsTheUserOnTheStandEntersWithoutIt) {
    for (const bool reserved : {true, false}) {
        SCOPED_TRACE(reserved);
        resetEngine(false);
        world.clearStands();
        const ParkPos& stand = addStand();
        if (reserved) {
            changeReservedStand("A1");
        } else {
            changeReservedStand("");
            world.placeUser(airportPlace, false, 9000.0);
        }
        LiveAc& ac = addTarget(offset(airportPlace, 90.0, 30.0), 0.0, 0.0);
        updateBufferAc(ac);
        EXPECT_EQ(ac.state, AcState::Requested);
        EXPECT_EQ(ac.phase, AcPhase::Unknown);
        EXPECT_EQ(ac.sid, 0U);
        EXPECT_FALSE(stand.liveParked);
        EXPECT_TRUE(stand.options.empty());
        EXPECT_NEAR(ac.simState.heading * degPerRad, 200.0, 1e-9);
    }
}

TEST_F(Spawning, LiveAircraftKeepsItsStandAndAStaticOneMakesWay) {
    const ParkPos& stand = addStand();
    LiveAc& holder =
        world.addLive("SWR1", AcState::Live, AcPhase::Parked, {groundPoint(airportPlace, 0, 90000)});
    holder.sid = stand.sid;
    holder.feedWhileParked = true;
    LiveAc& refused = addTarget(airportPlace, 0.0, 0.0);
    updateBufferAc(refused);
    EXPECT_TRUE(refused.erase);
    EXPECT_EQ(refused.reason, Reason::StandTaken);
    EXPECT_EQ(refused.sid, 0U);

    liveAcs.clear();
    const StaticAc& parked = world.addStatic("SWR2*", AcState::Live, stand);
    LiveAc& ac = addTarget(airportPlace, 0.0, 0.0);
    updateBufferAc(ac);
    EXPECT_EQ(ac.phase, AcPhase::Parked);
    EXPECT_EQ(parked.state, AcState::Removing);
}

} // namespace
} // namespace kst::test
