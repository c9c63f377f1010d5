// The gates between the buffer and the simulator, and how a target enters.

#include "catalogue/matching.h"
#include "catalogue/referencetables.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/spawning.h"
#include "engine/tables.h"
#include "engine/unmatched.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr LatLon place{47.6, 8.3};
constexpr std::int32_t due = 20000;
constexpr std::int32_t airLead = 100;
constexpr std::int32_t rollingLead = 300;

/// A flight of `count` points, 500 ticks and 5 km apart.
std::vector<TrackPoint> flight(std::size_t count, LatLon from = place, double altFt = 6000.0) {
    std::vector<TrackPoint> points;
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back(airPoint(offset(from, 90.0, 5000.0 * static_cast<double>(i)), altFt, 250.0,
                                  due + 500 * static_cast<std::int32_t>(i)));
    }
    return points;
}

/// The same on the ground, 50 m apart.
std::vector<TrackPoint> taxi(std::size_t count, double gsKt, LatLon from = place) {
    std::vector<TrackPoint> points;
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back(groundPoint(offset(from, 90.0, 50.0 * static_cast<double>(i)), gsKt,
                                     due + 500 * static_cast<std::int32_t>(i)));
    }
    return points;
}

class Buffering : public ::testing::Test {
protected:
    Buffering() { world.placeUser(offset(place, 0.0, 100000.0), true); }

    LiveAc& addBuffered(std::vector<TrackPoint> points, std::string_view callsign = "SWR100",
                        std::string_view type = "A320") {
        return world.addLive(callsign, AcState::Buffered, AcPhase::Unknown, std::move(points), type);
    }

    EngineWorld world;
};

struct LeadCase {
    const char* name;
    std::vector<TrackPoint> points;
    std::int32_t lead;
};

TEST_F(Buffering, TargetEntersItsLeadBeforeItsTime) {
    const LeadCase cases[] = {
        {"in flight", flight(3), airLead},
        {"rolling", taxi(3, 15.0), rollingLead},
        {"standing", taxi(3, 0.0), airLead},
    };
    for (const LeadCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        LiveAc& ac = addBuffered(entry.points);
        world.setTick(due - entry.lead - 1);
        updateBufferAc(ac);
        EXPECT_EQ(ac.state, AcState::Buffered);
        EXPECT_EQ(ac.track.size(), 3U);
        world.setTick(due - entry.lead);
        updateBufferAc(ac);
        EXPECT_EQ(ac.state, AcState::Requested);
    }
}

TEST_F(Buffering, TargetThatFellSilentNeverAppears) {
    addBuffered(flight(1));
    world.setTick(due - airLead - 1);
    lf_updateAllLiveAc();
    EXPECT_EQ(liveAcs.size(), 1U);
    world.setTick(due - airLead);
    lf_updateAllLiveAc();
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_EQ(reasonTotal(Reason::FellSilentInBuffer), 1U);
    EXPECT_TRUE(spawnList.empty());
}

TEST_F(Buffering, TakeOffInTheBufferEntersInTheAir) {
    std::vector<TrackPoint> points = flight(3);
    points.insert(points.begin(), groundPoint(offset(place, 270.0, 2000.0), 140.0, due - 500));
    LiveAc& ac = addBuffered(points);
    world.setTick(due - 500);
    updateBufferAc(ac);
    EXPECT_EQ(ac.state, AcState::Buffered);
    EXPECT_EQ(ac.track.size(), 3U) << "the ground point goes first";
    EXPECT_EQ(ac.reason, Reason::MixedGroundAndAir);
    world.setTick(due - airLead);
    updateBufferAc(ac);
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_EQ(ac.phase, AcPhase::Air);
}

struct UserCase {
    const char* name;
    bool userGround;
    bool targetAirborne;
    double targetGs;
    double distanceM; ///< the target stands east of the user
    double userGs;
    bool held; ///< `heldForUser` before
    bool avoidGround, avoidAir;
    bool waits;
};

