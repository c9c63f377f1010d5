// Who may have a stand, and what makes way for a live aircraft that takes one.

#include "core/clock.h"
#include "core/display.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/curves.h"
#include "engine/groundleg.h"
#include "engine/standconflicts.h"
#include "engine/tables.h"
#include "parking/reservedstand.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <functional>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

// Two A320 of 35.8 m on adjacent stands touch within 39.4 m.
constexpr double touchingM = 39.0;
constexpr double clearM = 39.8;

class StandConflicts : public ::testing::Test {
protected:
    StandConflicts() { world.openAirport(); }

    LiveAc& addParked(std::string_view callsign, const ParkPos& stand, AcPhase phase = AcPhase::Parked) {
        LiveAc& ac =
            world.addLive(callsign, AcState::Live, phase, {groundPoint(stand.position(), 0.0, 90000)});
        ac.sid = stand.sid;
        return ac;
    }

    LiveAc newcomer(std::string_view callsign) const {
        LiveAc ac;
        ac.callsign = callsign;
        ac.acType = "A320";
        return ac;
    }

    EngineWorld world;
};

struct StandCase {
    const char* name;
    std::string holder, newcomer;
    bool holderSends;
    AcPhase phase;
    bool applies, newcomerStays, holderGoes;
};

TEST_F(StandConflicts, OneStandForTwoLiveAircraft) {
    const StandCase cases[] = {
        {"same callsign", "SWR1", "SWR1", true, AcPhase::Parked, true, true, true},
        {"ghost for the real one's stand", "SWR1", "SWR1_", false, AcPhase::Parked, true, false, false},
        {"real one for its ghost's stand", "SWR1_", "SWR1", true, AcPhase::Parked, true, true, true},
        {"real one for another's ghost's stand", "SWR1_", "SWR2", true, AcPhase::Parked, true, true, true},
        {"ghost for another's stand", "SWR1", "SWR2_", false, AcPhase::Parked, true, false, false},
        {"two ghosts, holder sends", "SWR1_", "SWR2_", true, AcPhase::Parked, true, false, false},
        {"two ghosts, holder is silent", "SWR1_", "SWR2_", false, AcPhase::Parked, true, true, true},
        {"holder still sends", "SWR1", "SWR2", true, AcPhase::Parked, true, false, false},
        {"holder is silent", "SWR1", "SWR2", false, AcPhase::Parked, true, true, true},
        {"one letter longer is no ghost", "SWR1", "SWR12", true, AcPhase::Parked, true, false, false},
        {"pushed back", "SWR1", "SWR2", false, AcPhase::PushBack, true, true, true},
        {"waits after the push", "SWR1", "SWR2", false, AcPhase::AfterPush, true, true, true},
        {"taxiing away", "SWR1", "SWR2", false, AcPhase::Taxi, false, true, false},
    };
    const ParkPos& stand = world.addStand("A1", airportPlace);
    for (const StandCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& holder = addParked(entry.holder, stand, entry.phase);
        holder.feedWhileParked = entry.holderSends;
        const LiveAc wants = newcomer(entry.newcomer);
        StandClaim claim{stand, wants, stand.sid};
        EXPECT_EQ(lf_clearForStand(claim, holder), entry.applies);
        EXPECT_EQ(claim.mayStay, entry.newcomerStays);
        EXPECT_EQ(holder.state, entry.holderGoes ? AcState::Removing : AcState::Live);
    }
}

TEST_F(StandConflicts, OtherStandsAndOtherStatesDoNotMatter) {
    const ParkPos& stand = world.addStand("A1", airportPlace);
    const ParkPos& other = world.addStand("A2", offset(airportPlace, 90.0, 200.0));
    const LiveAc wants = newcomer("SWR1");
    StandClaim claim{stand, wants, stand.sid};
    EXPECT_FALSE(lf_clearForStand(claim, addParked("SWR1", other)));
    LiveAc& leaving = addParked("SWR1", stand);
    leaving.state = AcState::Removing;
    EXPECT_FALSE(lf_clearForStand(claim, leaving));
    EXPECT_TRUE(claim.mayStay);
}

struct NeighbourCase {
    const char* name;
    double apartM;
    std::string callsign;
    AcPhase phase;
    bool applies, stays;
};

