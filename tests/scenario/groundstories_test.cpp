// Whole stories on the ground, in virtual time: what a spectator on the apron would see.

#include "catalogue/referencetables.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/reasoncounts.h"
#include "engine/categories.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "scenario/scenarioworld.h"
#include "support/engineworld.h"
#include "support/places.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace kst {
namespace {

using standin::TrafficReport;
using test::offset;
using test::ScenarioWorld;

constexpr LatLon zurich{47.4647, 8.5492};
constexpr double elevationFt = 1416.0;
constexpr double standHeadingDeg = 0.0;
constexpr std::uint32_t hexid = 20001;

/// The largest turn in one tick of every live aircraft on the ground, in rates of its size class.
class TurnWatch {
public:
    void look() {
        for (const LiveAc& ac : liveAcs) {
            if (ac.state != AcState::Live || !ac.onGround) {
                continue;
            }
            const auto [last, first] = headings_.try_emplace(ac.hexid, ac.simState.heading);
            const double rate = categoryRates(ac.category).baseTurnRateDeg * radPerDeg;
            largest_ = std::max(largest_, std::abs(gf_angleDiff(last->second, ac.simState.heading)) / rate);
            last->second = ac.simState.heading;
        }
    }
    double largest() const { return largest_; }

private:
    std::map<std::uint32_t, double> headings_;
    double largest_ = 0.0;
};

constexpr double fastestTurn = 3.001; ///< three times the rate of the size class, and rounding

/// What one aircraft on the ground reports, put together leg by leg.
class Ground {
public:
    explicit Ground(std::string_view callsign = "SWR100") {
        report_.hexid = hexid;
        report_.callsign = callsign;
        report_.registration = "HB-JLT";
        report_.type = "A320";
        report_.onGround = true;
        report_.headingDeg = standHeadingDeg;
    }
    Ground& at(LatLon place) {
        report_.position = place;
        return *this;
    }
    Ground& nose(double headingDeg) {
        report_.headingDeg = headingDeg;
        return *this;
    }
    Ground& pause(double seconds) {
        report_.at += seconds;
        return *this;
    }
    Ground& stand(double seconds) {
        report_.gsKt = 0.0;
        return report(seconds, 0.0, 0.0);
    }
    Ground& move(double bearingDeg, double metres, double kt) {
        report_.gsKt = kt;
        report_.trackDeg = bearingDeg;
        return report(metres / (kt * metresPerNm / 3600.0), bearingDeg, metres);
    }
    Ground& aircraft(std::string_view type, std::string_view registration) {
        report_.type = type;
        report_.registration = registration;
        return *this;
    }
    std::vector<TrafficReport> reports() const { return reports_; }

private:
    Ground& report(double seconds, double bearingDeg, double metres) {
        constexpr double interval = 3.0;
        const LatLon from = report_.position;
        const double begin = report_.at;
        for (double passed = interval; passed <= seconds; passed += interval) {
            report_.at = begin + passed;
            report_.position = offset(from, bearingDeg, metres * passed / seconds);
            reports_.push_back(report_);
        }
        report_.at = begin + seconds;
        report_.position = offset(from, bearingDeg, metres);
        return *this;
    }

    TrafficReport report_;
    std::vector<TrafficReport> reports_;
};

std::unique_ptr<standin::TrafficSource> drawn(std::vector<TrafficReport> reports) {
    std::ranges::sort(reports, {}, &TrafficReport::at);
    return std::make_unique<test::DrawnTraffic>(std::move(reports));
}

/// One stand that looks north, and a user in the air nearby.
class Apron {
public:
    Apron() : world({.user = {47.50, 8.55}, .userAltFt = 8000.0}) {
        world.openAirport("LSZH", zurich, elevationFt);
        addStand("A1", zurich);
    }

    void addStand(std::string_view id, LatLon place, double radiusM = 20.0) {
        ParkPos stand;
        stand.id = id;
        stand.latitude = place.lat;
        stand.longitude = place.lon;
        stand.heading = standHeadingDeg * radPerDeg;
        stand.radius = radiusM * nmPerMetre;
        parkPositions().push_back(stand);
        numberStands(parkPositions());
    }
    /// Plays so many seconds. Whether the first aircraft is there then.
    bool play(double seconds) {
        world.play(seconds, [this] {
            turns.look();
            const LiveAc* ac = liveByHexid(hexid);
            pushed = pushed || (ac != nullptr && ac->phase == AcPhase::PushBack);
        });
        const LiveAc* ac = liveByHexid(hexid);
        return ac != nullptr && ac->state == AcState::Live;
    }
    const LiveAc& first() { return *liveByHexid(hexid); }
    double metresFrom(LatLon place) {
        return gf_distanceNm(first().simState.position(), place) * metresPerNm;
    }
    double degreesOff(double headingDeg) {
        return std::abs(gf_angleDiff(first().simState.heading, headingDeg * radPerDeg)) * degPerRad;
    }