TEST_F(Buffering, KeepsClearOfTheUser) {
    const UserCase cases[] = {
        {"140 m from a user on the ground", true, false, 5, 140, 0, false, true, true, true},
        {"160 m from a user on the ground", true, false, 5, 160, 0, false, true, true, false},
        {"140 m with avoidance off", true, false, 5, 140, 0, false, false, true, false},
        {"airborne over a user on the ground", true, true, 250, 100, 0, false, true, true, false},
        {"held, user taxies", true, false, 5, 2000, 9, true, true, true, true},
        {"held, user crawls", true, false, 5, 2000, 8, true, true, true, false},
        {"held airborne, user taxies", true, true, 250, 9000, 9, true, true, true, true},
        {"held, target rolls", true, false, 9, 2000, 0, true, true, true, true},
        {"held, 490 m away", true, false, 5, 490, 0, true, true, true, true},
        {"held, 510 m away", true, false, 5, 510, 0, true, true, true, false},
        {"held, 490 m away, avoidance off", true, false, 5, 490, 0, true, false, true, true},
        {"held on the ground, user in the air", false, false, 5, 9000, 120, true, true, true, true},
        {"never shown, on the ground, user in the air", false, false, 5, 900, 120, false, true, true, false},
        {"held, user in the air, avoidance off", false, false, 5, 900, 120, true, true, false, false},
    };
    for (const UserCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        resetCounts();
        COLLISION_USER_GND.set(entry.avoidGround);
        COLLISION_USER_AIR.set(entry.avoidAir);
        world.placeUser(place, entry.userGround, 1500.0);
        userData.groundSpeedKt = entry.userGs;
        const LatLon start = offset(place, 90.0, entry.distanceM);
        LiveAc& ac = addBuffered(entry.targetAirborne ? flight(3, start) : taxi(3, entry.targetGs, start));
        ac.simState = {};
        ac.heldForUser = entry.held;
        world.setTick(due);
        updateBufferAc(ac);
        EXPECT_EQ(ac.track.size(), entry.waits ? 2U : 3U) << "waiting drops the oldest point alone";
        EXPECT_EQ(ac.state, entry.waits ? AcState::Buffered : AcState::Requested);
        EXPECT_EQ(reasonTotal(Reason::HeldForUser), entry.waits ? 1U : 0U);
        EXPECT_EQ(ac.heldForUser, entry.waits && entry.held);
    }
}

TEST_F(Buffering, TargetAheadOfALandingUserIsHeld) {
    world.placeUser(place, false, 6000.0, 0.0);
    LiveAc& ac = addBuffered(flight(4, offset(place, 0.0, 5000.0)));
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_EQ(ac.state, AcState::Buffered);
    EXPECT_TRUE(ac.heldForUser);
    EXPECT_EQ(ac.reason, Reason::HeldForUser);

    ac.track = flight(4, offset(place, 0.0, 20000.0));
    updateBufferAc(ac);
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_FALSE(ac.heldForUser) << "once it has entered it is held no more";
}

// Only an aircraft that was in the simulator before can stand on the user's runway at this point.
TEST_F(Buffering, RespawnOnTheUsersRunwayWaits) {
    world.placeUser(place, false, 2000.0, 0.0);
    userData.heightAglFt = 600.0;
    struct Case {
        const char* name;
        double bearingDeg, metres, heightFt;
        bool waits;
    };
    const Case cases[] = {
        {"on the runway ahead", 0.0, 2000.0, 600.0, true},
        {"behind the user", 180.0, 2000.0, 600.0, true},
        {"150 m beside the line", 4.3, 2000.0, 600.0, true},
        {"160 m beside the line", 4.6, 2000.0, 600.0, false},
        {"160 m on the other side", 355.4, 2000.0, 600.0, false},
        {"1.6 nm ahead", 0.0, 2960.0, 600.0, false},
        {"user at 1,000 ft", 0.0, 2000.0, 1000.0, false},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        userData.heightAglFt = entry.heightFt;
        const LatLon spot = offset(place, entry.bearingDeg, entry.metres);
        LiveAc& ac = world.addLive("SWR100", AcState::Buffered, AcPhase::Taxi, taxi(3, 5.0, spot));
        ac.liveryTitle = "A320 generic";
        world.setTick(due);
        updateBufferAc(ac);
        EXPECT_EQ(ac.heldForUser, entry.waits);
        EXPECT_EQ(ac.state, entry.waits ? AcState::Buffered : AcState::Requested);
    }
}

TEST_F(Buffering, HeldTargetIsCountedOncePerChangeOfReason) {
    world.placeUser(place, true);
    LiveAc& ac = addBuffered(taxi(6, 5.0));
    world.setTick(due + 3000);
    for (int i = 0; i < 3; ++i) {
        updateBufferAc(ac);
    }
    EXPECT_EQ(ac.track.size(), 3U);
    EXPECT_EQ(reasonTotal(Reason::HeldForUser), 1U);
    world.placeUser(offset(place, 0.0, 90000.0), true);
    updateBufferAc(ac);
    EXPECT_EQ(ac.state, AcState::Requested);
    EXPECT_EQ(ac.reason, Reason::None);
}

