// Whole stories on the ground, in virtual time: what a spectator on the apron would see.

#include "catalogue/referencetables.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/reasoncounts.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "scenario/apron.h"
#include "support/engineworld.h"
#include "support/places.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace kst {
namespace {

using test::Apron;
using test::fastestTurn;
using test::firstHexid;
using test::offset;
using test::ScenarioWorld;
using test::traffic;
using test::TurnWatch;
using test::Way;
using test::zurich;
using test::zurichFt;

TEST(GroundStories, LeavesTheStandAsTheFeedShows) {
    struct Case {
        const char* name;
        double moveDeg;    ///< which way the aircraft moves first
        double noseDeg;    ///< where its nose points while it is pushed
        double headingDeg; ///< and in the end
        bool straightOnly, pushed;
    };
    const Case cases[] = {
        {"pushed back, nose to the right", 180.0, 40.0, 90.0, false, true},
        {"pushed back, nose to the left", 180.0, 320.0, 270.0, false, true},
        {"pushed back straight", 180.0, 40.0, 0.0, true, true},
        {"pulled out", 0.0, 0.0, 0.0, false, false},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        Apron apron;
        STRAIGHT_PBS_ONLY.set(entry.straightOnly);
        Way way;
        way.at(zurich)
            .stand(45)
            .move(entry.moveDeg, 25, 3.0)
            .nose(entry.noseDeg)
            .move(entry.moveDeg, 15, 3.0);
        apron.world.feed(traffic({way.stand(120)}));
        ASSERT_TRUE(apron.play(40));
        EXPECT_EQ(apron.first().phase, AcPhase::Parked);
        EXPECT_EQ(apron.metresFrom(zurich), 0.0);
        ASSERT_TRUE(apron.play(110));
        EXPECT_EQ(apron.pushed, entry.pushed);
        EXPECT_LT(apron.degreesOff(entry.headingDeg), 3.0);
        EXPECT_GT(apron.metresFrom(zurich), 25.0);
        EXPECT_LT(apron.turns.largest(), fastestTurn);
    }
}

// Seven legs of 40 to 240 m, each corner of 15 to 95 degrees braked into.
TEST(GroundStories, DrawnTaxiRoutesAreRolledNoseFirst) {
    constexpr std::uint32_t routes = 8;
    double sideways = 0.0;
    for (std::uint32_t seed = 1; seed <= routes; ++seed) {
        SCOPED_TRACE(seed);
        Apron apron;
        seedRandom(seed);
        double dir = randomBelow(360);
        Way way;
        way.at(offset(zurich, randomBelow(360), 700.0));
        for (int leg = 0; leg < 7; ++leg) {
            way.nose(dir).move(dir, 40.0 + randomBelow(200), 5.0 + randomBelow(16)).move(dir, 15.0, 5.0);
            dir = std::fmod(dir + (randomBelow(2) == 0 ? 345.0 - randomBelow(80) : 15.0 + randomBelow(80)),
                            360.0);
            way.move(dir, 15.0, 6.0);
        }
        apron.world.feed(traffic({way.stand(20)}));
        ASSERT_TRUE(apron.play(way.seconds() + 60.0));
        EXPECT_LT(apron.metresFrom(way.place()), 20.0);
        EXPECT_LT(apron.turns.largest(), fastestTurn);
        EXPECT_LT(apron.spectator.fastestKt(), 30.0);
        sideways += apron.spectator.sidewaysShare() / routes;
    }
    EXPECT_LT(sideways, 0.02);
}

TEST(GroundStories, RecordedArrivalParksOnItsStandAndIsRemembered) {
    ScenarioWorld world({.user = {47.49, 8.55}, .userAltFt = 8000.0});
    world.openAirport("LSZH", zurich, zurichFt);
    world.loadStands("LSZH");
    world.feed(standin::recordedTraffic(
        {.files = {{test::sourceFolder() / "data/tracks/lszh_surface_2019.csv", 0.0}}}));
    TurnWatch turns;
    double parkedAt = 0.0;
    world.play(800, [&] {
        turns.look();
        if (parkedAt == 0.0 && !liveAcs.empty() && liveAcs.front().phase == AcPhase::Parked) {
            parkedAt = world.seconds();
        }
    });
    ASSERT_EQ(liveAcs.size(), 1U);
    const LiveAc& ac = liveAcs.front();
    EXPECT_EQ(ac.phase, AcPhase::Parked);
    const ParkPos* stand = standBySid(ac.sid);
    ASSERT_NE(stand, nullptr);
    EXPECT_EQ(stand->id, "B34");
    EXPECT_LT(gf_distanceNm(ac.simState.position(), stand->position()) * metresPerNm, 2.0);
    EXPECT_LT(std::abs(gf_angleDiff(ac.simState.heading, stand->heading)) * degPerRad, 1.0);
    // It stops there 579 s into the recording and is shown 30 s later.
    EXPECT_NEAR(parkedAt, 609.0, 60.0);
    EXPECT_LT(turns.largest(), fastestTurn);
    ASSERT_EQ(stand->options.size(), 1U);
    EXPECT_EQ(stand->options.front().reg + " " + stand->options.front().cs, "ZS-GAZ CAI3208");
    EXPECT_TRUE(stand->options.front().real);
}

// The feed of this one jumps between places 19 m apart while it waits for minutes after its push back.
TEST(GroundStories, WaitingAircraftDoesNotSpin) {
    ScenarioWorld world({.user = {47.49, 8.55}, .userAltFt = 8000.0});
    world.openAirport("LSZH", zurich, zurichFt);
    world.loadStands("LSZH");
    constexpr double lastDeparture = 4761469.0;
    world.feed(standin::recordedTraffic(
        {.files = {{test::sourceFolder() / "data/tracks/lszh_surface_2019.csv", lastDeparture}}}));
    TurnWatch turns;
    double turnedDeg = 0.0;
    double heading = 0.0;
    bool pushed = false;
    world.play(450, [&] {
        turns.look();
        if (liveAcs.empty()) {
            return;
        }
        const LiveAc& ac = liveAcs.front();
        pushed = pushed || ac.phase == AcPhase::PushBack;
        if (world.seconds() > 240.0) {
            turnedDeg += std::abs(gf_angleDiff(heading, ac.simState.heading)) * degPerRad;
        }
        heading = ac.simState.heading;
    });
    EXPECT_TRUE(pushed);
    EXPECT_LT(turnedDeg, 180.0);
    EXPECT_LT(turns.largest(), fastestTurn);
}

// Four move up to a holding point one after another, 60 m apart, and leave it in turn.
TEST(GroundStories, QueueMovesUpInOrder) {
    Apron apron;
    constexpr std::uint32_t queued = 4;
    constexpr double gapM = 60.0;
    const LatLon holdingPoint = offset(zurich, 180.0, 600.0);
    std::vector<Way> ways;
    for (std::uint32_t i = 0; i < queued; ++i) {
        Way way(fmt::format("SWR{}", i), firstHexid + i);
        way.aircraft("A320", fmt::format("HB-J{:02}", i)).nose(90.0);
        way.at(offset(holdingPoint, 270.0, 400.0 + gapM * i))
            .pause(2.0 * i)
            .move(90.0, 400.0, 12.0)
            .stand(60);
        for (std::uint32_t ahead = 0; ahead < i; ++ahead) {
            way.pause(6.0).move(90.0, gapM, 8.0).stand(45);
        }
        ways.push_back(way.move(90.0, 300.0 + gapM * (queued - i), 12.0).stand(120));
    }
    apron.world.feed(traffic(ways));
    apron.play(440);
    EXPECT_EQ(apron.world.simulator().created(), queued) << "nobody left and came back";
    EXPECT_GT(apron.spectator.closestM(), gapM - 15.0) << "nobody passed or ran into another";
    EXPECT_LT(apron.turns.largest(), fastestTurn);
    for (std::uint32_t i = 0; i < queued; ++i) {
        const LiveAc* ac = liveByHexid(firstHexid + i);
        ASSERT_NE(ac, nullptr);
        const LatLon end = offset(holdingPoint, 90.0, 300.0 + gapM * (queued - i));
        EXPECT_LT(gf_distanceNm(ac->simState.position(), end) * metresPerNm, 20.0);
    }
}

/// Taxis in, parks, is pushed back and taxis out.
Way inAndOut() {
    Way way;
    way.at(offset(zurich, 180.0, 300.0)).move(0.0, 250.0, 10.0).move(0.0, 50.0, 4.0).stand(60);
    return way.move(180.0, 60.0, 3.0).stand(40).nose(90.0).move(90.0, 400.0, 10.0).stand(40);
}

TEST(GroundStories, StandsDisappearAtAnyMoment) {
    const Way way = inAndOut();
    constexpr double everyS = 25.0;
    for (double at = everyS; at < way.seconds() + 30.0; at += everyS) {
        SCOPED_TRACE(at);
        Apron apron;
        apron.world.feed(traffic({way}));
        apron.play(at);
        parkPositions().clear();
        apron.play(way.seconds() + 60.0 - at);
        EXPECT_LT(apron.spectator.fastestKt(), 25.0) << "flies off";
        EXPECT_LT(apron.turns.largest(), fastestTurn) << "spins";
        ASSERT_NE(liveByHexid(firstHexid), nullptr);
        EXPECT_LT(apron.metresFrom(way.place()), 1.0) << "where the real one is";
    }
}

// At some moment the feed shows it elsewhere, once or for good.
TEST(GroundStories, FeedShowsItOnTheFarSideOfTheAirport) {
    const Way truth = inAndOut();
    constexpr double everyS = 24.0;
    for (const double metres : {600.0, 3000.0}) {
        for (const bool once : {true, false}) {
            for (double from = 15.0; from < truth.seconds(); from += everyS) {
                SCOPED_TRACE(
                    fmt::format("{} m off from {} s on, {}", metres, from, once ? "once" : "for good"));
                Apron apron;
                auto reports = truth.reports();
                for (auto& report : reports) {
                    if (report.at >= from && (!once || report.at < from + 3.0)) {
                        report.position = offset(report.position, 250.0, metres);
                    }
                }
                apron.world.feed(std::make_unique<test::DrawnTraffic>(reports));
                apron.play(truth.seconds() + 60.0);
                EXPECT_LT(apron.spectator.fastestKt(), 55.0) << "flies off";
                EXPECT_LT(apron.turns.largest(), fastestTurn) << "spins";
            }
        }
    }
}

TEST(GroundStories, StandsWithoutSizeAndWithoutPlace) {
    Apron apron;
    parkPositions().front().radius = 0.0;
    apron.addStand("NOWHERE", {0.0, 0.0});
    apron.addStand("TINY", offset(zurich, 90.0, 100.0), 0.0);
    parkPositions().front().neighbours = {2, 3, 99};
    Way way;
    way.at(offset(zurich, 90.0, 10.0)).stand(45).nose(40.0).move(180.0, 60.0, 3.0).stand(90);
    apron.world.feed(traffic({way}));
    ASSERT_TRUE(apron.play(170));
    EXPECT_TRUE(apron.pushed);
    EXPECT_LT(apron.metresFrom(zurich), 100.0);
    EXPECT_LT(apron.turns.largest(), fastestTurn);
    EXPECT_TRUE(parkPositions().front().radius_change);
}

// Aircraft roll onto stands drawn from the real airport, some of them overlapping, and stop up to 8 m off.
TEST(GroundStories, BusyApron) {
    ScenarioWorld world({.user = {47.49, 8.55}, .userAltFt = 8000.0});
    world.openAirport("LSZH", zurich, zurichFt);
    world.loadStands("LSZH");
    std::vector<Way> ways;
    std::set<std::uint32_t> wanted;
    for (std::uint32_t i = 0; i < 40; ++i) {
        const ParkPos& stand =
            *standBySid(randomBelow(static_cast<std::uint32_t>(parkPositions().size())) + 1);
        if (stand.heli || !wanted.insert(stand.sid).second) {
            continue;
        }
        constexpr double smallStandM = 17.0;
        const bool small = stand.radius * metresPerNm < smallStandM;
        const double nose = stand.heading * degPerRad;
        Way way(fmt::format("SWR{}", 100 + i), firstHexid + i);
        way.aircraft(small ? "C172" : "A320", fmt::format("HB-J{:02}", i)).nose(nose);
        way.at(offset(stand.position(), nose + 180.0, 400.0)).pause(4.0 * i).move(nose, 400.0, 10.0);
        way.at(offset(stand.position(), randomBelow(360), randomBelow(8))).stand(100);
        ways.push_back(way);
    }
    world.feed(traffic(ways));
    TurnWatch turns;
    world.play(400, [&] { turns.look(); });
    EXPECT_EQ(liveAcs.size(), wanted.size());
    EXPECT_LT(turns.largest(), fastestTurn);
    for (const LiveAc& ac : liveAcs) {
        SCOPED_TRACE(ac.callsign);
        ASSERT_EQ(ac.phase, AcPhase::Parked);
        const ParkPos& stand = *standBySid(ac.sid);
        EXPECT_LT(gf_distanceNm(stand.position(), ac.simState.position()) * metresPerNm, 2.0);
        EXPECT_LT(std::abs(gf_angleDiff(stand.heading, ac.simState.heading)) * degPerRad, 1.0);
        for (const LiveAc& other : liveAcs) {
            EXPECT_TRUE(&other == &ac || gf_distanceNm(other.simState.position(), ac.simState.position()) >
                                             ac.halfSpanNm + other.halfSpanNm)
                << "stands in " << other.callsign;
        }
    }
}

struct Remembered {
    const char* name;
    const char* type;
    const char* registration;
    double awayMinutes; ///< between leaving and coming back
    const char* record; ///< what the stand then holds: day, half hours
    double radiusM;
    bool cargo;
};

// Each is first seen on the stand at 23:40 on a Monday, is pushed back at 00:10, and comes back some time
// later.
TEST(GroundStories, WhatTheStandsRemember) {
    const Remembered cases[] = {
        {"within the half hour", "A320", "HB-JLT", 0, "1: 47 2: 0", 20.0, false},
        {"within two and a half hours", "A320", "HB-JLT", 120, "1: 47 2: 0 4", 20.0, false},
        {"after more than that", "A320", "HB-JLT", 210, "1: 47 2: 0 7", 20.0, false},
        {"too large: the stand grows", "B77W", "HB-JNA", 120, "1: 47 2: 0 4", 31.4, false},
        {"freighter: it is a cargo stand", "B77W", "D-AALA", 120, "1: 47 2: 0 4", 31.4, true},
        {"helicopter: none of its stands", "EC35", "HB-ZRA", 120, "", 20.0, false},
        {"without a registration", "A320", "", 120, "", 20.0, false},
    };
    for (const Remembered& entry : cases) {
        SCOPED_TRACE(entry.name);
        Apron apron;
        LEARN_SOFT.set(false);
        HELICOPTERS.set(true);
        referenceTables().regcodeTable.insert("D-AALA", {"BOX", "B77W", "", true});
        apron.world.advanceClock(std::chrono::minutes{13 * 60 + 40});
        Way stay;
        stay.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(50);
        apron.world.feed(traffic({stay}));
        apron.play(50);
        apron.world.advanceClock(std::chrono::minutes{29});
        Way leaves;
        leaves.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(20);
        apron.world.feed(traffic({leaves.move(180.0, 900.0, 20.0)}));
        apron.play(230);
        apron.world.advanceClock(std::chrono::minutes{static_cast<int>(entry.awayMinutes)});
        Way back;
        back.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(90);
        apron.world.feed(traffic({back}));
        apron.play(90);

        std::string record;
        const ParkPos& stand = parkPositions().front();
        for (const ParkOption& option : stand.options) {
            record += fmt::format("{}{}:", record.empty() ? "" : " ", option.day);
            for (std::size_t hh = 0; hh < option.hours.size(); ++hh) {
                record += option.hours.test(hh) ? fmt::format(" {}", hh) : "";
            }
        }
        EXPECT_EQ(record, entry.record);
        EXPECT_NEAR(stand.radius * metresPerNm, entry.radiusM, 0.1);
        EXPECT_EQ(stand.cargo, entry.cargo);
    }
}

TEST(GroundStories, VanishesOnTheTaxiway) {
    Apron apron;
    MAX_HOLDING_MINUTES.set(2);
    parkPositions().front().ramp = true;
    const LatLon begin = offset(zurich, 180.0, 800.0);
    apron.world.feed(traffic({Way().at(begin).stand(35).move(90.0, 300.0, 12.0)}));
    ASSERT_TRUE(apron.play(180));
    EXPECT_TRUE(apron.first().holding);
    EXPECT_LT(apron.metresFrom(offset(begin, 90.0, 300.0)), 30.0) << "it waits where it was last heard";
    EXPECT_FALSE(apron.play(120));
    // Where it may have parked is noted as a guess.
    ASSERT_EQ(parkPositions().front().options.size(), 1U);
    EXPECT_FALSE(parkPositions().front().options.front().real);
}

} // namespace
} // namespace kst
