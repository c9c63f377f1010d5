// Who gives way to the user, to the live limit, and to a live aircraft that was shown as a static one.

#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr LatLon place{47.46, 8.55};

class Conflicts : public ::testing::Test {
protected:
    LiveAc& addOnGround(LatLon position, AcPhase phase = AcPhase::Taxi,
                        std::string_view callsign = "SWR100") {
        return world.addLive(callsign, AcState::Live, phase, {groundPoint(position, 10.0, 90000)});
    }
    LiveAc& addInAir(LatLon position, double altFt, std::string_view callsign = "SWR100") {
        return world.addLive(callsign, AcState::Live, AcPhase::Air, {airPoint(position, altFt, 250, 90000)});
    }

    EngineWorld world;
};

struct AirCase {
    const char* name;
    bool onGround;
    double bearingDeg, metres; ///< of the aircraft, from a user who flies north
    double userAglFt;
    double altitudeAboveUserFt;
    double headingDeg; ///< of the aircraft
    AcState state;
    bool removed;
};

TEST_F(Conflicts, UserInTheAir) {
    const AirCase cases[] = {
        {"on the runway ahead", true, 0.0, 1000, 499, 0, 0, AcState::Live, true},
        {"user too high", true, 0.0, 1000, 500, 0, 0, AcState::Live, false},
        {"1.1 nm ahead", true, 0.0, 2040, 300, 0, 0, AcState::Live, false},
        {"14 m beside the line", true, 0.8, 1000, 300, 0, 0, AcState::Live, true},
        {"17 m beside the line", true, 1.0, 1000, 300, 0, 0, AcState::Live, false},
        {"17 m on the other side", true, 359.0, 1000, 300, 0, 0, AcState::Live, false},
        {"head-on", false, 0.0, 7000, 3000, 900, 180, AcState::Live, true},
        {"head-on below", false, 0.0, 7000, 3000, -999, 180, AcState::Live, true},
        {"1,000 ft above", false, 0.0, 7000, 3000, 1000, 180, AcState::Live, false},
        {"4.1 nm away", false, 0.0, 7600, 3000, 0, 180, AcState::Live, false},
        {"crossing ahead", false, 0.0, 7000, 3000, 0, 90, AcState::Live, false},
        {"passes 180 m beside", false, 0.0, 7000, 3000, 0, 181.5, AcState::Live, true},
        {"passes 240 m beside", false, 0.0, 7000, 3000, 0, 182.0, AcState::Live, false},
        {"passes 240 m on the other side", false, 0.0, 7000, 3000, 0, 178.0, AcState::Live, false},
        {"not yet there", false, 0.0, 7000, 3000, 0, 180, AcState::Requested, false},
        {"leaving already", true, 0.0, 1000, 300, 0, 0, AcState::Removing, false},
    };
    for (const AirCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        world.placeUser(place, false, 4000.0, 0.0);
        userData.heightAglFt = entry.userAglFt;
        const LatLon there = offset(place, entry.bearingDeg, entry.metres);
        LiveAc& ac =
            entry.onGround ? addOnGround(there) : addInAir(there, 4000.0 + entry.altitudeAboveUserFt);
        ac.state = entry.state;
        ac.simState.heading = entry.headingDeg * radPerDeg;
        EXPECT_EQ(lf_checkAirCollision(ac), entry.removed);
        EXPECT_EQ(ac.reason, entry.removed ? Reason::ConflictWithUser : Reason::None);
        EXPECT_EQ(ac.state, entry.removed ? AcState::Removing : entry.state);
    }
}

TEST_F(Conflicts, OneAircraftASecondMakesWayInTheAir) {
    world.placeUser(place, false, 4000.0, 0.0);
    LiveAc& first = addInAir(offset(place, 0.0, 3000), 4000.0, "SWR1");
    LiveAc& second = addInAir(offset(place, 0.0, 4000), 4000.0, "SWR2");
    lf_everySecondTraffic();
    EXPECT_EQ(first.state, AcState::Removing);
    EXPECT_EQ(second.state, AcState::Live);
    lf_everySecondTraffic();
    EXPECT_EQ(second.state, AcState::Removing);
}

