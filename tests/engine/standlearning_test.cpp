// What is recorded on a stand: the observations that are left after an aircraft came, stayed and went.

#include "catalogue/referencetables.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/prediction.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/learning.h"
#include "parking/stands.h"
#include "support/engineworld.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr DayHH late{1, 47}; // Monday 23:30 to 24:00
constexpr DayHH early{2, 0}; // Tuesday 00:00 to 00:30
constexpr bool extend = true;
constexpr bool leaving = true;

/// A stand's observations as text: "day:half hours callsign/second callsign", soft ones in brackets.
std::string recordOf(const ParkPos& stand) {
    std::string text;
    for (const ParkOption& option : stand.options) {
        std::string hours;
        for (std::size_t hh = 0; hh < option.hours.size(); ++hh) {
            hours += option.hours.test(hh) ? fmt::format("{}{}", hours.empty() ? "" : ",", hh) : "";
        }
        std::string entry = fmt::format("{}:{} {}", option.day, hours, option.cs);
        entry += option.cs2.empty() ? "" : "/" + option.cs2;
        text += (text.empty() ? "" : "; ") + (option.real ? entry : "(" + entry + ")");
    }
    return text;
}

class StandLearning : public ::testing::Test {
protected:
    StandLearning() {
        world.openAirport();
        clearStandChanges();
        world.addStand("A1", airportPlace);
        ac = world.addLive("SWR100", AcState::Live, AcPhase::Parked, {groundPoint(airportPlace, 0.0, 90000)});
        ac.airline = "SWR";
        ac.regcode = "HB-JLT";
    }

    /// Seen on the stand; an arrival unless told.
    bool see(DayHH when, bool extends = false, bool leaves = false) {
        return lf_addRealParkPosOption(1, ac, extends, when, leaves);
    }
    std::string record() { return recordOf(parkPositions().front()); }
    void clearRecord() {
        ParkPos& stand = parkPositions().front();
        stand.options.clear();
        stand.realVisits.clear();
        stand.softVisits.clear();
    }

    EngineWorld world;
    LiveAc ac;
};

struct Sight {
    DayHH when;
    bool extends;
    bool leaves;
};

TEST_F(StandLearning, HalfHoursOfAStay) {
    struct Case {
        const char* name;
        std::vector<Sight> sights;
        const char* record;
    };
    const Case cases[] = {
        {"came and went", {{{1, 20}, false, false}, {{1, 21}, extend, leaving}}, "1:20,21 SWR100"},
        {"stayed two and a half hours",
         {{{1, 20}, false, false}, {{1, 25}, extend, leaving}},
         "1:20,21,22,23,24,25 SWR100"},
        {"silent for three hours", {{{1, 20}, false, false}, {{1, 26}, extend, leaving}}, "1:20,26 SWR100"},
        {"seen again and again",
         {{{1, 20}, false, false}, {{1, 24}, extend, false}, {{1, 28}, extend, false}},
         "1:20,21,22,23,24,25,26,27,28 SWR100"},
        {"came back soon after leaving",
         {{{1, 20}, false, false}, {{1, 21}, extend, leaving}, {{1, 24}, false, false}},
         "1:20,21,24 SWR100"},
        {"23:40 and 00:10", {{late, false, false}, {early, extend, false}}, "1:47 SWR100; 2:0 SWR100"},
        {"over midnight",
         {{{1, 46}, false, false}, {{2, 2}, extend, leaving}},
         "1:46,47 SWR100; 2:0,1,2 SWR100"},
        {"over midnight of the week",
         {{{7, 47}, false, false}, {{1, 1}, extend, leaving}},
         "7:47 SWR100; 1:0,1 SWR100"},
        {"over midnight, too long",
         {{{1, 44}, false, false}, {{2, 2}, extend, leaving}},
         "1:44 SWR100; 2:2 SWR100"},
        {"over midnight to a day that is known",
         {{{2, 10}, false, false}, {{1, 46}, false, false}, {{2, 1}, extend, leaving}},
         "2:0,1,10 SWR100; 1:46,47 SWR100"},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        clearRecord();
        for (const Sight& sight : entry.sights) {
            see(sight.when, sight.extends, sight.leaves);
        }
        EXPECT_EQ(record(), entry.record);
        EXPECT_TRUE(!entry.sights.back().leaves || parkPositions().front().realVisits.empty());
    }
}

