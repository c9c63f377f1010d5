// Flights as a spectator sees them, each one story: take-off, go-around, touch and go, a feed that falls
// silent or lies, jitter, ghosts, another callsign, helicopters, circling.

#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "engine/tables.h"
#include "scenario/flightfacts.h"
#include "scenario/scenarioworld.h"
#include "support/engineworld.h"

#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace kst {
namespace {

using standin::Aircraft;
using standin::HistoryPoint;
using standin::TrafficReport;
using test::offset;
using test::pathFacts;
using test::physicalFacts;
using test::recorded;
using test::reportsOf;
using test::ScenarioWorld;
using Reports = std::vector<TrafficReport>;

constexpr LatLon zurich{47.4647, 8.5492};
constexpr double zurichFt = 1416.0;
constexpr double takeOverSeconds = 4.0;
constexpr double reportEveryS = 3.0;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// A piece of a drawn flight: what it comes to, and in which time.
struct Piece {
    double seconds;
    double toGsKt;
    double toAltFt;
    double turnDegS = 0.0;
};

/// Draws a flight from the place where it begins; at the field's elevation it is on the ground.
Reports drawn(LatLon place, double trackDeg, double gsKt, double altFt, const std::vector<Piece>& pieces,
              const std::string& type = "A320") {
    Reports reports;
    double at = 0.0;
    double nextReport = 0.0;
    for (const Piece& piece : pieces) {
        const double gsPerSecond = (piece.toGsKt - gsKt) / piece.seconds;
        const double ftPerSecond = (piece.toAltFt - altFt) / piece.seconds;
        constexpr double stepS = 0.5;
        for (double into = 0.0; into < piece.seconds; into += stepS) {
            if (at >= nextReport) {
                const bool onGround = altFt <= zurichFt + 1.0;
                TrafficReport report;
                report.at = at;
                report.hexid = 20001;
                report.callsign = "SWR100";
                report.type = type;
                report.position = place;
                report.altFt = onGround ? 0.0 : altFt;
                report.vsFpm = onGround ? 0.0 : ftPerSecond * 60.0;
                report.gsKt = gsKt;
                report.trackDeg = trackDeg;
                report.onGround = onGround;
                reports.push_back(report);
                nextReport += reportEveryS;
            }
            place = offset(place, trackDeg, gsKt * metresPerNm / 3600.0 * stepS);
            trackDeg = std::fmod(trackDeg + piece.turnDegS * stepS + 360.0, 360.0);
            gsKt += gsPerSecond * stepS;
            altFt += ftPerSecond * stepS;
            at += stepS;
        }
    }
    return reports;
}

/// An approach along the track 140 to a threshold at the field, from 6 miles out down to this height above
/// it.
constexpr double finalDeg = 140.0;
constexpr double approachKt = 140.0;
Reports approachThen(double lowestAboveFieldFt, std::vector<Piece> then) {
    constexpr double glideFtPerSecond = 12.5;
    constexpr double fromFt = 2500.0;
    const double seconds = (fromFt - lowestAboveFieldFt) / glideFtPerSecond;
    const double metres = approachKt * metresPerNm / 3600.0 * (seconds + 60.0);
    std::vector<Piece> pieces = {{60.0, approachKt, zurichFt + fromFt},
                                 {seconds, approachKt, zurichFt + lowestAboveFieldFt}};
    pieces.insert(pieces.end(), then.begin(), then.end());
    return drawn(offset(zurich, finalDeg + 180.0, metres), finalDeg, approachKt, zurichFt + fromFt, pieces);
}

class FlightStory : public ::testing::Test {
protected:
    FlightStory() : world({.user = zurich, .userAltFt = 20000.0}) {
        world.openAirport("LSZH", zurich, zurichFt);
    }

    void fly(Reports reports, double seconds, const std::function<void()>& eachTick = {}) {
        world.feed(std::make_unique<test::DrawnTraffic>(std::move(reports)));
        world.play(seconds, eachTick);
    }

    /// The object of the flight, present or gone.
    const Aircraft* shown(const std::string& tail = "SWR100") {
        if (const Aircraft* present = world.simulator().findTail(tail)) {
            return present;
        }
        for (const Aircraft& gone : world.simulator().gone()) {
            if (gone.tailNumber == tail) {
                return &gone;
            }
        }
        return nullptr;
    }

