// Whole flights from the first datagram to the end of the object, in virtual time.

#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/tables.h"
#include "scenario/flightfacts.h"
#include "scenario/scenarioworld.h"

#include <gtest/gtest.h>

#include <vector>

namespace kst {
namespace {

using test::pathFacts;
using test::physicalFacts;
using test::recorded;
using test::reportsOf;
using test::ScenarioOptions;
using test::ScenarioWorld;

/// Seconds in which a new object is created, found, frozen and begins to move.
constexpr double takeOverSeconds = 5.0;

TEST(Scenario, OverflightsFlyTheirRecordedTracks) {
    ScenarioWorld world({.user = {47.0, 8.0}, .userAltFt = 30000.0});
    world.feed(recorded("enroute_switzerland_2018.csv", 0.0));
    world.play(240);

    std::size_t flights = 0;
    for (const auto& [id, aircraft] : world.simulator().objects()) {
        const auto reports = reportsOf(world.sent(), aircraft.tailNumber);
        const auto path = pathFacts(aircraft.history, reports);
        if (path.points < 100) {
            continue;
        }
        ++flights;
        const std::string name = aircraft.tailNumber;
        EXPECT_LT(path.medianOffLineM, 60.0) << name;
        EXPECT_LT(std::abs(path.medianLagS), 10.0) << name;
        EXPECT_LT(path.largestLagS, 30.0) << name;
        EXPECT_LT(path.largestLeadS, 30.0) << name;
        const auto physics = physicalFacts(aircraft, aircraft.createdAt + takeOverSeconds);
        EXPECT_LT(physics.largestStepRatio, 1.5) << name;
        EXPECT_LT(physics.largestTurnRateDegS, 10.0) << name;
        EXPECT_GT(physics.lowestAboveGroundFt, 10000.0) << name;
    }
    EXPECT_GE(flights, 10U);
    EXPECT_FALSE(world.exit());
}

/// Reports of SWR100, a minute on the way east past the user, 8 nm to the north.
std::unique_ptr<standin::TrafficSource> eastboundMinute() {
    std::vector<standin::TrafficReport> reports;
    for (int i = 0; i <= 30; ++i) {
        standin::TrafficReport report;
        report.at = 2.0 * i;
        report.hexid = 20001;
        report.callsign = "SWR100";
        report.type = "A320";
        report.position = {47.6, 8.2 + 0.004 * i};
        report.altFt = 15000;
        report.gsKt = 292;
        report.trackDeg = 90.0;
        report.tasKt = 320;
        reports.push_back(report);
    }
    return std::make_unique<test::DrawnTraffic>(reports);
}

TEST(Scenario, TargetAppearsAboutThirtySecondsAfterItsFirstMessageAndGoesWhenTheFeedFallsSilent) {
    ScenarioWorld world;
    world.feed(eastboundMinute());

    double appeared = 0.0;
    double gone = 0.0;
    world.play(240, [&] {
        const bool there =
            world.simulator().findTail("SWR100") != nullptr && !world.simulator().objects().empty();
        if (there && appeared == 0.0) {
            appeared = world.seconds();
        }
        if (!there && appeared > 0.0 && gone == 0.0) {
            gone = world.seconds();
        }
    });
    EXPECT_GT(appeared, 28.5);
    EXPECT_LT(appeared, 32.0);
    // The last point is due at 90 s; from there the aircraft coasts for 64 s.
    EXPECT_GT(gone, 90.0 + 55.0);
    EXPECT_LT(gone, 90.0 + 75.0);
    EXPECT_EQ(reasonTotal(Reason::TrackEnded), 1U);
    EXPECT_TRUE(liveAcs.empty());
}

TEST(Scenario, ObjectBeyondARangeThatShrankDuringItsCreationIsNotLeftToItself) {
    ScenarioWorld world;
    world.feed(eastboundMinute());
    bool shrunk = false;
    world.play(240, [&] {
        if (!shrunk && !world.simulator().objects().empty()) {
            ASSERT_EQ(liveAcs.front().objectId, 0U) << "a scan has shown it already";
            shrunk = true;
            workingRangeNm = 2.0;
            requestRangeM = 2.0 * metresPerNm;
        }
    });
    EXPECT_TRUE(shrunk);
    EXPECT_TRUE(world.simulator().objects().empty());
    EXPECT_TRUE(liveAcs.empty());
}

TEST(Scenario, RecordedArrivalTouchesDownAndSlowsOnTheRunway) {
    constexpr LatLon heathrow{51.4706, -0.461941};
    constexpr double elevationFt = 83.0;
    constexpr double lastFiveMinutes = 7450.0;
    ScenarioWorld world({.user = {51.49, -0.30}, .userAltFt = 6000.0});
    world.openAirport("EGLL", heathrow, elevationFt);
    world.feed(recorded("lfbo_egll_gate_to_gate_2024.csv", lastFiveMinutes));
    world.play(400);

    const standin::Aircraft* arrival = world.simulator().findTail("BAW3AK");
    ASSERT_NE(arrival, nullptr);
    const auto& history = arrival->history;
    const auto touchdown = std::find_if(history.begin(), history.end(),
                                        [](const standin::HistoryPoint& point) { return point.onGround; });
    ASSERT_NE(touchdown, history.end()) << "it never touched down";
    ASSERT_NE(touchdown, history.begin()) << "it did not appear in the air";
    constexpr std::ptrdiff_t framesBefore = 25;
    const auto before = std::prev(touchdown, framesBefore);
    const double sinkFpm =
        (touchdown->place.altFt - before->place.altFt) / (touchdown->atSeconds - before->atSeconds) * 60.0;
    EXPECT_LT(sinkFpm, -60.0) << "it floated";
    EXPECT_GT(sinkFpm, -350.0) << "it was driven into the ground";
    EXPECT_LT(history.back().airspeedKt, 60.0) << "it never slowed";
    const auto physics = physicalFacts(*arrival, arrival->createdAt + takeOverSeconds);
    EXPECT_LT(physics.largestStepRatio, 1.5);
    EXPECT_GT(physics.lowestAboveGroundFt, 0.0) << "it sank into the ground";
    EXPECT_LT(pathFacts(history, reportsOf(world.sent(), "BAW3AK")).medianOffLineM, 60.0);
}

TEST(Scenario, SameSeedGivesTheSameFlightsToTheLastBit) {
    // The recording with every fault there is, from its beginning to its end.
    const auto fly = [](std::uint32_t seed) {
        constexpr LatLon zurich{47.4647, 8.5492};
        ScenarioWorld world({.user = zurich, .userAltFt = 20000.0, .seed = seed});
        world.openAirport("LSZH", zurich, 1416.0);
        world.feed(recorded("noisy_uncleaned.csv"));
        std::vector<double> flown;
        world.play(4200, [&] {
            for (const LiveAc& ac : liveAcs) {
                const SimState& state = ac.simState;
                flown.insert(flown.end(),
                             {state.lat, state.lon, state.altFt, state.pitch, state.bank, state.heading});
            }
        });
        return flown;
    };
    const std::vector<double> first = fly(7);
    EXPECT_GT(first.size(), 100'000U);
    EXPECT_TRUE(first == fly(7)) << "another flight from the same seed";
}

TEST(Scenario, PauseFreezesTheTablesAndTheFlightGoesOn) {
    ScenarioWorld world({.user = {47.0, 8.0}, .userAltFt = 30000.0});
    world.feed(recorded("enroute_switzerland_2018.csv", 0.0));
    world.play(60);
    const std::size_t before = liveAcs.size();
    world.simulator().pause();
    world.play(1);
    ASSERT_FALSE(liveAcs.empty());
    const SimState paused = liveAcs.front().simState;
    world.play(20);
    EXPECT_EQ(liveAcs.front().simState.lat, paused.lat);
    EXPECT_EQ(liveAcs.size(), before);
    world.simulator().resume();
    world.play(20);
    EXPECT_NE(liveAcs.front().simState.lat, paused.lat);
    EXPECT_FALSE(world.exit());
}

TEST(Scenario, TeleportAndLoadedFlightAskForARestartQuitForTheEnd) {
    const std::pair<std::function<void(standin::World&)>, ExitReason> cases[] = {
        {[](standin::World& simulator) { simulator.placeUser(51.47, -0.45, 9000.0, false); },
         ExitReason::Restart},
        {[](standin::World& simulator) { simulator.loadFlight("other.fxml"); }, ExitReason::Restart},
        {[](standin::World& simulator) { simulator.quit(); }, ExitReason::SimClosed},
        {[](standin::World& simulator) { simulator.teleportUser(47.47, 8.55, 9000.0, false); },
         ExitReason::Restart},
    };
    for (const auto& [change, reason] : cases) {
        ScenarioWorld world;
        world.play(3);
        EXPECT_FALSE(world.exit());
        change(world.simulator());
        world.play(4);
        ASSERT_TRUE(world.exit().has_value());
        EXPECT_EQ(*world.exit(), reason);
    }
}

} // namespace
} // namespace kst