TEST_F(StandLearning, ChangesAreCountedAndNothingElse) {
    EXPECT_TRUE(see({1, 20}));
    EXPECT_FALSE(see({1, 20})) << "known";
    EXPECT_FALSE(see({1, 20}, extend, leaving)) << "known";
    EXPECT_TRUE(see({1, 22}));
    EXPECT_EQ(standChanges(), 2U);
    parkPositions().front().options.front().fromArchive = true;
    EXPECT_FALSE(see({1, 30})) << "an observation of the archive does not grow";
    EXPECT_EQ(record(), "1:20,22 SWR100");
    EXPECT_TRUE(see({3, 30}));
    EXPECT_EQ(record(), "1:20,22 SWR100; 3:30 SWR100");

    EXPECT_FALSE(lf_addRealParkPosOption(9, ac, false, {1, 3}, false)) << "no such stand";
    LiveAc nameless = ac;
    nameless.callsign.clear();
    EXPECT_FALSE(lf_addRealParkPosOption(1, nameless, false, {1, 3}, false));
    EXPECT_FALSE(lf_addSoftParkPosOption(1, nameless, false, {1, 3}));
    LiveAc unregistered = ac;
    unregistered.regcode.clear();
    EXPECT_FALSE(lf_addRealParkPosOption(1, unregistered, false, {1, 3}, false));
    EXPECT_FALSE(lf_addRealParkPosOption(1, ac, false, {5, 48}, false)) << "no half hour";
    EXPECT_EQ(standChanges(), 3U);
}

TEST_F(StandLearning, SecondFlightOfAVisit) {
    see({1, 20});
    ac.callsign = "SWR101_";
    see({1, 22}, extend, leaving);
    EXPECT_EQ(record(), "1:20,21,22 SWR100/SWR101");
}

TEST_F(StandLearning, WhoFliesItIsTakenFromTheReference) {
    referenceTables().regcodeTable.insert("HB-JLT", {"EDW", "A20N", "SWR", false});
    ac.airline = "XXX";
    ac.acType = "A321";
    see({1, 20});
    ac.regcode = "D-ABCD";
    see({1, 20});
    const auto& options = parkPositions().front().options;
    EXPECT_EQ(options[0].airl + " " + options[0].type, "SWR A20N");
    EXPECT_EQ(options[1].airl + " " + options[1].type, "XXX A321");
    EXPECT_EQ(options[1].seq, 2U);
}

TEST_F(StandLearning, DeadObservationsMakeRoom) {
    see({1, 20});
    see({2, 20});
    see({3, 20});
    auto& options = parkPositions().front().options;
    options[1].seq = 0;
    options[2].seq = 0;
    see({4, 20});
    EXPECT_EQ(record(), "1:20 SWR100; 4:20 SWR100");
    EXPECT_EQ(options.back().seq, 2U);
}

TEST_F(StandLearning, GuessesAreKeptApart) {
    EXPECT_TRUE(lf_addSoftParkPosOption(1, ac, false, {1, 20}));
    EXPECT_TRUE(lf_addSoftParkPosOption(1, ac, extend, {1, 23}));
    EXPECT_FALSE(lf_addSoftParkPosOption(1, ac, extend, {1, 23}));
    EXPECT_EQ(record(), "(1:20,21,22,23 SWR100)");
    EXPECT_TRUE(lf_addSoftParkPosOption(1, ac, extend, {1, 29})) << "after too long a gap";
    EXPECT_TRUE(see({1, 20}));
    EXPECT_EQ(record(), "(1:20,21,22,23,29 SWR100); 1:20 SWR100");
    LiveAc unregistered = ac;
    unregistered.regcode.clear();
    EXPECT_TRUE(lf_addSoftParkPosOption(1, unregistered, false, {1, 20}));
    unregistered.acType = "B738";
    EXPECT_TRUE(lf_addSoftParkPosOption(1, unregistered, false, {1, 20})) << "another aircraft";
}

TEST_F(StandLearning, FreighterMakesACargoStand) {
    ParkPos& stand = parkPositions().front();
    ac.sid = stand.sid;
    lf_markCargoStand(ac);
    EXPECT_FALSE(stand.cargo);
    ac.cargo = true;
    lf_markCargoStand(ac);
    lf_markCargoStand(ac);
    EXPECT_TRUE(stand.cargo && stand.cargo_change && ac.standCargo);
    EXPECT_EQ(standChanges(), 1U);
    ac.sid = 99;
    lf_markCargoStand(ac);
}