// The user's aircraft is unknown here and taken for the largest, half a B77W's 64.8 m; half an A320 is 17.9
// m.
TEST_F(Conflicts, UserOnTheGround) {
    const double touching = (32.4 + 17.9) * 1.15;
    const double touchingStatic = (32.4 + 17.9) * 1.1;
    world.placeUser(place, true);
    LiveAc& clear = addOnGround(offset(place, 90.0, touching + 0.5), AcPhase::Taxi, "SWR1");
    LiveAc& over = addInAir(place, 5000.0, "SWR2");
    LiveAc& close = addOnGround(offset(place, 90.0, touching - 0.5), AcPhase::Parked, "SWR3");
    StaticAc& parked = world.addStatic("SWR4*", AcState::Live,
                                       world.addStand("A1", offset(place, 0.0, touchingStatic - 0.5)));
    StaticAc& parkedClear = world.addStatic("SWR5*", AcState::Live,
                                            world.addStand("A2", offset(place, 0.0, touchingStatic + 0.5)));

    lf_everySecondTraffic();
    EXPECT_EQ(close.state, AcState::Removing);
    EXPECT_EQ(clear.state, AcState::Live);
    EXPECT_EQ(over.state, AcState::Live);
    EXPECT_EQ(parked.state, AcState::Live) << "one at a time, live aircraft first";

    lf_everySecondTraffic();
    EXPECT_EQ(parked.state, AcState::Live) << "a user who stands still was there first";
    world.placeUser(offset(place, 0.0, 0.1), true);
    lf_everySecondTraffic();
    EXPECT_EQ(parked.state, AcState::Removing);
    EXPECT_EQ(parkedClear.state, AcState::Live);
    EXPECT_EQ(reasonTotal(Reason::ConflictWithUser), 2U);
}

TEST_F(Conflicts, SwitchedOffAvoidanceLeavesEveryone) {
    COLLISION_USER_GND.set(false);
    COLLISION_USER_AIR.set(false);
    LiveAc& ac = addOnGround(place);
    world.placeUser(place, true);
    lf_everySecondTraffic();
    world.placeUser(place, false);
    lf_everySecondTraffic();
    EXPECT_EQ(ac.state, AcState::Live);
}

struct PathCase {
    const char* name;
    double bearingDeg, metres, altFt, targetHeadingDeg;
    bool inPath;
};

TEST_F(Conflicts, ApproachPathOfTheUser) {
    world.placeUser(place, false, 4000.0, 0.0);
    const PathCase cases[] = {
        {"5 nm north", 0.0, 9260, 4000, 0, true},
        {"6.1 nm north", 0.0, 11300, 4000, 0, false},
        {"2,900 ft above", 0.0, 9260, 6900, 0, true},
        {"3,000 ft above", 0.0, 9260, 7000, 0, false},
        {"5 nm east, heading north", 90.0, 9260, 4000, 0, false},
        {"5 nm west, heading north", 270.0, 9260, 4000, 0, false},
        {"5 nm west, heading east", 270.0, 9260, 4000, 90, true},
        {"0.6 nm west, heading north", 270.0, 1111, 4000, 0, true},
    };
    for (const PathCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& ac = addInAir(offset(place, entry.bearingDeg, entry.metres), entry.altFt);
        ac.targetHeading = entry.targetHeadingDeg * radPerDeg;
        EXPECT_EQ(lf_inUserApproachPath(ac), entry.inPath);
    }
}

TEST_F(Conflicts, LoweredLimitRemovesTheFarthest) {
    world.placeUser(place, true);
    for (const int km : {10, 80, 20, 70, 30, 60, 40, 50}) {
        addInAir(offset(place, 0.0, 1000.0 * km), 4000.0, "KM" + std::to_string(km));
    }
    MAX_LIVE.set(-1);
    lf_trimLiveCount();
    EXPECT_EQ(reasonTotal(Reason::LiveLimit), 0U);
    MAX_LIVE.set(5);
    lf_trimLiveCount();
    for (const LiveAc& ac : liveAcs) {
        const bool far = ac.callsign == "KM80" || ac.callsign == "KM70" || ac.callsign == "KM60";
        EXPECT_EQ(ac.state, far ? AcState::Removing : AcState::Live) << ac.callsign;
    }
    EXPECT_EQ(reasonTotal(Reason::LiveLimit), 3U);
}

struct FlightCase {
    const char* name;
    std::string callsign, coupled, regcode; ///< live
    std::string staticPrimary, staticCoupled, staticRegcode;
    AcState staticState;
    bool same;
};