TEST_F(Buffering, FullCreationQueueHoldsNewTargetsOnly) {
    for (std::uint32_t i = 0; i < 11; ++i) {
        queueLiveCreation({.initPos = {}, .tailNumber = "Q", .title = {}, .hexid = 40000 + i});
    }
    LiveAc& newcomer = addBuffered(flight(3));
    LiveAc& respawning = world.addLive("SWR200", AcState::Buffered, AcPhase::Air, flight(3));
    world.setTick(due);
    updateBufferAc(newcomer);
    updateBufferAc(respawning);
    EXPECT_EQ(newcomer.state, AcState::Buffered);
    EXPECT_EQ(newcomer.reason, Reason::CreationQueueFull);
    EXPECT_EQ(respawning.state, AcState::Requested);

    ASSERT_TRUE(takeBackLiveCreation(40000));
    world.setTick(due + 500);
    updateBufferAc(newcomer);
    EXPECT_EQ(newcomer.state, AcState::Requested);
}

struct LimitCase {
    const char* name;
    int limit;
    std::vector<double> liveNm; ///< how far from the user the live aircraft fly
    int waiting;                ///< targets cleared for creation but not yet there
    bool enters;
    int removed; ///< index of the live aircraft that goes, -1 for none
};

// The newcomer is 20 nm from the user.
TEST_F(Buffering, LiveLimitKeepsTheNearest) {
    const LimitCase cases[] = {
        {"no limit", -1, {30, 40}, 0, true, -1},
        {"room left", 3, {30, 40}, 0, true, -1},
        {"full, others farther", 2, {30, 40}, 0, true, 1},
        {"full, newcomer farthest", 2, {10, 15}, 0, false, -1},
        {"full, 0.05 nm farther does not count", 1, {20.05}, 0, false, -1},
        {"full, 0.2 nm farther counts", 1, {20.2}, 0, true, 0},
        {"waiting creations count", 2, {10}, 1, false, -1},
        {"limit 0 with nobody there", 0, {}, 0, false, -1},
        {"limit 0 with one farther", 0, {30}, 0, true, 0},
    };
    for (const LimitCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        resetObjectCommands();
        MAX_LIVE.set(entry.limit);
        world.placeUser(place, true);
        world.setTick(due);
        for (const double nm : entry.liveNm) {
            world.addLive("L" + std::to_string(nm), AcState::Live, AcPhase::Air,
                          flight(3, offset(place, 0.0, nm * metresPerNm)));
        }
        for (int i = 0; i < entry.waiting; ++i) {
            spawnList.push_back(50000);
        }
        LiveAc& newcomer = addBuffered(flight(3, offset(place, 0.0, 20.0 * metresPerNm)));
        updateBufferAc(newcomer);
        EXPECT_EQ(newcomer.state == AcState::Requested, entry.enters);
        EXPECT_EQ(newcomer.erase, !entry.enters);
        if (!entry.enters) {
            EXPECT_EQ(newcomer.reason, Reason::FarthestAtLimit);
        }
        for (std::size_t i = 0; i < entry.liveNm.size(); ++i) {
            const bool goes = static_cast<int>(i) == entry.removed;
            EXPECT_EQ(liveAcs[i].state, goes ? AcState::Removing : AcState::Live);
            EXPECT_EQ(liveAcs[i].reason, goes ? Reason::LiveLimit : Reason::None);
        }
    }
}

struct IdentityCase {
    const char* name;
    std::string callsign, regcode, blocked;
    Reason refusal;
    std::string airline, acType, callsignThen;
    bool cargo;
};