TEST_F(StandLearning, NotAgainWithinThreeHalfHours) {
    EXPECT_TRUE(lf_mayLearn({1, 46}, 7, false));
    EXPECT_FALSE(lf_mayLearn({2, 0}, 7, false));
    EXPECT_TRUE(lf_mayLearn({2, 0}, 7, true));
    EXPECT_TRUE(lf_mayLearn({2, 0}, 8, false));
    EXPECT_FALSE(lf_mayLearn({2, 2}, 7, false));
    EXPECT_TRUE(lf_mayLearn({2, 3}, 7, false));
    lf_noteLearner(8, {2, 3});
    EXPECT_FALSE(lf_mayLearn({2, 5}, 8, false));
    resetStandSelection();
    EXPECT_TRUE(lf_mayLearn({2, 5}, 8, false));
}

TEST_F(StandLearning, VanishedAircraftIsLearnedOnlyWhereItMayBe) {
    struct Case {
        const char* name;
        std::function<void(LiveAc&)> change;
        bool force, learned;
    };
    const Case cases[] = {
        {"low", [](LiveAc& it) { it.heightAgl = 2499.0; }, false, true},
        {"high", [](LiveAc& it) { it.heightAgl = 2500.0; }, false, false},
        {"high but on its way to the runway", [](LiveAc& it) { it.heightAgl = 2500.0; }, true, true},
        {"far", [](LiveAc& it) { it.simState.lat += 0.09; }, true, false},
        {"has a stand", [](LiveAc& it) { it.sid = 1; }, true, false},
        {"switched off", [](LiveAc&) { LEARN_SOFT.set(false); }, true, false},
        {"no airport", [](LiveAc&) { setParkAirport(std::nullopt); }, true, false},
        {"learned from just now",
         [](LiveAc& it) {
             lf_noteLearner(it.hexid, {1, 19});
         },
         true, false},
        {"seen on a stand half an hour ago",
         [](LiveAc& it) {
             lf_addRealParkPosOption(2, it, false, {1, 19}, true);
         },
         true, false},
        {"seen on a stand an hour ago",
         [](LiveAc& it) {
             lf_addRealParkPosOption(2, it, false, {1, 18}, true);
         },
         true, true},
    };
    world.addStand("A2", offset(airportPlace, 90.0, 100.0), 3.0);
    nowStamp = DayHH{1, 20}.packed();
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        clearRecord();
        parkPositions()[1].options.clear();
        resetStandSelection();
        LEARN_SOFT.set(true);
        world.openAirport();
        LiveAc it = ac;
        entry.change(it);
        lf_learnSoft(it, entry.force);
        EXPECT_EQ(record(), entry.learned ? "(1:20 SWR100)" : "");
    }
}

TEST_F(StandLearning, DepartureAndTheEndOfATrackAreMomentsToLearnFrom) {
    struct Case {
        const char* name;
        AcPhase phase;
        double heightFt;
        const char* airline;
        void (*what)(LiveAc&);
        bool learned;
    };
    const Case cases[] = {
        {"departs", AcPhase::Taxi, 9000, "SWR", lf_startDeparture, true},
        {"departs without operator", AcPhase::Taxi, 9000, "", lf_startDeparture, false},
        {"ends on a taxiway", AcPhase::Taxi, 9000, "SWR", nextPosMain, true},
        {"ends in the air, high", AcPhase::Air, 9000, "SWR", nextPosMain, false},
        {"ends in the air, low", AcPhase::Air, 900, "SWR", nextPosMain, true},
        {"ends on its stand", AcPhase::Parked, 0, "SWR", nextPosMain, false},
    };
    nowStamp = DayHH{1, 20}.packed();
    LEARN_SOFT.set(true);
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        clearRecord();
        resetStandSelection();
        LiveAc it = ac;
        it.phase = entry.phase;
        it.heightAgl = entry.heightFt;
        it.airline = entry.airline;
        it.reckonLeft = -1;
        it.departing = true;
        entry.what(it);
        EXPECT_EQ(record(), entry.learned ? "(1:20 SWR100)" : "");
    }
}

TEST_F(StandLearning, GuessIsExtendedWhereItWasMade) {
    world.addStand("A2", offset(airportPlace, 90.0, 100.0));
    ac.heightAgl = 0.0;
    nowStamp = DayHH{1, 20}.packed();
    lf_learnSoft(ac, true);
    ParkPos& guessed =
        *std::ranges::find_if(parkPositions(), [](const ParkPos& stand) { return !stand.options.empty(); });
    nowStamp = DayHH{1, 22}.packed();
    lf_learnSoft(ac, true);
    EXPECT_EQ(recordOf(guessed), "(1:20,21,22 SWR100)");
    EXPECT_FALSE(lf_mayLearn({1, 24}, ac.hexid, false));
}

} // namespace
} // namespace kst::test
