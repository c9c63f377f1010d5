// Which title an aircraft gets: the ladder, rung by rung, over one small installation.

#include "catalogue/liveryreports.h"
#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "core/random.h"
#include "support/tempfolder.h"
#include "support/thrown.h"

#include <gtest/gtest.h>

#include <set>

#include <fmt/format.h>

namespace kst {
namespace {

class Ladder : public testing::Test {
protected:
    ~Ladder() override {
        resetMatching();
        setReferenceForTest({});
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
    }

    const test::TempFolder folder_; ///< a switch that goes off is saved
};

/// Titles begin with their airline and model; "!" marks those bound to single aircraft, "c" freighters.
const std::vector<LiveryData> installed = {
    {"AAL", "B738", "AAL B738 1", "", 0, false},  {"AAL", "B738", "AAL B738 2!", "", 0, false},
    {"AUA", "C172", "AUA C172", "", 0, false},    {"DLH", "A320", "DLH A320 1", "", 0, false},
    {"DLH", "A320", "DLH A320 2", "", 0, false},  {"DLH", "A320", "DLH A320 c", "", 0, true},
    {"EDW", "A321", "EDW A321!", "", 0, false},   {"EZY", "A321", "EZY A321", "", 0, false},
    {"EZY", "B744", "EZY B744", "", 0, false},    {"EZY", "C172", "EZY C172", "", 0, false},
    {"KLM", "B744", "KLM B744", "", 0, false},    {"KLM", "A319", "KLM A319", "", 0, false},
    {"PVT", "C172", "PVT C172", "", 0, false},    {"PVT", "AT72", "PVT AT72 c", "", 0, true},
    {"SWR", "B77W", "SWR B77W 0!", "", 0, false}, {"SWR", "B77W", "SWR B77W 1!", "", 0, false},
    {"TUI", "C172", "TUI C172", "", 0, false},    {"TUI", "DA42", "TUI DA42", "", 0, false},
    {"ZZZ", "A320", "ZZZ A320", "", 0, false},    {"ZZZ", "BE20", "ZZZ BE20", "", 0, false},
    {"ZZZ", "EC35", "ZZZ EC35", "", 0, false},
};

void install() {
    resetMatching();
    setReferenceForTest({{"A319", Category::Large, 0},
                         {"A320", Category::Large, 0},
                         {"A321", Category::Large, 0},
                         {"B738", Category::Large, 0},
                         {"B744", Category::Heavy, 0},
                         {"B77W", Category::Heavy, 0},
                         {"C152", Category::Light, 0},
                         {"C172", Category::Light, 0},
                         {"AT72", Category::Large, 0},
                         {"DA42", Category::Light, 0},
                         {"PA46", Category::Light, 0},
                         {"BE20", Category::Buzjets, 0},
                         {"C56X", Category::Buzjets, 0},
                         {"EC35", Category::Rotorcraft, 0},
                         {"R44", Category::Rotorcraft, 0}});
    // Of the two groups of A319 the one that sorts first counts, without members that have no livery.
    referenceTables().similarLists = {{"A319", "B738"},
                                      {"A319", "A318", "A320", "A321"},
                                      {"B748", "B744"},
                                      {"A321", "B744"},
                                      {"AT72", "C152", "DA42", "C172"}};
    for (const auto& [regcode, record] : std::initializer_list<std::pair<const char*, Registration>>{
             {"HB-JCA", {"DLH", "A320", "EDW", false}}, {"D-AIPA", {"DLH", "A320", "", false}}}) {
        referenceTables().regcodeTable.insert(regcode, record);
    }
    gf_buildAirlineIndex(installed);
    gf_buildAirlineModelTitles();
    gf_buildModelTitles();
    gf_buildSimilarTables();
    liveryTables().regcodeTitles["PH-BXA"] = gf_findTitle("KLM B744");
    for (const LiveryData& livery : installed) {
        if (livery.title.ends_with('!')) {
            liveryTables().specialTitles.insert(gf_findTitle(livery.title));
        }
    }
    for (int category = 0; category < categoryCount; ++category) {
        gf_reportCategory(static_cast<Category>(category));
    }
}

struct Asked {
    const char* airline;
    const char* type;
    int depth = 4;
    bool cargo = false;
    const char* regcode = "";
};

struct LadderCase {
    const char* name;
    Asked asked;
    Rung rung;
    std::vector<std::string> titles{}; ///< any with RANDOM, else the first
};

const LadderCase ladderCases[] = {
    {"its own livery, whatever the depth, airline and kind",
     {"DLH", "A320", 1, true, "PHBXA"},
     Rung::OwnLivery,
     {"KLM B744"}},
    {"no other at depth 1", {"DLH", "A320", 1}, Rung::None},
    {"airline and model", {"DLH", "A320", 2}, Rung::AirlineModel, {"DLH A320 1", "DLH A320 2"}},
    {"a freighter its own kind", {"DLH", "A320", 2, true}, Rung::AirlineModel, {"DLH A320 c"}},
    {"a freighter passenger paint", {"AAL", "B738", 2, true}, Rung::AirlineModel, {"AAL B738 1"}},
    {"never what is bound to one", {"AAL", "B738", 2}, Rung::AirlineModel, {"AAL B738 1"}},
    {"the walk goes on when all are bound", {"SWR", "B77W"}, Rung::None},
    {"the airline of an operated registration",
     {"SWR", "A320", 2, false, "HBJCA"},
     Rung::AirlineModel,
     {"DLH A320 1", "DLH A320 2"}},
    {"not without operator", {"SWR", "A320", 2, false, "DAIPA"}, Rung::None},
    {"similar of the airline only from depth 3", {"EZY", "A319", 2}, Rung::None},
    {"similar of the airline", {"EZY", "A319", 3}, Rung::AirlineSimilar, {"EZY A321"}},
    {"which counts for that match only", {"EZY", "B77W", 3}, Rung::None},
    {"in the order of the group", {"DLH", "A321", 3}, Rung::AirlineSimilar, {"DLH A320 1", "DLH A320 2"}},
    {"none for a model that it has, though bound", {"EDW", "A321", 3}, Rung::None},
    {"none from a group that counts no more", {"AAL", "A319", 3}, Rung::None},
    {"similar of the registration's airline",
     {"", "A319", 3, false, "HBJCA"},
     Rung::AirlineSimilar,
     {"DLH A320 1", "DLH A320 2"}},
    {"similar by the group that sorts first", {"KLM", "A321", 3}, Rung::AirlineSimilar, {"KLM A319"}},
    {"generic at depth 4", {"AAL", "A320"}, Rung::Generic, {"ZZZ A320"}},
    {"not at depth 3", {"AAL", "A320", 3}, Rung::None},
    {"but for small ones", {"AAL", "BE20", 3}, Rung::Generic, {"ZZZ BE20"}},
    {"and private ones at depth 2", {"PVT", "A320", 2}, Rung::Generic, {"ZZZ A320"}},
    {"which come before its own", {"PVT", "BE20", 2}, Rung::Generic, {"ZZZ BE20"}},
    {"a private one without generic", {"PVT", "C172", 2}, Rung::AirlineModel, {"PVT C172"}},
    {"heavy ones get no other airline's", {"DLH", "B744"}, Rung::None},
    {"nor large ones", {"DLH", "B738"}, Rung::None},
    {"small ones do", {"DLH", "C172", 3}, Rung::AnyOfModel, {"AUA C172", "EZY C172", "PVT C172", "TUI C172"}},
    {"also without airline",
     {"", "C172", 3},
     Rung::AnyOfModel,
     {"AUA C172", "EZY C172", "PVT C172", "TUI C172"}},
    {"of their kind only: else a similar model of any size",
     {"DLH", "C172", 3, true},
     Rung::AnyOfSimilarModel,
     {"PVT AT72 c"}},
    {"of a similar model",
     {"DLH", "C152", 3},
     Rung::AnyOfSimilarModel,
     {"TUI DA42", "AUA C172", "EZY C172", "PVT C172", "TUI C172"}},
    {"any business jet, whatever was asked before", {"", "C56X", 3}, Rung::AnyOfSimilarModel, {"ZZZ BE20"}},
    {"any light one without similar models",
     {"DLH", "PA46", 3},
     Rung::AnyOfSimilarModel,
     {"AUA C172", "EZY C172", "PVT C172", "TUI C172", "TUI DA42"}},
    {"any helicopter", {"DLH", "R44", 3}, Rung::AnyOfSimilarModel, {"ZZZ EC35"}},
};

TEST_F(Ladder, EachRungInItsTurn) {
    install();
    seedRandom(4);
    for (const LadderCase& row : ladderCases) {
        for (const bool parked : {false, true}) {
            std::set<std::string> drawn;
            for (int round = 0; round < 40; ++round) {
                SCOPED_TRACE(fmt::format("{}, {}", row.name, parked ? "parked" : "live"));
                RANDOM.set(round > 0);
                MATCHING_DEPTH.set(row.asked.depth);
                AcBase ac;
                ac.callsign = "TEST";
                ac.airline = row.asked.airline;
                ac.acType = row.asked.type;
                ac.category = gf_category(row.asked.type);
                ac.regcode = row.asked.regcode;
                ParkPos stand;
                (parked ? stand.cargo : ac.cargo) = row.asked.cargo;
                const auto before = matchSteps;
                if (parked) {
                    ASSERT_EQ(gf_matchStaticLivery(ac, stand), row.rung != Rung::None);
                    ASSERT_EQ(matchSteps, before) << "parked ones are not counted";
                } else {
                    ASSERT_EQ(gf_matchLivery(ac), row.rung);
                }
                const std::string title(ac.liveryTitle);
                if (row.rung == Rung::None) {
                    ASSERT_EQ(title, "");
                    continue;
                }
                if (round == 0) {
                    ASSERT_EQ(title, row.titles.front());
                }
                drawn.insert(title);
            }
            EXPECT_EQ(drawn, std::set<std::string>(row.titles.begin(), row.titles.end())) << row.name;
        }
    }
}

TEST_F(Ladder, SimilarModelsOfAParkedAircraftMayBeOfAnotherSize) {
    install();
    AcBase ac;
    ac.airline = "EZY";
    ac.acType = "B748";
    ac.category = Category::Large; // the reference does not know it
    EXPECT_EQ(gf_matchLivery(ac), Rung::None);
    EXPECT_TRUE(gf_matchStaticLivery(ac, {}));
    EXPECT_EQ(ac.liveryTitle, "EZY B744");
}

TEST_F(Ladder, RefusedTitleIsNeverGivenAgainAndTheTwentiethStops) {
    setReferenceForTest({{"A320", Category::Large, 35.8}});
    RANDOM.set(false);
    addLiveryTitle("KLM", "A320", "FSLTL_A320 KLM");
    AcBase ac;
    ac.callsign = "KLM1";
    ac.airline = "KLM";
    ac.acType = "A320";
    ac.category = Category::Large;
    const std::uint32_t matches = matchSteps[1];
    EXPECT_EQ(gf_matchLivery(ac), Rung::AirlineModel);
    EXPECT_TRUE(ac.fsltlLivery);
    for (int i = 1; i < 20; ++i) {
        ASSERT_NO_THROW(gf_liveryCreateFailed(ac));
    }
    AcBase again = ac;
    again.liveryTitle = {};
    EXPECT_EQ(gf_matchLivery(again), Rung::None);
    EXPECT_TRUE(again.liveryTitle.empty());
    EXPECT_EQ(matchSteps[1], matches + 1) << "a refused title is no match";
    EXPECT_FALSE(gf_matchStaticLivery(again, {}));
    EXPECT_EQ(test::thrown<UserErrorException>([&] { gf_liveryCreateFailed(ac); }),
              "81: there are too many liveries that could not be created by P3D!, see Log.txt");
    clearMessage();
}

TEST_F(Ladder, SwitchOfAClassWithoutLiveriesGoesOff) {
    setReferenceForTest({{"C172", Category::Light, 11.0}, {"EC35", Category::Rotorcraft, 10.0}});
    addLiveryTitle("ZZZ", "C172", "Cessna");
    for (const Category category : {Category::Light, Category::Rotorcraft, Category::HighPerf}) {
        gf_reportCategory(category);
    }
    EXPECT_TRUE(LIGHT_AIRCRAFT);
    EXPECT_TRUE(controlEnabled(LIGHT_AIRCRAFT.controlId()));
    for (const BoolParameter* off : {&HELICOPTERS, &HIGH_PERF_AIRCRAFT}) {
        EXPECT_FALSE(*off) << off->name();
        EXPECT_FALSE(controlEnabled(off->controlId())) << off->name();
    }
    resetDisplay();
}

} // namespace
} // namespace kst