TEST_F(StandConflicts, NeighbourKeepsItsRoom) {
    const NeighbourCase cases[] = {
        {"touching", touchingM, "SWR1", AcPhase::Parked, true, false},
        {"clear", clearM, "SWR1", AcPhase::Parked, true, true},
        {"touching while it is pushed", touchingM, "SWR1", AcPhase::PushBack, true, false},
        {"has left after the push", touchingM, "SWR1", AcPhase::AfterPush, false, true},
        {"the newcomer itself", touchingM, "SWR9", AcPhase::Parked, false, true},
    };
    for (const NeighbourCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        resetEngine(false);
        const ParkPos& stand = world.addStand("A1", airportPlace);
        const ParkPos& neighbour = world.addStand("A2", offset(airportPlace, 90.0, entry.apartM));
        LiveAc& ac = addParked(entry.callsign, neighbour, entry.phase);
        const LiveAc wants = newcomer("SWR9");
        StandClaim claim{stand, wants, neighbour.sid};
        EXPECT_EQ(lf_clearForNeighbour(claim, ac), entry.applies);
        EXPECT_EQ(claim.mayStay, entry.stays);
        EXPECT_EQ(ac.state, AcState::Live) << "a neighbour refuses, it does not go";
    }
}

TEST_F(StandConflicts, NeighbourWithoutAPlaceRefuses) {
    const ParkPos& stand = world.addStand("A1", airportPlace);
    const ParkPos& nowhere = world.addStand("A2", {0.0, 0.0});
    LiveAc& ac = addParked("SWR1", nowhere);
    const LiveAc wants = newcomer("SWR9");
    StandClaim claim{stand, wants, nowhere.sid};
    EXPECT_TRUE(lf_clearForNeighbour(claim, ac));
    EXPECT_FALSE(claim.mayStay);

    LiveAc& lost = addParked("SWR2", nowhere);
    lost.sid = 99;
    StandClaim toUnknown{stand, wants, 99};
    EXPECT_TRUE(lf_clearForNeighbour(toUnknown, lost));
    EXPECT_FALSE(toUnknown.mayStay);
}

TEST_F(StandConflicts, StaticAircraftMakesWayInEachState) {
    struct Case {
        const char* name;
        AcState state;
        bool queued;
        bool recordGone, marked;
        AcState stateThen;
    };
    const Case cases[] = {
        {"there", AcState::Live, false, false, false, AcState::Removing},
        {"waiting for its creation", AcState::Requested, true, true, false, AcState::Requested},
        {"being created", AcState::Requested, false, false, true, AcState::Requested},
        {"leaving", AcState::Removing, false, false, false, AcState::Removing},
    };
    const ParkPos& stand = world.addStand("A1", airportPlace);
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        StaticAc& parked = world.addStatic("SWR1*", entry.state, stand);
        StaticAc& second = world.addStatic("SWR2*", AcState::Live, stand);
        if (entry.queued) {
            queueStaticCreation({.initPos = {}, .tailNumber = "SWR1*", .title = {}, .hexid = parked.hexid});
        }
        checkStandOrExcludedIsOccupiedByStaticAndRemove(newcomer("SWR9"), stand);
        EXPECT_EQ(staticAcs.size(), entry.recordGone ? 1U : 2U);
        if (!entry.recordGone) {
            EXPECT_EQ(parked.state, entry.stateThen);
            EXPECT_EQ(parked.removeWhenCreated, entry.marked);
            EXPECT_EQ(second.state, AcState::Live);
        }
        EXPECT_EQ(staticCreateQueueSize(), 0U);
    }
}

TEST_F(StandConflicts, StaticNeighboursThatWouldTouchGo) {
    ParkPos& stand = world.addStand("A1", airportPlace);
    const ParkPos& near = world.addStand("A2", offset(airportPlace, 90.0, touchingM));
    const ParkPos& far = world.addStand("A3", offset(airportPlace, 270.0, clearM));
    const ParkPos& elsewhere = world.addStand("A4", offset(airportPlace, 0.0, 5.0));
    stand.neighbours = {near.sid, far.sid, 99};
    StaticAc& touching = world.addStatic("SWR1*", AcState::Live, near);
    StaticAc& clear = world.addStatic("SWR2*", AcState::Live, far);
    StaticAc& notNeighbour = world.addStatic("SWR3*", AcState::Live, elsewhere);
    checkStandOrExcludedIsOccupiedByStaticAndRemove(newcomer("SWR9"), stand);
    EXPECT_EQ(touching.state, AcState::Removing);
    EXPECT_EQ(touching.reason, Reason::ConflictWithLive);
    EXPECT_EQ(clear.state, AcState::Live);
    EXPECT_EQ(notNeighbour.state, AcState::Live);
}

struct ClaimCase {
    const char* name;
    std::function<void(LiveAc&)> claimer;
    std::function<void(LiveAc&)>
        live;     ///< an aircraft parked on the stand, or on the neighbour it moves it to
    double stopM; ///< how far from the stand the track ends
    bool staticThere, userThere;
    bool claims, liveGoes, staticGoes;
};