TEST_F(Buffering, IdentityDecides) {
    auto& known = referenceTables().regcodeTable;
    known.insert("HB-JCA", {"SWR", "B738", "", false});
    known.insert("D-AALA", {"BCS", "B77W", "BOX", true});
    known.insert("HB-PVT", {"PVT", "", "", false});
    const IdentityCase cases[] = {
        {"callsign alone", "SWR1", "", "", Reason::None, "PVT", "A320", "SWR1", false},
        {"unknown registration", "SWR1", "N1ZZ", "", Reason::None, "PVT", "A320", "SWR1", false},
        {"known registration", "SWR1", "HB-JCA", "", Reason::None, "SWR", "B738", "SWR1", false},
        {"operated by another, cargo", "BOX1", "D-AALA", "", Reason::None, "BOX", "B77W", "BOX1", true},
        {"known without a type", "SWR1", "HB-PVT", "", Reason::None, "PVT", "A320", "SWR1", false},
        {"no callsign, known registration", "", "HB-JCA", "", Reason::None, "SWR", "B738", "HB-JCA", false},
        {"placeholder callsign, known registration", "@@@@@@@@", "HB-JCA", "", Reason::None, "SWR", "B738",
         "HB-JCA", false},
        {"no callsign, unknown registration", "", "N1ZZ", "", Reason::InvalidCallsign, "", "A320", "", false},
        {"callsign of 8", "ABCDEFGH", "", "", Reason::None, "PVT", "A320", "ABCDEFGH", false},
        {"callsign of 9", "ABCDEFGHI", "", "", Reason::InvalidCallsign, "", "A320", "ABCDEFGHI", false},
        {"blocked", "SWR1", "", "SWR1", Reason::BlockedByUser, "", "A320", "SWR1", false},
        {"another blocked", "SWR1", "", "SWR", Reason::None, "PVT", "A320", "SWR1", false},
    };
    for (const IdentityCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        BLOCK_CALLSIGN.set(entry.blocked);
        LiveAc& ac = addBuffered(flight(3), entry.callsign);
        ac.regcode = entry.regcode;
        world.setTick(due);
        updateBufferAc(ac);
        EXPECT_EQ(ac.reason, entry.refusal);
        EXPECT_EQ(ac.erase, entry.refusal != Reason::None);
        EXPECT_EQ(ac.state == AcState::Requested, entry.refusal == Reason::None);
        EXPECT_EQ(ac.airline, entry.airline);
        EXPECT_EQ(ac.acType, entry.acType);
        EXPECT_EQ(ac.callsign, entry.callsignThen);
        EXPECT_EQ(ac.cargo, entry.cargo);
    }
    known.clear();
}

TEST_F(Buffering, TargetWithoutLiveryIsNotSearchedTwice) {
    LiveAc& ac = addBuffered(flight(3), "SWR100", "ZZZZ");
    ac.regcode = "HB-ABC";
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_TRUE(ac.erase);
    EXPECT_EQ(ac.reason, Reason::NoLivery);
    ASSERT_EQ(unmatchedTargets.size(), 1U);
    EXPECT_EQ(*unmatchedTargets.begin(), "PVT ZZZZ HB-ABC");

    // A livery installed meanwhile does not help before the list is cleared.
    addLiveryTitle("PVT", "ZZZZ", "ZZZZ new");
    LiveAc& again = addBuffered(flight(3), "SWR100", "ZZZZ");
    again.regcode = "HB-ABC";
    updateBufferAc(again);
    EXPECT_TRUE(again.erase);
    unmatchedTargets.clear();
    LiveAc& third = addBuffered(flight(3), "SWR101", "ZZZZ");
    updateBufferAc(third);
    EXPECT_EQ(third.state, AcState::Requested);
}

TEST_F(Buffering, TitleOfATargetOutlivesItsRecord) {
    LiveAc& ac = addBuffered(flight(3));
    const std::uint32_t hexid = ac.hexid;
    liveryCache[hexid] = "B738 generic";
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_EQ(ac.liveryTitle, "B738 generic") << "the title given before comes back";
}

TEST_F(Buffering, RefusedTitleIsReplaced) {
    RANDOM.set(false);
    addLiveryTitle("ZZZ", "A320", "A320 broken");
    AcBase broken;
    broken.liveryTitle = "A320 broken";
    gf_liveryCreateFailed(broken);
    LiveAc& ac = addBuffered(flight(3));
    liveryCache[ac.hexid] = "A320 broken";
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_EQ(ac.liveryTitle, "A320 generic");
    EXPECT_EQ(liveryCache.at(ac.hexid), "A320 generic");
}

