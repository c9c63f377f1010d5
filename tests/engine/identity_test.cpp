// What changes a target's identity: new callsigns, routes, ghosts, and the respawn that follows.

#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/spawning.h"
#include "engine/tables.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr LatLon place{47.6, 8.3};

class Identity : public ::testing::Test {
protected:
    Identity() { world.placeUser(offset(place, 0.0, 100000.0), true); }

    std::vector<TrackPoint> track(double altFt = 6000.0) const {
        return {airPoint(place, altFt, 250.0, updateCount + 100),
                airPoint(offset(place, 90.0, 5000.0), altFt, 250.0, updateCount + 600)};
    }

    LiveAc& addFlying(std::string_view callsign = "SWR100") {
        return world.addLive(callsign, AcState::Live, AcPhase::Air, track());
    }

    EngineWorld world;
};

struct MergeCase {
    const char* name;
    std::string origin, destination;       ///< of the record
    std::string newOrigin, newDestination; ///< of the feed
    std::string originThen, destinationThen;
    bool respawns;
};

TEST_F(Identity, RoutesAreMerged) {
    world.openAirport();
    const MergeCase cases[] = {
        {"nothing new", "EGLL", "LSZH", "EGLL", "LSZH", "EGLL", "LSZH", false},
        {"feed says nothing", "EGLL", "LSZH", "", "", "EGLL", "LSZH", false},
        {"first destination", "EGLL", "", "EGLL", "LSZH", "EGLL", "LSZH", true},
        {"first origin", "", "LSZH", "EGLL", "LSZH", "EGLL", "LSZH", true},
        {"first route", "", "", "EGLL", "LSZH", "EGLL", "LSZH", true},
        {"only destination differs", "EGLL", "LSZH", "EGLL", "LFSB", "EGLL", "LSZH", false},
        {"only origin differs", "EGLL", "LSZH", "EGKK", "LSZH", "EGLL", "LSZH", false},
        {"both differ", "EGLL", "LSZH", "LSZH", "EGKK", "LSZH", "EGKK", true},
        {"return to the origin here", "LSZH", "EGLL", "EGLL", "LSZH", "LSZH", "EGLL", false},
        {"return to the origin elsewhere", "EGLL", "LSZH", "LSZH", "EGLL", "LSZH", "EGLL", true},
    };
    for (const MergeCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& ac = addFlying();
        ac.origin = entry.origin;
        ac.destination = entry.destination;
        const bool add = lf_updateIdentity(
            ac,
            feedMessage({.hexid = ac.hexid, .origin = entry.newOrigin, .destination = entry.newDestination}));
        EXPECT_EQ(ac.origin, entry.originThen);
        EXPECT_EQ(ac.destination, entry.destinationThen);
        EXPECT_EQ(ac.state, entry.respawns ? AcState::Respawning : AcState::Live);
        EXPECT_EQ(add, !entry.respawns) << "a position of a leaving object must not enter its track";
    }
}

TEST_F(Identity, NewRouteOnTheGroundEndsThePushedOutWait) {
    for (const AcPhase phase : {AcPhase::AfterPush, AcPhase::Parked, AcPhase::Parking}) {
        resetEngine(false);
        GUID_CHANGES.set(false);
        LiveAc& ac = world.addLive("SWR100", AcState::Live, phase, {groundPoint(place, 0.0, 11000)});
        ac.origin = "EGLL";
        ac.destination = "LSZH";
        ac.simState.heading = 1.25;
        EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.origin = "LSZH", .destination = "EGKK"})));
        const bool released = phase == AcPhase::AfterPush;
        EXPECT_EQ(ac.phase, released ? AcPhase::Taxi : phase);
        EXPECT_EQ(ac.targetHeading, released ? 1.25 : 0.0);
    }
}

struct FrozenCase {
    const char* name;
    AcState state;
    AcPhase phase;
    bool departing, landing;
    std::int32_t reckonLeft;
};