TEST_F(Conflicts, SameFlightIsNotShownTwice) {
    const ParkPos& stand = world.addStand("A1", place);
    const FlightCase cases[] = {
        {"same registration", "SWR1", "", "HB-A", "SWR9", "", "HB-A", AcState::Live, true},
        {"no registrations", "SWR1", "", "", "SWR9", "", "", AcState::Live, false},
        {"same callsign", "SWR1", "", "HB-A", "SWR1", "", "HB-B", AcState::Live, true},
        {"coupled of the static", "SWR1", "", "", "SWR9", "SWR1", "", AcState::Live, true},
        {"coupled of the live", "SWR1", "SWR2", "", "SWR2", "", "", AcState::Live, true},
        {"coupled of both", "SWR1", "SWR2", "", "SWR9", "SWR2", "", AcState::Live, true},
        {"no coupled callsigns", "SWR1", "", "", "SWR9", "", "", AcState::Live, false},
        {"ghost of the static", "SWR1_", "", "", "SWR1", "", "", AcState::Live, true},
        {"one letter longer is no ghost", "SWR12", "", "", "SWR1", "", "", AcState::Live, false},
        {"still being created", "SWR1", "", "HB-A", "SWR1", "", "HB-A", AcState::Requested, false},
    };
    for (const FlightCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        liveAcs.clear();
        staticAcs.clear();
        spawnedIds.clear();
        LiveAc& live = addInAir(offset(place, 0.0, 50000), 9000.0, entry.callsign);
        live.coupledCallsign = entry.coupled;
        live.regcode = entry.regcode;
        StaticAc& parked = world.addStatic("X*", entry.staticState, stand);
        parked.primaryCallsign = entry.staticPrimary;
        parked.coupledCallsign = entry.staticCoupled;
        parked.regcode = entry.staticRegcode;
        spawnedIds.push_back(live.hexid);
        lf_everySecondTraffic();
        EXPECT_EQ(parked.state, entry.same ? AcState::Removing : entry.staticState);
        EXPECT_TRUE(spawnedIds.empty());
    }
}

TEST_F(Conflicts, OneSpawnedTargetIsCheckedASecond) {
    LiveAc& first = addInAir(place, 9000.0, "SWR1");
    LiveAc& second = addInAir(place, 9000.0, "SWR2");
    world.placeUser(offset(place, 0.0, 90000), true);
    spawnedIds = {first.hexid, second.hexid};
    lf_everySecondTraffic();
    EXPECT_EQ(spawnedIds, std::list<std::uint32_t>{second.hexid});
    EXPECT_TRUE(first.coupledChecked);
    EXPECT_FALSE(second.coupledChecked);
    spawnedIds.push_front(31999);
    lf_everySecondTraffic();
    EXPECT_EQ(spawnedIds.size(), 2U) << "one that is not in the table waits";
}

TEST_F(Conflicts, TwinsByCallsignOrRegistrationGo) {
    const ParkPos& stand = world.addStand("A1", place);
    addOnGround(offset(place, 0.0, 3000)).regcode = "HB-A";
    StaticAc& byCallsign = world.addStatic("SWR100*", AcState::Live, stand);
    lf_removeStaticTwins();
    EXPECT_EQ(byCallsign.state, AcState::Removing);
    EXPECT_EQ(liveAcs.front().state, AcState::Live) << "never the other way round";

    staticAcs.clear();
    StaticAc& longer = world.addStatic("SWR1000*", AcState::Live, stand);
    StaticAc& byRegistration = world.addStatic("SWR9*", AcState::Live, stand);
    byRegistration.regcode = "HB-A";
    StaticAc& again = world.addStatic("SWR8*", AcState::Live, stand);
    again.regcode = "HB-A";
    lf_removeStaticTwins();
    EXPECT_EQ(longer.state, AcState::Live);
    EXPECT_EQ(byRegistration.state, AcState::Removing);
    EXPECT_EQ(again.state, AcState::Live) << "the first one alone";

    liveAcs.front().onGround = false;
    lf_removeStaticTwins();
    EXPECT_EQ(again.state, AcState::Live) << "an airborne aircraft has no twin to remove";
}

struct RollingCase {
    const char* name;
    AcPhase phase;
    bool holding, moved, avoid;
    double metres;
    bool removed;
};

