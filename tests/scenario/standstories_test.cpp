// Stories of aircraft that want the same place: two for one stand, live and static, the user, a tow.

#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/reasoncounts.h"
#include "engine/tables.h"
#include "scenario/apron.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst {
namespace {

using test::Apron;
using test::fastestTurn;
using test::firstHexid;
using test::halfSpanM;
using test::offset;
using test::traffic;
using test::Way;
using test::zurich;
using test::zurichFt;

constexpr double spanM = 2 * halfSpanM;

// One is parked. A second one is first heard standing on the same stand, or rolls up to it.
TEST(StandStories, TwoForOneStand) {
    struct Case {
        const char* name;
        const char* holder;
        const char* newcomer;
        bool holderSends, rollsUp;
        const char* stands; ///< in the end
    };
    const Case cases[] = {
        {"two real ones, the first still sends", "SWR1", "DLH1", true, false, "SWR1"},
        {"two real ones, the first has fallen silent", "SWR1", "DLH1", false, false, "DLH1"},
        {"the real one after its ghost", "SWR1_", "SWR1", true, false, "SWR1"},
        {"the ghost after its real one", "SWR1", "SWR1_", false, false, "SWR1"},
        {"a real one after another's ghost", "SWR1_", "DLH1", true, false, "DLH1"},
        {"a ghost after another real one", "SWR1", "DLH1_", false, false, "SWR1"},
        {"two ghosts, the first still sends", "SWR1_", "DLH1_", true, false, "SWR1_"},
        {"two ghosts, the first has fallen silent", "SWR1_", "DLH1_", false, false, "DLH1_"},
        {"rolls up to one that sends", "SWR1", "DLH1", true, true, "DLH1"},
        {"rolls up to a silent one", "SWR1", "DLH1", false, true, "DLH1"},
        {"rolls up to a ghost", "SWR1_", "DLH1", true, true, "DLH1"},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        Apron apron;
        Way holder(entry.holder, firstHexid);
        holder.at(zurich).stand(entry.holderSends ? 240 : 30);
        Way newcomer(entry.newcomer, firstHexid + 1);
        newcomer.aircraft("A320", "D-AIZA");
        if (entry.rollsUp) {
            newcomer.at(offset(zurich, 180.0, 300.0))
                .stand(40)
                .move(0.0, 250.0, 8.0)
                .move(0.0, 50.0, 4.0)
                .stand(110);
        } else {
            newcomer.at(offset(zurich, 180.0, 3.0)).pause(60).stand(180);
        }
        apron.world.feed(traffic({holder, newcomer}));
        apron.play(45);
        EXPECT_EQ(apron.standingAt(zurich), entry.holder);
        apron.play(195);
        EXPECT_EQ(apron.standingAt(zurich), entry.stands);
        EXPECT_GT(apron.spectator.closestM(), halfSpanM) << "stood in each other";
        EXPECT_LT(apron.turns.largest(), fastestTurn);
    }
}

// Two stands that overlap, one that does not, and enough others that nobody is one too many.
TEST(StandStories, StaticAircraftMakesWay) {
    const LatLon beside = offset(zurich, 90.0, 34.0);
    const LatLon farther = offset(zurich, 90.0, 80.0);
    const Way away = Way("SWR1").at(offset(zurich, 180.0, 800.0)).move(90.0, 400.0, 10.0);
    const Way rollsUp =
        Way("SWR1").at(offset(zurich, 180.0, 300.0)).stand(40).move(0.0, 250.0, 8.0).move(0.0, 50.0, 4.0);
    const auto passes = [](double metresSouth) {
        return Way("SWR1")
            .at(offset(offset(zurich, 180.0, metresSouth), 270.0, 200.0))
            .stand(40)
            .move(90.0, 400.0, 10.0);
    };
    struct Case {
        const char* name;
        LatLon stand; ///< of the static one
        Way live;
        const char* registration; ///< of the static one
        bool stays;
        double closestM; ///< they never come nearer
    };
    const Case cases[] = {
        {"appears on its stand", zurich, Way("SWR1").at(zurich), "HB-JVA", false, halfSpanM},
        {"rolls onto its stand", zurich, rollsUp, "HB-JVA", false, spanM},
        {"appears so near that they would touch", beside, Way("SWR1").at(zurich), "HB-JVA", false, spanM},
        {"parks so near that they would touch", beside, rollsUp, "HB-JVA", false, spanM},
        {"parks clear of it", farther, rollsUp, "HB-JVA", true, spanM},
        {"taxis past within reach of its wings", zurich, passes(35.0), "HB-JVA", false, spanM},
        {"taxis past clear of it", zurich, passes(45.0), "HB-JVA", true, spanM},
        {"is the same airframe, elsewhere", zurich, away, "HB-JLT", false, spanM},
        {"is another one, elsewhere", zurich, away, "HB-JVA", true, spanM},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        Apron apron;
        CUSTOM_PARKING_PERCENTAGE.set(100);
        COLLISION_LIVE_PARKED_GND.set(true);
        apron.addStand("A2", beside);
        apron.addStand("A3", farther);
        for (const char* id : {"F1", "F2", "F3"}) {
            apron.addStand(id, offset(zurich, 0.0, 2000.0));
        }
        const std::uint32_t sid = entry.stand == zurich ? 1 : entry.stand == beside ? 2 : 3;
        apron.park(sid, "DLH7", entry.registration);
        Way live = entry.live;
        apron.world.feed(traffic({live.stand(120)}));
        apron.play(20);
        EXPECT_EQ(apron.standingAt(entry.stand), "DLH7*");
        ASSERT_TRUE(apron.play(130));
        EXPECT_EQ(apron.shows("DLH7*"), entry.stays);
        EXPECT_GT(apron.spectator.closestM(), entry.closestM);
    }
}

// The user sits on A1 in a small aircraft, the nose to the north.
class UserOnTheApron : public ::testing::Test {
protected:
    UserOnTheApron() : apron({.user = zurich, .userAltFt = zurichFt, .userOnGround = true}) {
        apron.addStand("A2", offset(zurich, 0.0, 300.0));
        CUSTOM_PARKING_PERCENTAGE.set(100);
    }
    void rollUp(double stopM) {
        const double rollM = 300.0 - stopM - 50.0;
        apron.world.feed(traffic({Way("SWR1")
                                      .at(offset(zurich, 180.0, 300.0))
                                      .stand(40)
                                      .move(0.0, rollM, 8.0)
                                      .move(0.0, 50.0, 4.0)
                                      .stand(60)}));
    }
    Apron apron;
};

constexpr double userHalfSpanM = 5.5;

TEST_F(UserOnTheApron, NobodyRollsIntoTheUser) {
    rollUp(0.0);
    apron.play(100);
    EXPECT_TRUE(apron.shows("SWR1"));
    EXPECT_FALSE(apron.play(60));
    EXPECT_GT(apron.spectator.closestM(), halfSpanM + userHalfSpanM);
    EXPECT_EQ(reasonTotal(Reason::ConflictWithUser), 1U);
}

TEST_F(UserOnTheApron, TheUsersStandIsNotTakenEvenWithoutAvoidance) {
    COLLISION_USER_GND.set(false);
    rollUp(15.0);
    ASSERT_TRUE(apron.play(160));
    EXPECT_EQ(apron.first().phase, AcPhase::Taxi);
    EXPECT_LT(apron.metresFrom(zurich), 35.0) << "it stands where it really does";
}

TEST_F(UserOnTheApron, WhoeverIsInTheWayOfATaxiingUserGoes) {
    apron.park(2, "DLH7");
    apron.world.feed(traffic({Way("SWR1").at(offset(zurich, 0.0, 170.0)).move(0.0, 30.0, 3.0).stand(120)}));
    ASSERT_TRUE(apron.play(60));
    EXPECT_TRUE(apron.shows("DLH7*"));
    apron.world.simulator().userMotion().straight(5.0, 0.0);
    apron.play(125);
    EXPECT_FALSE(apron.shows("SWR1"));
    EXPECT_FALSE(apron.shows("DLH7*"));
    EXPECT_GT(apron.spectator.closestM(), halfSpanM) << "the user's nose was under a wing";
}

// Lands to the north, parks on A1, is silent for five minutes, and is towed over to A2.
TEST(StandStories, TowedToAnotherStand) {
    Apron apron;
    const LatLon a2 = offset(zurich, 90.0, 300.0);
    apron.addStand("A2", a2);
    const LatLon entry = offset(offset(zurich, 180.0, 200.0), 270.0, 300.0);
    Way way("SWR1");
    way.at(offset(entry, 180.0, 9500.0), zurichFt + 1600.0);
    way.fly(0.0, 7500.0, 140.0, zurichFt + 450.0).fly(0.0, 1000.0, 135.0, zurichFt + 5.0);
    way.move(0.0, 300.0, 130.0).move(0.0, 400.0, 80.0).move(0.0, 300.0, 30.0);
    way.nose(90.0).move(90.0, 300.0, 15.0).nose(0.0).move(0.0, 160.0, 8.0).move(0.0, 40.0, 4.0);
    const double parksAt = way.seconds();
    way.stand(60).pause(300);
    const double leavesAt = way.seconds();
    way.move(180.0, 60.0, 3.0)
        .nose(90.0)
        .move(90.0, 300.0, 6.0)
        .nose(0.0)
        .move(0.0, 30.0, 5.0)
        .move(0.0, 30.0, 3.0)
        .stand(120);
    apron.world.feed(traffic({way}));
    ASSERT_TRUE(apron.play(parksAt + 60.0));
    EXPECT_EQ(apron.first().phase, AcPhase::Parked);
    EXPECT_LT(apron.metresFrom(zurich), 2.0);
    EXPECT_LT(apron.degreesOff(0.0), 1.0);
    ASSERT_TRUE(apron.play(leavesAt - apron.world.seconds()));
    EXPECT_LT(apron.metresFrom(zurich), 2.0);
    ASSERT_TRUE(apron.play(way.seconds() - leavesAt + 60.0));
    EXPECT_TRUE(apron.pushed);
    EXPECT_EQ(apron.first().phase, AcPhase::Parked);
    EXPECT_LT(apron.metresFrom(a2), 2.0);
    EXPECT_LT(apron.degreesOff(0.0), 1.0);
    EXPECT_LT(apron.turns.largest(), fastestTurn);
}

} // namespace
} // namespace kst