TEST_F(Identity, StaysFrozenWhileItMatters) {
    const FrozenCase cases[] = {
        {"take-off", AcState::Live, AcPhase::TakeOff, true, false, 0},
        {"approach", AcState::Live, AcPhase::Air, false, true, 0},
        {"push back", AcState::Live, AcPhase::PushBack, false, false, 0},
        {"coasting", AcState::Live, AcPhase::Air, false, false, 2},
        {"being created", AcState::Requested, AcPhase::Air, false, false, 0},
    };
    for (const FrozenCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& ac = world.addLive("SWR100", entry.state, entry.phase, track());
        ac.departing = entry.departing;
        ac.landing = entry.landing;
        ac.reckonLeft = entry.reckonLeft;
        EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.callsign = "SWR200", .destination = "EGLL"})));
        EXPECT_EQ(ac.callsign, "SWR100");
        EXPECT_EQ(ac.destination, "");
        EXPECT_EQ(ac.state, entry.state);
    }
}

TEST_F(Identity, BufferedTargetTakesWhatTheFeedSaysLast) {
    LiveAc& ac = world.addLive("SWR100", AcState::Buffered, AcPhase::Unknown, track());
    ac.origin = "EGLL";
    ac.regcode = "HB-AAA";
    EXPECT_TRUE(lf_updateIdentity(
        ac, feedMessage({.callsign = "SWR200", .registration = "HB-BBB", .destination = "LSZH"})));
    EXPECT_EQ(ac.callsign, "SWR200");
    EXPECT_EQ(ac.regcode, "HB-BBB");
    EXPECT_EQ(ac.origin, "EGLL") << "an empty value never deletes one";
    EXPECT_EQ(ac.destination, "LSZH");
    EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.callsign = "", .origin = "EGKK"})));
    EXPECT_EQ(ac.origin, "EGKK");
    EXPECT_EQ(ac.callsign, "SWR200");
}

TEST_F(Identity, NewCallsignRespawnsTheAircraft) {
    LiveAc& ac = addFlying();
    ac.coupledCallsign = "SWR101";
    EXPECT_FALSE(lf_updateIdentity(ac, feedMessage({.callsign = "SWR200", .registration = "HB-JCA"})));
    EXPECT_EQ(ac.callsign, "SWR200");
    EXPECT_EQ(ac.primaryCallsign, "SWR200");
    EXPECT_EQ(ac.coupledCallsign, "");
    EXPECT_EQ(ac.regcode, "HB-JCA");
    EXPECT_EQ(ac.state, AcState::Respawning);
    EXPECT_EQ(reasonTotal(Reason::RespawnForIdentity), 1U);
}

TEST_F(Identity, CallsignEqualToTheRegistrationIsNoChange) {
    LiveAc& ac = addFlying();
    ac.regcode = "HBJCA";
    EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.callsign = "HBJCA"})));
    EXPECT_EQ(ac.callsign, "SWR100");
    EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.callsign = ""})));
    EXPECT_EQ(ac.callsign, "SWR100");
}

TEST_F(Identity, RegistrationOnceKnownIsKept) {
    LiveAc& ac = addFlying();
    ac.regcode = "HB-AAA";
    EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.registration = "HB-BBB"})));
    EXPECT_EQ(ac.regcode, "HB-AAA");
}

TEST_F(Identity, WithRespawnsOffTheNameChangesAlone) {
    GUID_CHANGES.set(false);
    LiveAc& ac = addFlying();
    EXPECT_TRUE(lf_updateIdentity(ac, feedMessage({.callsign = "SWR200"})));
    EXPECT_EQ(ac.callsign, "SWR200");
    EXPECT_EQ(ac.state, AcState::Live);
}

TEST_F(Identity, FlipToAGhostOfAPresentTargetIsDropped) {
    addFlying("SWR200");
    LiveAc& ac = addFlying("SWR100");
    EXPECT_FALSE(lf_updateIdentity(ac, feedMessage({.callsign = "SWR200_"})));
    EXPECT_EQ(ac.callsign, "SWR200_");
    EXPECT_EQ(ac.state, AcState::Live) << "it keeps going on the points it has";
    EXPECT_EQ(ac.reason, Reason::GhostOfPresentTarget);

    EXPECT_FALSE(lf_updateIdentity(ac, feedMessage({.callsign = "SWR300_"})));
    EXPECT_EQ(ac.state, AcState::Respawning) << "a ghost of nobody is a callsign like any other";
}

TEST_F(Identity, NewCallsignDrivesItsGhostOut) {
    LiveAc& ghost = addFlying("SWR200_");
    LiveAc& ac = addFlying("SWR100");
    lf_updateIdentity(ac, feedMessage({.callsign = "SWR200"}));
    EXPECT_EQ(ghost.state, AcState::Removing);
    EXPECT_EQ(ghostCallsigns, std::vector<std::string>{"SWR200_"});
}