// Two A320 of 35.8 m touch within 39.4 m.
TEST_F(Conflicts, RollingAircraftClearsStaticOnes) {
    const RollingCase cases[] = {
        {"taxiing, touching", AcPhase::Taxi, false, true, true, 39.0, true},
        {"taxiing, clear", AcPhase::Taxi, false, true, true, 39.8, false},
        {"rolling onto its stand", AcPhase::Parking, false, true, true, 39.0, true},
        {"parked", AcPhase::Parked, false, true, true, 39.0, false},
        {"pushed back", AcPhase::PushBack, false, true, true, 39.0, false},
        {"holding", AcPhase::Taxi, true, true, true, 39.0, false},
        {"not moved since the last check", AcPhase::Taxi, false, false, true, 39.0, false},
        {"switched off", AcPhase::Taxi, false, true, false, 39.0, false},
    };
    const ParkPos& stand = world.addStand("A1", place);
    world.placeUser(offset(place, 0.0, 90000), true);
    for (const RollingCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        COLLISION_LIVE_PARKED_GND.set(entry.avoid);
        LiveAc& ac = addOnGround(offset(place, 90.0, entry.metres), entry.phase);
        ac.holding = entry.holding;
        if (!entry.moved) {
            ac.checkedLat = ac.simState.lat;
            ac.checkedLon = ac.simState.lon;
        }
        StaticAc& parked = world.addStatic("X*", AcState::Live, stand);
        lf_everySecondTraffic();
        EXPECT_EQ(parked.state, entry.removed ? AcState::Removing : AcState::Live);
    }
}

TEST_F(Conflicts, BlockedCallsignGoesOnceAsked) {
    world.placeUser(offset(place, 0.0, 90000), true);
    LiveAc& other = addInAir(place, 9000.0, "SWR1");
    LiveAc& blocked = addInAir(place, 9000.0, "SWR2");
    BLOCK_CALLSIGN.set("SWR2");
    lf_everySecondTraffic();
    EXPECT_EQ(blocked.state, AcState::Live);
    blockCallsignDue = true;
    lf_everySecondTraffic();
    EXPECT_EQ(blocked.state, AcState::Removing);
    EXPECT_EQ(blocked.reason, Reason::BlockedByUser);
    EXPECT_EQ(other.state, AcState::Live);
    EXPECT_FALSE(blockCallsignDue);
}

TEST_F(Conflicts, FlushRemovesAllStaticAircraft) {
    const ParkPos& stand = world.addStand("A1", place);
    world.addStatic("LIVE*", AcState::Live, stand);
    const std::uint32_t queued = world.addStatic("QUEUED*", AcState::Requested, stand).hexid;
    const std::uint32_t sent = world.addStatic("SENT*", AcState::Requested, stand).hexid;
    queueStaticCreation({.initPos = {}, .tailNumber = "QUEUED*", .title = {}, .hexid = queued});
    INITIAL_LOAD_ONLY.set(false);
    flushStaticDue = true;
    lf_everySecondTraffic();
    EXPECT_FALSE(flushStaticDue);
    EXPECT_TRUE(INITIAL_LOAD_ONLY);
    EXPECT_EQ(staticCreateQueueSize(), 0U);
    ASSERT_EQ(staticAcs.size(), 2U) << "the queued one is gone at once";
    EXPECT_EQ(staticByHexid(queued), nullptr);
    EXPECT_EQ(staticAcs.front().state, AcState::Removing);
    EXPECT_TRUE(staticByHexid(sent)->removeWhenCreated);
    EXPECT_EQ(reasonTotal(Reason::FlushedByUser), 3U);
}

TEST_F(Conflicts, CancelledCreationKeepsTheOrderOfTheOthers) {
    const ParkPos& stand = world.addStand("A1", place);
    for (const char* callsign : {"A*", "B*", "C*"}) {
        const std::uint32_t hexid = world.addStatic(callsign, AcState::Requested, stand).hexid;
        queueStaticCreation({.initPos = {}, .tailNumber = callsign, .title = {}, .hexid = hexid});
    }
    EXPECT_TRUE(lf_cancelStaticCreation("B*"));
    EXPECT_FALSE(lf_cancelStaticCreation("B*"));
    EXPECT_EQ(staticAcs.size(), 2U);
    EXPECT_EQ(staticCreateQueueSize(), 2U);
    EXPECT_TRUE(lf_cancelStaticCreation("C*"));
    EXPECT_EQ(staticAcs.front().callsign, "A*");
}

} // namespace
} // namespace kst::test