TEST_F(Buffering, GhostsNeverEnterBesideTheRealTarget) {
    struct Case {
        const char* name;
        bool recorded, realThere;
        AcState realState;
        Reason refusal;
    };
    const Case cases[] = {
        {"nobody else", false, false, AcState::Live, Reason::None},
        {"real target live", false, true, AcState::Live, Reason::GhostOfPresentTarget},
        {"real target still buffered", false, true, AcState::Buffered, Reason::GhostOfPresentTarget},
        {"real target leaving", false, true, AcState::Removing, Reason::None},
        {"ghost replaced before", true, false, AcState::Live, Reason::GhostReplaced},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        if (entry.recorded) {
            ghostCallsigns.emplace_back("SWR100_");
        }
        if (entry.realThere) {
            world.addLive("SWR100", entry.realState, AcPhase::Air, flight(3));
        }
        LiveAc& ghost = addBuffered(flight(3), "SWR100_");
        world.setTick(due);
        updateBufferAc(ghost);
        EXPECT_EQ(ghost.reason, entry.refusal);
        EXPECT_EQ(ghost.state == AcState::Requested, entry.refusal == Reason::None);
    }
}

TEST_F(Buffering, FirstStateInFlightIsThatOfTheFrontPoint) {
    std::vector<TrackPoint> points = flight(3);
    points.front().vsFpm = 1200.0;
    points.front().roll = -0.2;
    points.front().tasKt = 290.0;
    LiveAc& ac = addBuffered(points);
    ac.simState = {};
    ac.dHeading = 0.1;
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_EQ(ac.dHeading, 0.0);
    EXPECT_EQ(ac.simState.position(), place);
    EXPECT_EQ(ac.simState.altFt, 6000.0);
    EXPECT_EQ(ac.simState.bank, -0.2);
    EXPECT_EQ(ac.simState.vsFps, 1200.0);
    EXPECT_EQ(ac.simState.airspeedKt, 290.0);
    EXPECT_NEAR(ac.simState.heading, pi / 2.0, 0.01) << "it looks to its second point";
    EXPECT_LT(ac.simState.pitch, 0.0) << "nose up in a climb";
    EXPECT_EQ(ac.phase, AcPhase::Air);
    EXPECT_EQ(spawnList, std::vector<std::uint32_t>{ac.hexid});
    EXPECT_EQ(spawnedIds, std::list<std::uint32_t>{ac.hexid});
}

TEST_F(Buffering, StandingAircraftLooksWhereItsTrackPoints) {
    std::vector<TrackPoint> points = taxi(3, 4.0);
    for (TrackPoint& point : points) {
        point.lat = place.lat;
        point.lon = place.lon;
        point.trackDeg = 220.0;
        point.stationary = true;
    }
    LiveAc& ac = addBuffered(points);
    world.setTick(due);
    updateBufferAc(ac);
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
    EXPECT_NEAR(ac.simState.heading * degPerRad, 220.0, 1e-9);
    EXPECT_NEAR(ac.simState.pitch, 0.6 * radPerDeg, 1e-12);
    for (const TrackPoint& point : ac.track) {
        EXPECT_TRUE(point.stationary);
        EXPECT_EQ(point.gsKt, 0.0) << "what stands has no speed";
    }
}

TEST_F(Buffering, TooShortTrackLeavesTheRecordAsItIs) {
    LiveAc& ac = addBuffered(flight(1));
    spawnLiveAc(ac);
    EXPECT_EQ(ac.state, AcState::Buffered);
    EXPECT_FALSE(ac.erase);
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_TRUE(spawnList.empty());
}

TEST_F(Buffering, CreationsAreQueuedLastClearedFirst) {
    LiveAc& first = addBuffered(flight(3), "SWR1");
    LiveAc& second = addBuffered(taxi(3, 10.0), "SWR2");
    world.setTick(due);
    updateBufferAc(first);
    updateBufferAc(second);
    lf_queueNextSpawn();
    EXPECT_EQ(liveCreateQueueSize(), 1U);
    EXPECT_TRUE(takeBackLiveCreation(second.hexid));
    lf_queueNextSpawn();
    EXPECT_TRUE(takeBackLiveCreation(first.hexid));
    lf_queueNextSpawn();
    EXPECT_EQ(liveCreateQueueSize(), 0U);
}

TEST_F(Buffering, TargetThatLeftIsNotCreated) {
    LiveAc& ac = addBuffered(flight(3));
    world.setTick(due);
    updateBufferAc(ac);
    deleteRecord(ac);
    lf_queueNextSpawn();
    EXPECT_EQ(liveCreateQueueSize(), 0U);
    EXPECT_TRUE(spawnList.empty());
}

} // namespace
} // namespace kst::test