    /// What holds on every flight: no step, no spin, no wing or nose that snaps, never in the ground.
    static void expectSense(const Aircraft& aircraft, double mostTurnDegS = 10.0,
                            double mostStepRatio = 1.5) {
        const auto facts = physicalFacts(aircraft, aircraft.createdAt + takeOverSeconds);
        EXPECT_LT(facts.largestStepRatio, mostStepRatio);
        EXPECT_LT(facts.largestTurnRateDegS, mostTurnDegS);
        EXPECT_LT(facts.largestPitchRateDegS, 5.0);
        EXPECT_LT(facts.largestBankRateDegS, 12.0);
        EXPECT_GT(facts.lowestAboveGroundFt, aircraft.sizes.cgToGroundFt - 0.6) << "it sank into the ground";
    }

    /// How often the wheels came down after a flight, and how often they left the ground.
    static std::pair<int, int> contacts(const Aircraft& aircraft) {
        int down = 0;
        int up = 0;
        for (std::size_t i = 1; i < aircraft.history.size(); ++i) {
            if (aircraft.history[i].atSeconds < aircraft.createdAt + takeOverSeconds) {
                continue;
            }
            down += !aircraft.history[i - 1].onGround && aircraft.history[i].onGround ? 1 : 0;
            up += aircraft.history[i - 1].onGround && !aircraft.history[i].onGround ? 1 : 0;
        }
        return {down, up};
    }

    /// Feet per minute in the half second before the wheels come down.
    static double touchdownFpm(const Aircraft& aircraft) {
        constexpr std::size_t framesBefore = 25;
        const auto& history = aircraft.history;
        for (std::size_t i = framesBefore + 1; i < history.size(); ++i) {
            const HistoryPoint& before = history[i - 1];
            const HistoryPoint& start = history[i - 1 - framesBefore];
            if (history[i].onGround && !before.onGround && start.atSeconds > aircraft.createdAt) {
                return (before.place.altFt - start.place.altFt) / (before.atSeconds - start.atSeconds) * 60.0;
            }
        }
        return 0.0;
    }

    static void expectGentleTouchdown(const Aircraft& aircraft) {
        EXPECT_LT(touchdownFpm(aircraft), -60.0);
        EXPECT_GT(touchdownFpm(aircraft), -350.0);
    }

