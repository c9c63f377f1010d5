// The pass over all aircraft, the tables under it, and what ends every aircraft at once.

#include "core/display.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr LatLon place{47.6, 8.3};

class LivePass : public ::testing::Test {
protected:
    LiveAc& add(std::string_view callsign, AcState state, AcPhase phase = AcPhase::Air) {
        return world.addLive(callsign, state, phase,
                             {airPoint(place, 6000, 250, 90000), airPoint(place, 6000, 250, 90500)});
    }

    EngineWorld world;
};

TEST_F(LivePass, ErasingInThePassKeepsTheOrderOfTheOthers) {
    for (const char* callsign : {"A", "B", "C", "D", "E"}) {
        add(callsign, AcState::Live);
    }
    for (const std::size_t i : {std::size_t{1}, std::size_t{2}, std::size_t{4}}) {
        liveAcs[i].state = AcState::Buffered;
        liveAcs[i].track.clear();
    }
    spawnedIds = {liveAcs[1].hexid, liveAcs[3].hexid};
    const std::uint32_t kept = liveAcs[3].hexid;
    lf_updateAllLiveAc();
    ASSERT_EQ(liveAcs.size(), 2U);
    EXPECT_EQ(liveAcs[0].callsign, "A");
    EXPECT_EQ(liveAcs[1].callsign, "D");
    EXPECT_EQ(liveAcs[1].track.size(), 2U);
    EXPECT_EQ(spawnedIds, std::list<std::uint32_t>{kept});
}

TEST_F(LivePass, BrokenRecordsAreRemovedAndThePassGoesOn) {
    LiveAc& empty = add("EMPTY", AcState::Live);
    empty.track.clear();
    LiveAc& noObject = add("NOOBJECT", AcState::Live);
    noObject.objectId = 0;
    LiveAc& good = add("GOOD", AcState::Live);
    good.dLat = 0.001;
    lf_updateAllLiveAc();
    EXPECT_EQ(empty.state, AcState::Removing);
    EXPECT_EQ(empty.reason, Reason::EmptyTrack);
    EXPECT_EQ(noObject.state, AcState::Removing);
    EXPECT_EQ(noObject.reason, Reason::NoObjectId);
    EXPECT_GT(good.simState.lat, place.lat);
}

TEST_F(LivePass, OnlyLiveAircraftMove) {
    for (const AcState state : {AcState::Requested, AcState::Respawning, AcState::Removing}) {
        LiveAc& ac = add("SWR1", state);
        ac.dLat = 0.001;
        lf_updateAllLiveAc();
        EXPECT_EQ(ac.simState.lat, place.lat);
        EXPECT_EQ(ac.state, state);
    }
}

TEST_F(LivePass, StandingAircraftShowsNoSpeed) {
    LiveAc& ac = add("SWR1", AcState::Live, AcPhase::Taxi);
    for (TrackPoint& point : ac.track) {
        point.airborne = false;
        point.stationary = true;
        point.gsKt = 0.0;
    }
    ac.onGround = true;
    ac.airspeedTarget = 12.0;
    ac.dLat = 0.001;
    ac.track.front().dueTick = updateCount;
    lf_updateAllLiveAc();
    EXPECT_EQ(ac.simState.airspeedKt, 0.0);
    EXPECT_EQ(ac.simState.lat, place.lat);
}

TEST_F(LivePass, TargetGivenUpBetweenPassesDoesNotEnter) {
    LiveAc& ac = add("SWR1", AcState::Buffered, AcPhase::Unknown);
    world.setTick(90000);
    lf_removeAc(ac, Reason::LinkLost);
    EXPECT_TRUE(ac.erase);
    lf_updateAllLiveAc();
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_TRUE(spawnList.empty());
}

TEST_F(LivePass, AircraftIsRemovedOnceForItsFirstReason) {
    ParkPos& stand = world.addStand("A1", place);
    stand.liveParked = true;
    LiveAc& ac = add("SWR1", AcState::Live, AcPhase::Parked);
    ac.sid = stand.sid;
    lf_removeAc(ac, Reason::ConflictWithUser);
    EXPECT_FALSE(stand.liveParked);
    stand.liveParked = true; // taken by the next one meanwhile
    lf_removeAc(ac, Reason::LiveLimit);
    EXPECT_EQ(ac.reason, Reason::ConflictWithUser);
    EXPECT_EQ(reasonTotal(Reason::LiveLimit), 0U);
    EXPECT_TRUE(stand.liveParked);
}