// An A320 that has stopped, at 39 m from a neighbour that it would touch. The live aircraft starts on the
// stand.
TEST_F(StandConflicts, TaxiingAircraftClaimsAStand) {
    const auto nothing = [](LiveAc&) {};
    const auto gone = [](LiveAc& other) { other.sid = 0; };
    const auto onNeighbour = [](LiveAc& other) { other.sid = 2; };
    const auto ghost = [](LiveAc& other) { other.callsign = "SWR9_"; };
    const ClaimCase cases[] = {
        {"free", nothing, gone, 19, false, false, true, false, false},
        {"too far for one that has stopped", nothing, gone, 21, false, false, false, false, false},
        {"lost after landing, looks farther", [](LiveAc& ac) { ac.reckonLeft = 5, ac.landed = true; }, gone,
         54, false, false, true, false, false},
        {"lost after landing, but too far", [](LiveAc& ac) { ac.reckonLeft = 5, ac.landed = true; }, gone, 56,
         false, false, false, false, false},
        {"lost without having landed", [](LiveAc& ac) { ac.reckonLeft = 5; }, gone, 21, false, false, false,
         false, false},
        {"fast", [](LiveAc& ac) { ac.track[1].gsKt = 6; }, gone, 19, false, false, false, false, false},
        {"has just left a stand", [](LiveAc& ac) { ac.prevPhase = AcPhase::AfterPush; }, gone, 19, false,
         false, false, false, false},
        {"is towed", [](LiveAc& ac) { ac.prevPhase = AcPhase::AfterPush, ac.towed = true; }, gone, 19, false,
         false, true, false, false},
        {"searched here before",
         [](LiveAc& ac) { ac.searchedLat = ac.track[1].lat, ac.searchedLon = ac.track[1].lon; }, gone, 19,
         false, false, false, false, false},
        {"taken", nothing, [](LiveAc&) { parkPositions()[0].liveParked = true; }, 19, true, false, false,
         false, false},
        {"somebody is parked there whose feed went elsewhere", nothing, nothing, 19, false, false, true, true,
         false},
        {"the same, sending", nothing, [](LiveAc& other) { other.feedWhileParked = true; }, 19, false, false,
         true, true, false},
        {"a ghost is parked there", nothing, ghost, 19, false, false, true, true, false},
        {"a ghost claims", [](LiveAc& ac) { ac.callsign = "SWR1_"; }, nothing, 19, false, false, true, true,
         false},
        {"being pushed off it", nothing, [](LiveAc& other) { other.phase = AcPhase::PushBack; }, 19, false,
         false, true, false, false},
        {"parked so near that they touch", nothing, onNeighbour, 19, false, false, true, true, false},
        {"pushed so near that they touch", nothing,
         [](LiveAc& other) { other.sid = 2, other.phase = AcPhase::PushBack; }, 19, false, false, true, true,
         false},
        {"near, but without a place", nothing,
         [](LiveAc& other) { other.sid = 2, parkPositions()[1].latitude = parkPositions()[1].longitude = 0; },
         19, false, false, true, false, false},
        {"static aircraft", nothing, gone, 19, true, false, true, false, true},
        {"reserved", [](LiveAc&) { changeReservedStand("A1"); }, gone, 19, false, false, false, false, false},
        {"stops 36 m ahead of it", [](LiveAc& ac) { ac.simState.lat -= 36.0 / 111120.0; }, gone, 1, false,
         false, false, false, false},
        {"the user's", nothing, nothing, 19, true, true, false, false, false},
    };
    for (const ClaimCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        resetEngine(false);
        ParkPos& stand = world.addStand("A1", airportPlace);
        ParkPos& neighbour = world.addStand("A2", offset(airportPlace, 90.0, touchingM));
        stand.neighbours = {neighbour.sid};
        stand.cargo = true;
        world.placeUser(entry.userThere ? offset(airportPlace, 270.0, 5.0) : LatLon{47.0, 8.0}, true);
        entry.live(addParked("SWR9", stand));
        if (entry.staticThere) {
            world.addStatic("DLH1*", AcState::Live, stand);
        }
        const LatLon stop = offset(airportPlace, 180.0, entry.stopM);
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Taxi,
                                   {groundPoint(stop, 3.0, 10000), groundPoint(stop, 0.0, 10500)});
        ac.track.back().stationary = true;
        // Still in a corner.
        ac.curveControlNorth = ac.curveControlEast = ac.curveEndNorth = ac.curveEndEast = 10.0;
        entry.claimer(ac);
        nextPosGround(ac);
        EXPECT_EQ(ac.phase, entry.claims ? AcPhase::Parking : AcPhase::Taxi);
        EXPECT_EQ(ac.sid, entry.claims ? stand.sid : 0);
        EXPECT_EQ(ac.standCargo, entry.claims);
        if (entry.claims) {
            EXPECT_EQ((LatLon{ac.searchedLat, ac.searchedLon}), stop) << "it would search here again";
            EXPECT_FALSE(curveActive(ac));
            EXPECT_EQ(ac.reckonLeft, 0);
            EXPECT_EQ(ac.track.front().gsKt, ac.pushSpeedKt);
        }
        EXPECT_EQ(liveAcs.front().state, entry.liveGoes ? AcState::Removing : AcState::Live);
        if (entry.staticThere) {
            EXPECT_EQ(staticAcs.front().state, entry.staticGoes ? AcState::Removing : AcState::Live);
        }
        resetReservedStand();
    }
}