    ScenarioWorld world;
};

using Contacts = std::pair<int, int>;

TEST_F(FlightStory, RecordedDepartureRollsLiftsOffOnceAndClimbsAway) {
    world.feed(recorded("lszh_surface_2019.csv", 2681938.0));
    world.filterFeed([](const TrafficReport& report) { return report.callsign == "ACA879"; });
    world.play(900);
    const Aircraft* departure = shown("ACA879");
    ASSERT_NE(departure, nullptr);
    EXPECT_EQ(contacts(*departure), Contacts(0, 1));
    EXPECT_GT(departure->history.back().aboveGroundFt, 2000.0);
    EXPECT_FALSE(departure->gearDown);
    expectSense(*departure, 25.0);
}

TEST_F(FlightStory, GoAroundNeverTouchesAndCleansUp) {
    fly(approachThen(250.0, {{60.0, 150.0, zurichFt + 2200.0}, {90.0, 220.0, zurichFt + 5000.0}}), 400.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(contacts(*aircraft), Contacts(0, 0));
    EXPECT_GT(aircraft->history.back().aboveGroundFt, 2500.0);
    EXPECT_FALSE(aircraft->gearDown);
    EXPECT_EQ(aircraft->flapsPercent, 0.0);
    expectSense(*aircraft);
}

TEST_F(FlightStory, LandingTouchesOnceGentlyAndSlowsToATaxi) {
    fly(approachThen(40.0, {{5.0, 135.0, zurichFt}, {35.0, 30.0, zurichFt}, {60.0, 15.0, zurichFt}}), 360.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(contacts(*aircraft), Contacts(1, 0));
    expectGentleTouchdown(*aircraft);
    EXPECT_LT(aircraft->history.back().airspeedKt, 35.0);
    EXPECT_TRUE(aircraft->gearDown);
    expectSense(*aircraft);
}

TEST_F(FlightStory, ApproachThatFallsSilentLandsAllTheSame) {
    fly(approachThen(400.0, {}), 330.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(contacts(*aircraft), Contacts(1, 0));
    expectGentleTouchdown(*aircraft);
    // It brakes from 60 to 30 kt within a leg, at the mean of both.
    expectSense(*aircraft, 10.0, 1.6);
}

TEST_F(FlightStory, LightsGearFlapsAndBrakesFollowTheArrival) {
    constexpr double glideFtPerSecond = 12.5;
    constexpr double fromFt = 11000.0;
    const double seconds = (fromFt - zurichFt) / glideFtPerSecond;
    const double metres = approachKt * metresPerNm / 3600.0 * (seconds + 60.0);
    const Reports reports = drawn(offset(zurich, finalDeg + 180.0, metres), finalDeg, approachKt, fromFt,
                                  {{60.0, approachKt, fromFt},
                                   {seconds, approachKt, zurichFt},
                                   {35.0, 30.0, zurichFt},
                                   {20.0, 15.0, zurichFt},
                                   {15.0, 12.0, zurichFt, 6.0},
                                   {40.0, 12.0, zurichFt}});
    using namespace standin;
    constexpr std::uint32_t high = LightNav | LightBeacon | LightCabin;
    constexpr std::uint32_t afterRollout = LightNav | LightBeacon | LightTaxi | LightLogo | LightCabin;
    int seen[6] = {};
    double braked = 0.0;
    fly(reports, seconds + 260.0, [&] {
        const Aircraft* aircraft = world.simulator().findTail("SWR100");
        if (aircraft == nullptr || liveAcs.empty() || liveAcs.front().state != AcState::Live) {
            return;
        }
        const double agl = aircraft->place.altFt - zurichFt;
        const bool down = onGround(*aircraft, world.simulator().terrain());
        const auto is = [&](int stage, bool when) { return when && ++seen[stage] > 400; };
        if (is(0, aircraft->place.altFt > 10300.0)) {
            ASSERT_EQ(aircraft->lights, high);
            ASSERT_FALSE(aircraft->gearDown);
        } else if (is(1, aircraft->place.altFt < 9700.0 && agl > 2700.0)) {
            ASSERT_EQ(aircraft->lights, allLights);
            ASSERT_FALSE(aircraft->gearDown);
            ASSERT_EQ(aircraft->flapsPercent, 0.0);
        } else if (is(2, agl < 1700.0 && !down)) {
            ASSERT_EQ(aircraft->lights, allLights & ~LightCabin);
            ASSERT_TRUE(aircraft->gearDown);
            ASSERT_EQ(aircraft->flapsPercent, 100.0);
            ASSERT_EQ(aircraft->spoilersPercent, 0.0);
        } else if (is(3, down && aircraft->airspeedKt > 100.0)) {
            braked = std::max(braked, std::min(aircraft->spoilersPercent, aircraft->throttlePercent[0]));
        } else if (is(4, down && aircraft->airspeedKt < 80.0 && liveAcs.front().rollingOut)) {
            ASSERT_EQ(aircraft->spoilersPercent, 0.0);
            ASSERT_EQ(aircraft->throttlePercent[0], 0.0);
        } else if (is(5, down && liveAcs.front().touchdownHeading == 0.0)) {
            ASSERT_EQ(aircraft->lights, afterRollout);
            ASSERT_EQ(aircraft->flapsPercent, 0.0);
            ASSERT_EQ(aircraft->spoilersPercent, 0.0);
            ASSERT_EQ(aircraft->throttlePercent[0], 0.0);
        }
    });
    for (const int passes : seen) {
        EXPECT_GT(passes, 400) << "a part of the flight was not flown";
    }
    EXPECT_EQ(braked, 100.0);
}

TEST_F(FlightStory, TouchAndGoTouchesOnceAndFliesOn) {
    fly(approachThen(40.0, {{5.0, 135.0, zurichFt},
                            {9.0, 130.0, zurichFt},
                            {60.0, 150.0, zurichFt + 1800.0},
                            {60.0, 200.0, zurichFt + 4000.0}}),
        400.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(contacts(*aircraft), Contacts(1, 1));
    EXPECT_GT(aircraft->history.back().aboveGroundFt, 2000.0);
    expectSense(*aircraft);
}

TEST_F(FlightStory, SilenceOfFortySecondsIsFlownThroughBySameObject) {
    Reports reports = drawn(offset(zurich, 270.0, 60000.0), 80.0, 280.0, 12000.0, {{200.0, 280.0, 12000.0}});
    std::erase_if(reports, [](const TrafficReport& report) { return report.at > 60.0 && report.at < 100.0; });
    fly(reports, 200.0);
    EXPECT_EQ(world.simulator().created(), 1U);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    expectSense(*aircraft);
    EXPECT_LT(pathFacts(aircraft->history, reports).p95OffLineM, 150.0);
}

TEST_F(FlightStory, FeedThatLiesShowsNeitherJumpNorSpin) {
    const Reports truth =
        drawn(offset(zurich, 270.0, 60000.0), 80.0, 280.0, 12000.0,
              {{60.0, 280.0, 12000.0}, {60.0, 280.0, 12000.0, 1.0}, {120.0, 260.0, 9000.0}});
    const std::function<void(TrafficReport&)> lies[] = {
        [](TrafficReport& report) { report.position = offset(report.position, 10.0, 40000.0); },
        [](TrafficReport& report) { report.altFt = 25.0; },
        [](TrafficReport& report) { report.altFt = 45000.0; },
        [](TrafficReport& report) { report.gsKt = 4.0; },
        [](TrafficReport& report) { report.position.lat = notANumber; },
        [](TrafficReport& report) { report.gsKt = infinite; },
        [](TrafficReport& report) { report.altFt = notANumber; },
        [](TrafficReport& report) { report.vsFpm = -infinite; },
        [](TrafficReport& report) { report.trackDeg = notANumber; },
        [](TrafficReport& report) { report.headingDeg = notANumber; },
        [](TrafficReport& report) { report.rollDeg = infinite; },
    };
    Reports told;
    for (std::size_t i = 0; i < truth.size(); ++i) {
        told.push_back(truth[i]);
        told.push_back(truth[i]); // each one twice
        TrafficReport lie = truth[i];
        lie.at += 1.2;
        if (i % 5 == 4) {
            lie.position = truth[i - 4].position; // an old one once more
        } else {
            lies[i % std::size(lies)](lie);
        }
        told.push_back(lie);
    }
    fly(told, 270.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(world.simulator().created(), 1U);
    expectSense(*aircraft);
    EXPECT_LT(pathFacts(aircraft->history, truth).medianOffLineM, 60.0);
    for (const HistoryPoint& point : aircraft->history) {
        ASSERT_TRUE(std::isfinite(point.place.lat + point.place.lon + point.place.altFt +
                                  point.place.pitchRad + point.place.bankRad + point.place.headingRad +
                                  point.airspeedKt + point.vsFps));
    }
    EXPECT_GT(reasonTotal(Reason::PlaceImplausible), 10U);
    EXPECT_GT(reasonTotal(Reason::MalformedLine), 10U);
}

TEST_F(FlightStory, StandingTargetThatJittersStandsStill) {
    Reports reports = drawn(zurich, 90.0, 0.0, zurichFt, {{150.0, 0.0, zurichFt}});
    const LatLon place = reports.front().position;
    for (std::size_t i = 0; i < reports.size(); ++i) {
        reports[i].position = offset(place, 77.0 * static_cast<double>(i), 5.0);
        reports[i].trackDeg = std::fmod(143.0 * static_cast<double>(i), 360.0);
        reports[i].altFt = i % 2 == 0 ? 0.0 : 30.0 * static_cast<double>(i % 4);
    }
    fly(reports, 150.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    const auto& history = aircraft->history;
    const auto settled = std::find_if(history.begin(), history.end(), [&](const HistoryPoint& point) {
        return point.atSeconds > aircraft->createdAt + takeOverSeconds;
    });
    ASSERT_NE(settled, history.end());
    EXPECT_EQ(settled->place.lat, history.back().place.lat);
    EXPECT_EQ(settled->place.lon, history.back().place.lon);
    EXPECT_EQ(settled->place.headingRad, history.back().place.headingRad);
    EXPECT_EQ(settled->place.altFt, history.back().place.altFt);
}

TEST_F(FlightStory, TaxiRollsThroughAShortStopAndWaitsOutALongOne) {
    const Reports reports = drawn(zurich, 90.0, 15.0, zurichFt,
                                  {{60.0, 15.0, zurichFt},
                                   {0.5, 0.0, zurichFt},
                                   {8.0, 0.0, zurichFt},
                                   {0.5, 15.0, zurichFt},
                                   {40.0, 15.0, zurichFt},
                                   {0.5, 0.0, zurichFt},
                                   {40.0, 0.0, zurichFt},
                                   {0.5, 15.0, zurichFt},
                                   {60.0, 15.0, zurichFt}});
    fly(reports, 230.0);
    const Aircraft* aircraft = shown();
    ASSERT_NE(aircraft, nullptr);
    std::vector<double> stops; // seconds each
    double since = -1.0;
    for (const HistoryPoint& point : aircraft->history) {
        const double at = point.atSeconds;
        if (at < aircraft->createdAt + takeOverSeconds || at > 30.0 + reports.back().at) {
            continue;
        }
        if (point.airspeedKt == 0.0) {
            since = since < 0.0 ? at : since;
        } else if (since >= 0.0) {
            stops.push_back(at - since);
            since = -1.0;
        }
    }
    ASSERT_EQ(stops.size(), 1U);
    EXPECT_NEAR(stops.front(), 40.0, 12.0);
}

TEST_F(FlightStory, RealTargetReplacesItsGhost) {
    Reports reports = drawn(offset(zurich, 270.0, 40000.0), 80.0, 280.0, 12000.0, {{150.0, 280.0, 12000.0}});
    Reports both;
    for (TrafficReport report : reports) {
        TrafficReport ghost = report;
        ghost.hexid = 20002;
        ghost.callsign = "SWR100_";
        ghost.position = offset(ghost.position, 170.0, 3000.0);
        both.push_back(ghost);
        if (report.at > 40.0) {
            both.push_back(report);
        }
    }
    bool ghostSeen = false;
    fly(both, 120.0, [&] { ghostSeen = ghostSeen || world.simulator().findTail("SWR100_") != nullptr; });
    EXPECT_TRUE(ghostSeen);
    EXPECT_EQ(world.simulator().findTail("SWR100_"), nullptr);
    EXPECT_NE(world.simulator().findTail("SWR100"), nullptr);
}

TEST_F(FlightStory, AnotherCallsignAppearsInTheSamePlaceUnderItsNewName) {
    GUID_CHANGES.set(true);
    Reports reports = drawn(offset(zurich, 270.0, 60000.0), 80.0, 280.0, 12000.0, {{200.0, 280.0, 12000.0}});
    for (TrafficReport& report : reports) {
        report.callsign = report.at < 80.0 ? "SWR100" : "SWR200";
    }
    fly(reports, 200.0);
    const Aircraft* before = shown("SWR100");
    const Aircraft* after = world.simulator().findTail("SWR200");
    ASSERT_NE(before, nullptr);
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(world.simulator().findTail("SWR100"), nullptr);
    const standin::Placement& left = before->history.back().place;
    const standin::Placement& came = after->history.front().place;
    EXPECT_LT(standin::groundDistanceM(left.lat, left.lon, came.lat, came.lon), 2000.0);
    EXPECT_LT(pathFacts(after->history, reports).p95OffLineM, 150.0);
}

TEST_F(FlightStory, DriftStaysWithinItsLimitsBothWays) {
    // The speeds that the feed tells are wrong by a tenth.
    for (const double factor : {1.1, 0.9}) {
        SCOPED_TRACE(factor);
        Reports reports =
            drawn(offset(zurich, 270.0, 60000.0), 80.0, 280.0, 12000.0, {{400.0, 280.0, 12000.0}});
        const double from = world.seconds();
        for (TrafficReport& report : reports) {
            report.gsKt *= factor;
            report.callsign = factor > 1.0 ? "FAST" : "SLOW";
            report.hexid += factor > 1.0 ? 1 : 2;
        }
        fly(reports, 400.0);
        for (TrafficReport& report : reports) {
            report.at += from;
        }
        const Aircraft* aircraft = shown(factor > 1.0 ? "FAST" : "SLOW");
        ASSERT_NE(aircraft, nullptr);
        const auto path = pathFacts(aircraft->history, reports);
        EXPECT_LT(path.largestLeadS, 10.5);
        EXPECT_LT(path.largestLagS, 10.5);
        EXPECT_GT(factor > 1.0 ? path.largestLeadS : path.largestLagS, 9.0) << "the limit was never reached";
        expectSense(*aircraft);
    }
}

TEST_F(FlightStory, SmallOnesCircleAndHover) {
    LIGHT_AIRCRAFT.set(true);
    HELICOPTERS.set(true);
    const std::pair<const char*, std::vector<Piece>> flights[] = {
        {"GLIM", {{60.0, 55.0, 5000.0}, {180.0, 55.0, 6500.0, 12.0}}},
        {"EC35", {{60.0, 100.0, 3000.0}, {60.0, 40.0, 2600.0}, {90.0, 45.0, 2600.0, -6.0}}},
    };
    for (const auto& [type, pieces] : flights) {
        SCOPED_TRACE(type);
        Reports reports = drawn(offset(zurich, 200.0, 9000.0), 30.0, pieces.front().toGsKt,
                                pieces.front().toAltFt, pieces, type);
        const double from = world.seconds();
        for (TrafficReport& report : reports) {
            report.callsign = type;
            report.hexid += static_cast<std::uint32_t>(type[0]);
        }
        fly(reports, 270.0);
        for (TrafficReport& report : reports) {
            report.at += from;
        }
        const Aircraft* aircraft = shown(type);
        ASSERT_NE(aircraft, nullptr);
        expectSense(*aircraft, 25.0);
        EXPECT_LT(pathFacts(aircraft->history, reports).p95OffLineM, 60.0);
    }
}

} // namespace
} // namespace kst