TEST_F(LivePass, StaticAircraftNeverFreesTheStandOfALiveOne) {
    ParkPos& stand = world.addStand("A1", place);
    stand.liveParked = true;
    lf_removeAc(world.addStatic("SWR1*", AcState::Live, stand), Reason::ConflictWithLive);
    EXPECT_TRUE(stand.liveParked);
}

TEST_F(LivePass, LostLinkRemovesAircraftInEveryState) {
    add("BUFFERED", AcState::Buffered);
    add("LIVE", AcState::Live);
    LiveAc& cleared = add("CLEARED", AcState::Requested);
    spawnList.push_back(cleared.hexid);
    LiveAc& queued = add("QUEUED", AcState::Requested);
    queueLiveCreation({.initPos = {}, .tailNumber = "QUEUED", .title = {}, .hexid = queued.hexid});
    add("SENT", AcState::Requested);
    LiveAc& settling = add("SETTLING", AcState::Requested);
    settling.objectId = 777;
    add("RESPAWNING", AcState::Respawning);

    lf_removeAllLive(Reason::LinkLost);
    EXPECT_TRUE(spawnList.empty());
    EXPECT_EQ(liveCreateQueueSize(), 0U);
    EXPECT_EQ(reasonTotal(Reason::LinkLost), 7U);
    lf_updateAllLiveAc();
    ASSERT_EQ(liveAcs.size(), 4U) << "what had no object yet is gone at once";
    for (const LiveAc& ac : liveAcs) {
        if (ac.callsign == "SENT") {
            EXPECT_EQ(ac.state, AcState::Requested);
            EXPECT_TRUE(ac.removeWhenCreated);
        } else {
            EXPECT_EQ(ac.state, AcState::Removing) << ac.callsign;
        }
    }
}

TEST_F(LivePass, CountsTellMovingParkedAndStatic) {
    ParkPos& stand = world.addStand("A1", place);
    add("SWR1", AcState::Live);
    add("SWR2", AcState::Live, AcPhase::Taxi);
    add("SWR3", AcState::Live, AcPhase::Parked);
    add("SWR4", AcState::Requested);
    add("SWR5", AcState::Removing, AcPhase::Parked);
    world.addStatic("S1*", AcState::Live, stand);
    world.addStatic("S2*", AcState::Requested, stand);
    lf_refreshCounts();
    const StatusValues status = statusValues();
    EXPECT_EQ(status.liveShown, 2U);
    EXPECT_EQ(status.parkedLiveShown, 1U);
    EXPECT_EQ(status.parkedStaticShown, 1U);
}

TEST_F(LivePass, UnchangedCountsRepaintNothing) {
    struct Sink : DisplaySink {
        std::vector<Band> bands;
        void repaint(Band band) override { bands.push_back(band); }
        void showParameter(const Parameter&) override {}
        void blankParameter(const Parameter&) override {}
        void enableControl(int, bool) override {}
        void applyAlwaysOnTop() override {}
        void postStartWorker() override {}
        void postQuit() override {}
    } sink;
    resetDisplay();
    lf_refreshCounts();
    setDisplaySink(&sink);
    lf_refreshCounts();
    EXPECT_TRUE(sink.bands.empty());
    add("SWR1", AcState::Live);
    lf_refreshCounts();
    EXPECT_EQ(sink.bands, std::vector<Band>{Band::Status});
    sink.bands.clear();
    liveAcs.front().phase = AcPhase::Parked;
    lf_refreshCounts();
    EXPECT_EQ(sink.bands, (std::vector<Band>{Band::Status, Band::Park}));
    setDisplaySink(nullptr);
}

TEST_F(LivePass, RestartKeepsWhatOutlivesARun) {
    add("SWR1", AcState::Live);
    unmatchedTargets.insert("PVT ZZZZ HB-ABC");
    ghostCallsigns.emplace_back("SWR1_");
    liveryCache[20001] = "A320 generic";
    spawnedIds.push_back(20001);
    resetEngine(true);
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_TRUE(spawnedIds.empty());
    EXPECT_TRUE(liveryCache.empty());
    EXPECT_EQ(unmatchedTargets.size(), 1U);
    EXPECT_EQ(ghostCallsigns.size(), 1U);
    resetEngine(false);
    EXPECT_TRUE(unmatchedTargets.empty());
    EXPECT_TRUE(ghostCallsigns.empty());
}

} // namespace
} // namespace kst::test