    ScenarioWorld world;
    TurnWatch turns;
    bool pushed = false;
};

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
        Ground way;
        way.at(zurich)
            .stand(45)
            .move(entry.moveDeg, 25, 3.0)
            .nose(entry.noseDeg)
            .move(entry.moveDeg, 15, 3.0);
        apron.world.feed(drawn(way.stand(120).reports()));
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

TEST(GroundStories, RecordedArrivalParksOnItsStandAndIsRemembered) {
    ScenarioWorld world({.user = {47.49, 8.55}, .userAltFt = 8000.0});
    world.openAirport("LSZH", zurich, elevationFt);
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
    world.openAirport("LSZH", zurich, elevationFt);
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

// One is parked, a second one rolls up and stops on the same stand.
TEST(GroundStories, TwoForOneStand) {
    for (const bool silent : {false, true}) {
        SCOPED_TRACE(silent ? "the first has fallen silent" : "the first still sends");
        Apron apron;
        std::vector<TrafficReport> reports = Ground().at(zurich).stand(silent ? 40 : 300).reports();
        Ground arrival("DLH1");
        arrival.at(offset(zurich, 180.0, 300.0)).stand(40).move(0.0, 300.0, 8.0).stand(120);
        for (TrafficReport report : arrival.reports()) {
            report.hexid = hexid + 1;
            report.registration = "D-AIZA";
            reports.push_back(report);
        }
        apron.world.feed(drawn(reports));
        apron.play(250);
        const auto stands = [](const LiveAc& ac) {
            return ac.state == AcState::Live &&
                   gf_distanceNm(ac.simState.position(), zurich) * metresPerNm < 15.0;
        };
        EXPECT_EQ(std::ranges::count_if(liveAcs, stands), 1) << "two aircraft stand in each other";
        const LiveAc* second = liveByHexid(hexid + 1);
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->phase, AcPhase::Parked);
    }
}

TEST(GroundStories, StandDisappearsUnderTheAircraft) {
    Apron apron;
    Ground way;
    way.at(zurich).stand(45).move(180.0, 60.0, 3.0).stand(60).move(180.0, 400.0, 10.0).stand(60);
    apron.world.feed(drawn(way.reports()));
    ASSERT_TRUE(apron.play(40));
    parkPositions().clear();
    ASSERT_TRUE(apron.play(80)) << "there is nowhere to push it from, so it stays";
    EXPECT_EQ(apron.first().phase, AcPhase::Parked);
    EXPECT_EQ(apron.metresFrom(zurich), 0.0);
    apron.play(100);
    EXPECT_EQ(reasonTotal(Reason::LeftStandFar), 1U) << "it is shown where nothing is any more";
}

TEST(GroundStories, ParkedAircraftDoesNotJumpAcrossTheAirport) {
    Apron apron;
    Ground way;
    way.at(zurich).stand(60).at(offset(zurich, 200.0, 3000.0)).stand(60);
    apron.world.feed(drawn(way.reports()));
    ASSERT_TRUE(apron.play(60));
    EXPECT_FALSE(apron.play(30));
    EXPECT_EQ(reasonTotal(Reason::LeftStandFar), 1U);
}

TEST(GroundStories, StandsWithoutSizeAndWithoutPlace) {
    Apron apron;
    parkPositions().front().radius = 0.0;
    apron.addStand("NOWHERE", {0.0, 0.0});
    apron.addStand("TINY", offset(zurich, 90.0, 100.0), 0.0);
    parkPositions().front().neighbours = {2, 3, 99};
    Ground way;
    way.at(offset(zurich, 90.0, 10.0)).stand(45).nose(40.0).move(180.0, 60.0, 3.0).stand(90);
    apron.world.feed(drawn(way.reports()));
    ASSERT_TRUE(apron.play(170));
    EXPECT_TRUE(apron.pushed);
    EXPECT_LT(apron.metresFrom(zurich), 100.0);
    EXPECT_LT(apron.turns.largest(), fastestTurn);
    EXPECT_TRUE(parkPositions().front().radius_change);
}

// Aircraft roll onto stands drawn from the real airport, some of them overlapping, and stop up to 8 m off.
TEST(GroundStories, BusyApron) {
    ScenarioWorld world({.user = {47.49, 8.55}, .userAltFt = 8000.0});
    world.openAirport("LSZH", zurich, elevationFt);
    world.loadStands("LSZH");
    std::vector<TrafficReport> reports;
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
        Ground way(fmt::format("SWR{}", 100 + i));
        way.aircraft(small ? "C172" : "A320", fmt::format("HB-J{:02}", i)).nose(nose);
        way.at(offset(stand.position(), nose + 180.0, 400.0)).pause(4.0 * i).move(nose, 400.0, 10.0);
        way.at(offset(stand.position(), randomBelow(360), randomBelow(8))).stand(100);
        for (TrafficReport report : way.reports()) {
            report.hexid = hexid + i;
            reports.push_back(report);
        }
    }
    world.feed(drawn(reports));
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
        Ground stay;
        stay.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(50);
        apron.world.feed(drawn(stay.reports()));
        apron.play(50);
        apron.world.advanceClock(std::chrono::minutes{29});
        Ground leaves;
        leaves.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(20);
        apron.world.feed(drawn(leaves.move(180.0, 900.0, 20.0).reports()));
        apron.play(230);
        apron.world.advanceClock(std::chrono::minutes{static_cast<int>(entry.awayMinutes)});
        Ground back;
        back.aircraft(entry.type, entry.registration).at(offset(zurich, 90.0, 5.0)).stand(90);
        apron.world.feed(drawn(back.reports()));
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
    apron.world.feed(drawn(Ground().at(begin).stand(35).move(90.0, 300.0, 12.0).reports()));
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
