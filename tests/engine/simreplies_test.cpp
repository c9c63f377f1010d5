// What the simulator answers, applied to the tables: creations, settling, heights, sizes, removals.

#include "catalogue/matching.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/simreplies.h"
#include "engine/tables.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

#include <limits>

namespace kst::test {
namespace {

constexpr LatLon place{47.6, 8.3};
constexpr int settlePasses = 201;

class SimReplies : public ::testing::Test {
protected:
    LiveAc& addRequested(bool airborne, AcPhase phase) {
        const TrackPoint point =
            airborne ? airPoint(place, 6000, 250, 90000) : groundPoint(place, 0.0, 90000);
        return world.addLive("SWR100", AcState::Requested, phase, {point, point});
    }

    static void reply(const SimCommand& command) {
        pushSimCommand(command);
        gf_SimCommands();
    }

    static void created(std::uint32_t hexid, std::uint32_t objectId, double heightAgl = 40.0) {
        reply({.objectId = objectId,
               .id = hexid,
               .kind = hexid > 10000 ? SimCommand::Kind::LiveCreated : SimCommand::Kind::StaticCreated,
               .value2 = heightAgl});
    }

    static void passes(int count) {
        for (int i = 0; i < count; ++i) {
            gf_SimCommands();
        }
    }

    EngineWorld world;
};

TEST_F(SimReplies, ObjectBecomesLiveAfterTwoSeconds) {
    LiveAc& ac = addRequested(true, AcPhase::Air);
    created(ac.hexid, 777, 4500.0);
    EXPECT_EQ(ac.objectId, 777U);
    EXPECT_EQ(ac.heightAgl, 4500.0);
    EXPECT_FALSE(ac.onGround);
    passes(settlePasses - 2);
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_EQ(settlingObjectCount(), 1U);
    passes(1);
    EXPECT_EQ(ac.state, AcState::Live);
    EXPECT_EQ(settlingObjectCount(), 0U);
}

TEST_F(SimReplies, ObjectOnTheGroundStandsOnIt) {
    nowStamp = DayHH{3, 20}.packed();
    LiveAc& taxiing = addRequested(false, AcPhase::Taxi);
    taxiing.dAlt = 0.3;
    taxiing.groundCountdown = 5;
    created(taxiing.hexid, 777);
    EXPECT_TRUE(taxiing.onGround);
    EXPECT_EQ(taxiing.dAlt, 0.0);
    EXPECT_EQ(taxiing.groundCountdown, 1);
    EXPECT_EQ(taxiing.parkStamp, DayHH{});

    LiveAc& parked = addRequested(false, AcPhase::Parked);
    created(parked.hexid, 778);
    EXPECT_EQ(parked.parkStamp, (DayHH{3, 20}));
}

TEST_F(SimReplies, RepliesForNobodyDoNothing) {
    created(31999, 777);
    EXPECT_EQ(settlingObjectCount(), 0U);
    reply({.objectId = 777, .kind = SimCommand::Kind::Removed});
    reply({.objectId = 777, .id = 1, .kind = SimCommand::Kind::HeightReport, .value1 = 9.0, .value2 = 9.0});
    reply({.objectId = 777, .kind = SimCommand::Kind::Sizes, .value1 = 9.0, .value2 = 0.0});
    reply({.id = 31999, .kind = SimCommand::Kind::CreationRefused});
    reply({.id = 7, .kind = SimCommand::Kind::CreationRefused});
    EXPECT_TRUE(liveAcs.empty());

    LiveAc& ac = addRequested(true, AcPhase::Air);
    created(ac.hexid, 2);
    EXPECT_EQ(ac.objectId, 0U) << "the simulator's own objects are not ours";
    reply({.objectId = 0, .kind = SimCommand::Kind::Removed});
    EXPECT_EQ(liveAcs.size(), 1U) << "a record without an object is not object 0";
}

TEST_F(SimReplies, RemovalAskedForDuringTheCreationFollowsIt) {
    LiveAc& ac = addRequested(true, AcPhase::Air);
    ac.removeWhenCreated = true;
    created(ac.hexid, 777);
    passes(settlePasses);
    EXPECT_EQ(ac.state, AcState::Removing);
}

TEST_F(SimReplies, ObjectRemovedWhileItSettlesIsNotBroughtBack) {
    LiveAc& ac = addRequested(true, AcPhase::Air);
    created(ac.hexid, 777);
    lf_removeAc(ac, Reason::LiveLimit);
    passes(settlePasses);
    EXPECT_EQ(ac.state, AcState::Removing);
    EXPECT_EQ(settlingObjectCount(), 0U);
    reply({.objectId = 777, .kind = SimCommand::Kind::Removed});
    EXPECT_TRUE(liveAcs.empty());
}

// The same identity heard again while the old object's settling is still counted.
TEST_F(SimReplies, OldObjectDoesNotSettleForANewRecord) {
    LiveAc& first = addRequested(true, AcPhase::Air);
    const std::uint32_t hexid = first.hexid;
    created(hexid, 777);
    passes(100);
    reply({.objectId = 777, .kind = SimCommand::Kind::Removed});
    ASSERT_TRUE(liveAcs.empty());
    EXPECT_EQ(reasonTotal(Reason::RemovedBySimulator), 1U);
    LiveAc& second = addRequested(true, AcPhase::Air);
    second.hexid = hexid;
    created(hexid, 778);
    passes(settlePasses - 50);
    EXPECT_EQ(second.state, AcState::Requested);
    passes(50);
    EXPECT_EQ(second.state, AcState::Live);
}

struct HeightCase {
    const char* name;
    bool onGround, reportedOnGround;
    AcPhase phase;
    int groundCountdown;
    bool altitudeTaken, onGroundThen;
};

TEST_F(SimReplies, HeightReports) {
    const HeightCase cases[] = {
        {"in flight", false, false, AcPhase::Air, 1, false, false},
        {"taxiing", true, true, AcPhase::Taxi, 1, true, true},
        {"taxiing, wheels off in the report", true, false, AcPhase::Taxi, 1, true, true},
        {"rotating", false, true, AcPhase::TakeOff, 2, true, false},
        {"climbing out, wheels still on", false, true, AcPhase::TakeOff, 1, false, false},
        {"touchdown", false, true, AcPhase::Air, 1, true, true},
    };
    for (const HeightCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& ac = world.addLive("SWR100", AcState::Live, entry.phase, {airPoint(place, 1500, 130, 90000)});
        ac.onGround = entry.onGround;
        ac.groundCountdown = entry.groundCountdown;
        ac.cgHeightFt = 11.0;
        reply({.objectId = ac.objectId,
               .id = entry.reportedOnGround ? 1U : 0U,
               .kind = SimCommand::Kind::HeightReport,
               .value1 = 1416.0,
               .value2 = 123.0});
        EXPECT_EQ(ac.heightAgl, 123.0);
        EXPECT_EQ(ac.simState.altFt, entry.altitudeTaken ? 1427.0 : 1500.0);
        EXPECT_EQ(ac.onGround, entry.onGroundThen);
    }
}

TEST_F(SimReplies, HeightThatIsNoNumberIsIgnored) {
    LiveAc& ac = world.addLive("SWR100", AcState::Live, AcPhase::Taxi, {groundPoint(place, 9.0, 90000)});
    ac.simState.altFt = 1427.0;
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        reply({.objectId = ac.objectId, .id = 1, .kind = SimCommand::Kind::HeightReport, .value1 = value});
        reply({.objectId = ac.objectId, .id = 1, .kind = SimCommand::Kind::HeightReport, .value2 = value});
    }
    EXPECT_EQ(ac.simState.altFt, 1427.0);
    EXPECT_EQ(ac.heightAgl, 2500.0);
}

struct SizeCase {
    double cgFt, pitchDeg;
    double cgThen, pitchThen;
};

TEST_F(SimReplies, OnlyPlausibleSizesAreTaken) {
    constexpr double usual = 0.7;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const SizeCase cases[] = {
        {10.5, 0.3, 10.5, 0.3},    {1.0, 0.0, 1.0, 0.0},    {35.0, 2.5, 35.0, 2.5},
        {36.0, 2.6, 6.0, usual},   {0.5, -1.0, 6.0, usual}, {10.5, -0.99, 10.5, -0.99},
        {10.5, -8.0, 10.5, usual}, {nan, nan, 6.0, usual},
    };
    for (const SizeCase& entry : cases) {
        SCOPED_TRACE(entry.cgFt);
        SCOPED_TRACE(entry.pitchDeg);
        resetEngine(false);
        LiveAc& ac = world.addLive("SWR100", AcState::Live, AcPhase::Taxi, {groundPoint(place, 9.0, 90000)});
        ac.cgHeightFt = 6.0;
        reply({.objectId = ac.objectId,
               .kind = SimCommand::Kind::Sizes,
               .value1 = entry.cgFt,
               .value2 = entry.pitchDeg * radPerDeg});
        EXPECT_EQ(ac.cgHeightFt, entry.cgThen);
        EXPECT_NEAR(ac.staticPitch * degPerRad, entry.pitchThen, 1e-9);
    }
}

TEST_F(SimReplies, RefusedCreationFreesRecordStandAndTitle) {
    ParkPos& stand = world.addStand("A1", place);
    LiveAc& refused = addRequested(false, AcPhase::Parked);
    refused.liveryTitle = "A320 generic";
    refused.sid = stand.sid;
    stand.liveParked = true;
    const std::uint32_t hexid = refused.hexid;
    LiveAc& last = world.addLive("SWR200", AcState::Live, AcPhase::Air, {airPoint(place, 6000, 250, 90000)});
    const std::uint32_t lastHexid = last.hexid;
    reply({.id = hexid, .kind = SimCommand::Kind::CreationRefused});
    ASSERT_EQ(liveAcs.size(), 1U);
    EXPECT_EQ(liveAcs.front().hexid, lastHexid);
    EXPECT_TRUE(gf_isFailedTitle("A320 generic"));
    EXPECT_FALSE(stand.liveParked);
    EXPECT_EQ(reasonTotal(Reason::CreationRefused), 1U);
}

TEST_F(SimReplies, StaticAircraftSettlesAndLeaves) {
    const ParkPos& stand = world.addStand("A1", place);
    StaticAc& ac = world.addStatic("SWR1*", AcState::Requested, stand);
    StaticAc& unwanted = world.addStatic("SWR2*", AcState::Requested, stand);
    unwanted.removeWhenCreated = true;
    created(ac.hexid, 900);
    created(unwanted.hexid, 901);
    passes(settlePasses);
    EXPECT_EQ(ac.state, AcState::Live);
    EXPECT_EQ(ac.objectId, 900U);
    EXPECT_EQ(unwanted.state, AcState::Removing);

    reply({.objectId = 901, .kind = SimCommand::Kind::Removed});
    ASSERT_EQ(staticAcs.size(), 1U);
    EXPECT_EQ(staticAcs.front().callsign, "SWR1*");
    reply({.id = staticAcs.front().hexid, .kind = SimCommand::Kind::CreationRefused});
    EXPECT_TRUE(staticAcs.empty());
}

TEST_F(SimReplies, RemovedAircraftWaitsForNoCoupledCheck) {
    LiveAc& ac =
        world.addLive("SWR100", AcState::Removing, AcPhase::Air, {airPoint(place, 6000, 250, 90000)});
    spawnedIds.push_back(ac.hexid);
    spawnedIds.push_back(31999);
    reply({.objectId = ac.objectId, .kind = SimCommand::Kind::Removed});
    EXPECT_EQ(spawnedIds, std::list<std::uint32_t>{31999}) << "it would hold up all that come after it";
}

} // namespace
} // namespace kst::test