TEST_F(Identity, GhostThatIsLeavingIsLeftAlone) {
    LiveAc& ghost = world.addLive("SWR200_", AcState::Removing, AcPhase::Air, track());
    lf_removeGhostOf("SWR200");
    EXPECT_EQ(ghost.reason, Reason::None);
    EXPECT_TRUE(ghostCallsigns.empty());
}

// From the new callsign to the second object: the aircraft stays where it was, with the livery it had.
TEST_F(Identity, RespawnInFlightGoesOnWhereItWas) {
    LiveAc& ac = addFlying();
    ac.liveryTitle = "B738 generic";
    ac.simState.lat = 47.61;
    ac.simState.lon = 8.33;
    ac.simState.altFt = 5500.0;
    ac.simState.heading = 2.0;
    ac.simState.bank = 0.1;
    const std::uint32_t oldObject = ac.objectId;
    ac.track.front().stationary = true;
    liveryRespawn(ac);
    EXPECT_EQ(ac.state, AcState::Respawning);
    ASSERT_EQ(ac.track.size(), 3U);
    EXPECT_FALSE(ac.track[1].stationary) << "it goes on from where it is shown";
    EXPECT_EQ(ac.track.front().position(), (LatLon{47.61, 8.33}));
    EXPECT_EQ(ac.track.front().altFt, 5500.0);
    EXPECT_EQ(ac.track.front().roll, 0.1);
    EXPECT_EQ(ac.track.front().dueTick, updateCount + 1);

    pushSimCommand({.objectId = oldObject, .kind = SimCommand::Kind::Removed});
    gf_SimCommands();
    ASSERT_EQ(liveAcs.size(), 1U) << "the record outlives its object";
    EXPECT_EQ(ac.state, AcState::Buffered);
    EXPECT_EQ(ac.objectId, 0U);
    EXPECT_EQ(ac.throttleLevel, throttleNotSent);
    EXPECT_EQ(ac.flapsLevel, flapsNotSent);

    ac.callsign = "SWR200";
    lf_updateAllLiveAc();
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_EQ(ac.phase, AcPhase::Air);
    EXPECT_EQ(ac.liveryTitle, "B738 generic");
    EXPECT_EQ(ac.simState.heading, 2.0);
    EXPECT_EQ(ac.simState.position(), (LatLon{47.61, 8.33}));
}

TEST_F(Identity, RespawnOfAParkedAircraftKeepsStandAndHeading) {
    world.openAirport();
    ParkPos& stand = world.addStand("A1", airportPlace);
    stand.liveParked = true;
    LiveAc& ac = world.addLive("SWR100", AcState::Live, AcPhase::Parked,
                               {groundPoint(airportPlace, 0.0, updateCount + 100),
                                groundPoint(offset(airportPlace, 0.0, 40.0), 0.0, updateCount + 200)});
    ac.liveryTitle = "A320 generic";
    ac.sid = stand.sid;
    ac.standHeading = 0.5;
    ac.simState.heading = 0.7;
    const std::uint32_t oldObject = ac.objectId;
    liveryRespawn(ac);
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_TRUE(ac.track[0].stationary);
    EXPECT_TRUE(ac.track[1].stationary);
    EXPECT_NEAR(ac.track[1].trackDeg, 0.7 * degPerRad, 1e-9);

    pushSimCommand({.objectId = oldObject, .kind = SimCommand::Kind::Removed});
    gf_SimCommands();
    lf_updateAllLiveAc();
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_EQ(ac.phase, AcPhase::Parked);
    EXPECT_EQ(ac.sid, stand.sid);
    EXPECT_TRUE(stand.liveParked);
    EXPECT_EQ(ac.simState.heading, 0.7);
}

TEST_F(Identity, ParkedAircraftRefusedOnItsWayBackFreesItsStand) {
    world.openAirport();
    ParkPos& stand = world.addStand("A1", airportPlace);
    stand.liveParked = true;
    LiveAc& ac = world.addLive(
        "SWR100", AcState::Buffered, AcPhase::Parked,
        {groundPoint(airportPlace, 0.0, updateCount), groundPoint(airportPlace, 0.0, updateCount + 1)});
    ac.sid = stand.sid;
    BLOCK_CALLSIGN.set("SWR100");
    lf_updateAllLiveAc();
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_FALSE(stand.liveParked);
}

} // namespace
} // namespace kst::test