TEST_F(StandConflicts, ReservedStandIsClearedStaticFirst) {
    const ParkPos& stand = world.addStand("A1", airportPlace);
    changeReservedStand("A1");
    LiveAc& rolling = addParked("SWR1", stand, AcPhase::Parking);
    LiveAc& live = addParked("SWR2", stand);
    StaticAc& parked = world.addStatic("DLH1*", AcState::Live, stand);
    lf_clearUserStand();
    EXPECT_EQ(parked.state, AcState::Removing);
    EXPECT_EQ(live.state, AcState::Live) << "one at a time";
    lf_clearUserStand();
    EXPECT_EQ(live.state, AcState::Removing);
    EXPECT_EQ(rolling.state, AcState::Live);
    resetReservedStand();
}

struct LimitCase {
    const char* name;
    int liveParked, extra, statics, wanted;
    bool initialLoadOnly;
    bool liveGoes, staticGoes;
};

TEST_F(StandConflicts, ParkingLimit) {
    const LimitCase cases[] = {
        {"below the limit", 2, 1, 1, 4, false, false, false},
        {"live above the limit", 3, 1, 0, 3, false, true, false},
        {"live above the limit, load only", 3, 1, 0, 3, true, false, false},
        {"both above the limit", 3, 0, 1, 3, false, false, true},
        {"live alone above, with a static one", 3, 1, 1, 3, false, true, true},
        {"limit 0 spares live aircraft", 2, 0, 1, 0, false, false, true},
        {"limit 0 with nothing static", 2, 0, 0, 0, false, false, false},
    };
    for (const LimitCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        resetEngine(false);
        for (int i = 0; i < 20; ++i) {
            world.addStand("S" + std::to_string(i), offset(airportPlace, 90.0, 100.0 * i));
        }
        CUSTOM_PARKING_PERCENTAGE.set(100);
        CUSTOM_MAX_PARK.set(entry.wanted);
        INITIAL_LOAD_ONLY.set(entry.initialLoadOnly);
        nowStamp = DayHH{1, 4}.packed();
        std::uint32_t sid = 1;
        for (int i = 0; i < entry.liveParked; ++i) {
            LiveAc& ac = addParked("L" + std::to_string(i), *standBySid(sid++));
            // The second one has stood longest.
            ac.parkedSince = wallTicks100ns() - (i == 1 ? 90'000'000'000 : 10'000'000'000);
        }
        for (int i = 0; i < entry.statics; ++i) {
            world.addStatic("S" + std::to_string(i) + "*", AcState::Live, *standBySid(sid++));
        }
        lf_checkMaxPark(entry.extra);
        for (int i = 0; i < entry.liveParked; ++i) {
            EXPECT_EQ(liveAcs[static_cast<std::size_t>(i)].state,
                      entry.liveGoes && i == 1 ? AcState::Removing : AcState::Live);
        }
        if (entry.statics > 0) {
            EXPECT_EQ(staticAcs.front().state, entry.staticGoes ? AcState::Removing : AcState::Live);
        }
    }
}

TEST_F(StandConflicts, OldestStaticAircraftGoesFirstOverMidnightOfTheWeek) {
    world.addStand("A1", airportPlace);
    world.addStand("A2", offset(airportPlace, 90.0, 100.0));
    CUSTOM_MAX_PARK.set(0);
    nowStamp = DayHH{1, 4}.packed();
    StaticAc& monday = world.addStatic("MON*", AcState::Live, *standBySid(1));
    monday.parkStamp = {1, 0};
    StaticAc& sunday = world.addStatic("SUN*", AcState::Live, *standBySid(2));
    sunday.parkStamp = {7, 46};
    lf_checkMaxPark(0);
    EXPECT_EQ(sunday.state, AcState::Removing);
    EXPECT_EQ(monday.state, AcState::Live);
    // 4 and 6 half hours: 2.5 hours on average.
    EXPECT_FLOAT_EQ(statusValues().staticFitShown, 2.5F);
    WEEK.set(true);
    nowStamp = DayHH{1, 10}.packed();
    sunday.state = AcState::Requested;
    lf_checkMaxPark(0);
    EXPECT_EQ(sunday.state, AcState::Requested) << "the oldest has no object yet, nobody goes in its place";
    EXPECT_EQ(monday.state, AcState::Live);
    EXPECT_FLOAT_EQ(statusValues().staticFitShown, 2.5F) << "has no meaning over a week";
}

} // namespace
} // namespace kst::test
