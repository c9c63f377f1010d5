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

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include <fmt/format.h>

namespace kst {
namespace {

struct Fleet {
    std::vector<ReferenceModel> models;
    std::vector<std::vector<std::string>> groups;
    std::vector<LiveryData> liveries;
    std::map<std::string, std::string> ownTitles; ///< by registration
    std::set<std::string> special;
};

std::string pick(std::mt19937& random, const std::vector<std::string>& from) {
    return from[random() % from.size()];
}

const std::vector<std::string> airlines = {"KLM", "SWR", "DLH", "PVT", "ZZZ"};
const std::vector<std::string> registrations = {"", "PHBXA", "HB-JCA", "DAIPA", "N123AB", "GABCD"};

Fleet drawFleet(std::mt19937& random) {
    Fleet fleet;
    std::vector<std::string> codes;
    for (int i = 0; i < 12; ++i) {
        codes.push_back(fmt::format("M{:02}", i));
        fleet.models.push_back({codes.back(), static_cast<Category>(random() % categoryCount), 0.0});
    }
    for (int i = 0; i < 5; ++i) {
        std::set<std::string> group;
        while (group.size() < 2 + random() % 3) {
            group.insert(pick(random, codes));
        }
        fleet.groups.emplace_back(group.begin(), group.end());
    }
    const int count = static_cast<int>(random() % 40);
    for (int i = 0; i < count; ++i) {
        fleet.liveries.push_back({pick(random, airlines), pick(random, codes),
                                  fmt::format("title {}", random() % 100'000), "", 0, random() % 3 == 0});
        if (random() % 4 == 0) {
            fleet.special.insert(fleet.liveries.back().title);
        }
    }
    for (const char* regcode : {"PH-BXA", "G-ABCD"}) {
        if (count > 0 && random() % 3 == 0) {
            fleet.ownTitles[regcode] = fleet.liveries[random() % fleet.liveries.size()].title;
        }
    }
    std::sort(fleet.liveries.begin(), fleet.liveries.end());
    return fleet;
}

void install(const Fleet& fleet, const std::map<std::string, Registration>& known) {
    resetMatching();
    setReferenceForTest(fleet.models);
    referenceTables().similarLists = fleet.groups;
    for (const auto& [regcode, record] : known) {
        referenceTables().regcodeTable.insert(regcode, record);
    }
    gf_buildAirlineIndex(fleet.liveries);
    gf_buildAirlineModelTitles();
    for (const auto& [regcode, title] : fleet.ownTitles) {
        liveryTables().regcodeTitles[regcode] = gf_findTitle(title);
    }
    for (const std::string& title : fleet.special) {
        liveryTables().specialTitles.insert(gf_findTitle(title));
    }
    gf_buildModelTitles();
    gf_buildSimilarTables();
    for (int category = 0; category < categoryCount; ++category) {
        gf_reportCategory(static_cast<Category>(category));
    }
}

struct Answer {
    int rung = 0;
    std::vector<std::string> titles; ///< what may come, first what comes without RANDOM
    bool orNone = false;             ///< the draw of a single model may find nothing
};

/// The ladder once more, as a reader of its rules would walk it with a list of liveries in hand.
class Oracle {
public:
    Oracle(const Fleet& fleet, const std::map<std::string, Registration>& known)
        : fleet_(fleet), known_(known) {
        std::set<std::string> lines;
        for (const auto& group : fleet.groups) {
            for (const std::string& model : group) {
                std::string line = model + ":";
                for (const std::string& other : group) {
                    line += other != model && installed(other) ? other + "," : "";
                }
                if (line.back() == ',') {
                    lines.insert(line);
                }
            }
        }
        for (const std::string& line : lines) {
            std::vector<std::string> others;
            for (std::size_t i = line.find(':') + 1; i < line.size(); i += 4) {
                others.push_back(line.substr(i, 3));
            }
            similar_.emplace(line.substr(0, 3), others);
        }
    }

    Answer ask(const AcBase& ac, int depth, bool parkedCargo, bool parked) const {
        for (const std::string& form : forms(ac.regcode)) {
            if (fleet_.ownTitles.contains(form)) {
                return {1, {fleet_.ownTitles.at(form)}, false};
            }
        }
        const bool cargo = parked ? parkedCargo : ac.cargo;
        std::string second;
        for (const std::string& form : forms(ac.regcode)) {
            if (known_.contains(form)) {
                second = known_.at(form).operatorCode.empty() ? "" : std::string(known_.at(form).airline);
                break;
            }
        }
        if (depth == 1) {
            return {};
        }
        if (ac.airline == "PVT" && !pair("ZZZ", ac.acType, cargo).empty()) {
            return {4, pair("ZZZ", ac.acType, cargo), false};
        }
        for (const std::string& airline : {ac.airline, second}) {
            if (!pair(airline, ac.acType, cargo).empty()) {
                return {2, pair(airline, ac.acType, cargo), false};
            }
        }
        if (depth == 2) {
            return {};
        }
        for (const std::string& airline : {ac.airline, second}) {
            std::vector<std::string> titles;
            for (const std::string& model : ownSimilar(airline, ac.acType)) {
                if (parked || categoryOf(model) == ac.category) {
                    add(titles, pair(airline, model, cargo));
                }
            }
            if (!titles.empty()) {
                return {3, titles, false};
            }
        }
        const bool small = ac.category == Category::Light || ac.category == Category::Buzjets ||
                           ac.category == Category::Rotorcraft;
        if ((depth == 4 || (small && ac.airline != "PVT")) && !pair("ZZZ", ac.acType, cargo).empty()) {
            return {4, pair("ZZZ", ac.acType, cargo), false};
        }
        if (!small) {
            return {};
        }
        if (!any(ac.acType, cargo).empty()) {
            return {5, any(ac.acType, cargo), false};
        }
        return anySimilar(ac.acType, cargo);
    }

private:
    static std::vector<std::string> forms(const std::string& regcode) {
        if (regcode.size() < 5 || regcode[0] == 'N' || regcode.find('-') != std::string::npos) {
            return {regcode};
        }
        return {regcode.substr(0, 2) + "-" + regcode.substr(2),
                regcode.substr(0, 1) + "-" + regcode.substr(1), regcode};
    }
    static void add(std::vector<std::string>& to, const std::vector<std::string>& from) {
        to.insert(to.end(), from.begin(), from.end());
    }
    template <typename Test>
    std::vector<std::string> titlesWhere(Test test) const {
        std::vector<std::string> titles;
        for (const LiveryData& livery : fleet_.liveries) {
            if (test(livery) && !fleet_.special.contains(livery.title)) {
                titles.push_back(livery.title);
            }
        }
        std::sort(titles.begin(), titles.end());
        return titles;
    }
    std::vector<std::string> pair(const std::string& airline, const std::string& model, bool cargo) const {
        const auto ofKind = [&](bool kind) {
            return titlesWhere([&](const LiveryData& livery) {
                return livery.airline == airline && livery.model == model && livery.cargo == kind;
            });
        };
        const auto titles = ofKind(cargo);
        return titles.empty() && cargo ? ofKind(false) : titles;
    }
    std::vector<std::string> any(const std::string& model, bool cargo) const {
        return titlesWhere(
            [&](const LiveryData& livery) { return livery.model == model && livery.cargo == cargo; });
    }
    bool installed(const std::string& model) const {
        return std::ranges::any_of(fleet_.liveries,
                                   [&](const LiveryData& livery) { return livery.model == model; });
    }
    Category categoryOf(const std::string& model) const {
        return std::ranges::find(fleet_.models, model, &ReferenceModel::model)->category;
    }
    std::vector<std::string> ownSimilar(const std::string& airline, const std::string& model) const {
        const auto has = [&](const std::string& wanted) {
            return std::ranges::any_of(fleet_.liveries, [&](const LiveryData& livery) {
                return livery.airline == airline && livery.model == wanted;
            });
        };
        std::vector<std::string> result;
        if (similar_.contains(model) && !has(model)) {
            std::ranges::copy_if(similar_.at(model), std::back_inserter(result), has);
        }
        return result;
    }
    Answer anySimilar(const std::string& type, bool cargo) const {
        Answer answer;
        if (similar_.contains(type)) {
            for (const std::string& model : similar_.at(type)) {
                add(answer.titles, any(model, cargo));
            }
        } else {
            std::set<std::string> ofClass;
            for (const LiveryData& livery : fleet_.liveries) {
                if (categoryOf(livery.model) == categoryOf(type)) {
                    ofClass.insert(livery.model);
                }
            }
            for (const std::string& model : ofClass) {
                const auto titles = any(model, cargo);
                answer.orNone = answer.orNone || titles.empty();
                if (RANDOM || model == *ofClass.begin()) {
                    add(answer.titles, titles);
                }
            }
        }
        answer.rung = answer.titles.empty() ? 0 : 6;
        return answer;
    }

    const Fleet& fleet_;
    const std::map<std::string, Registration>& known_;
    std::map<std::string, std::vector<std::string>> similar_;
};

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

AcBase drawAircraft(std::mt19937& random, const Fleet& fleet) {
    AcBase ac;
    ac.callsign = "TEST";
    ac.airline = random() % 6 == 0 ? "" : pick(random, airlines);
    const ReferenceModel& model = fleet.models[random() % fleet.models.size()];
    ac.acType = model.model;
    ac.category = model.category;
    ac.regcode = pick(random, registrations);
    ac.cargo = random() % 3 == 0;
    return ac;
}

// Thousands of drawn fleets and aircraft: the tables of the matcher and a walk through the plain list of
// liveries by the same rules come to the same rung and to one of the same titles.
TEST_F(Ladder, TablesAgreeWithAWalkThroughTheList) {
    std::mt19937 random(4);
    seedRandom(4);
    const std::map<std::string, Registration> known = {{"HB-JCA", {"SWR", "M01", "", false}},
                                                       {"D-AIPA", {"DLH", "M02", "CLH", false}},
                                                       {"N123AB", {"KLM", "M03", "XXX", true}}};
    std::array<int, rungCount + 1> seen{};
    for (int round = 0; round < 400; ++round) {
        const Fleet fleet = drawFleet(random);
        install(fleet, known);
        const Oracle oracle(fleet, known);
        for (int i = 0; i < 60; ++i) {
            RANDOM.set(random() % 2 == 0);
            MATCHING_DEPTH.set(1 + static_cast<int>(random() % 4));
            AcBase ac = drawAircraft(random, fleet);
            const bool parked = random() % 3 == 0;
            ParkPos stand;
            stand.cargo = random() % 2 == 0;
            const Answer expected = oracle.ask(ac, MATCHING_DEPTH, stand.cargo, parked);
            const int rung = parked ? (gf_matchStaticLivery(ac, stand) ? expected.rung : 0)
                                    : static_cast<int>(gf_matchLivery(ac));
            ++seen.at(static_cast<std::size_t>(rung));
            SCOPED_TRACE(fmt::format("round {} {} {} {} depth {} cargo {} parked {}", round, ac.airline,
                                     ac.acType, ac.regcode, MATCHING_DEPTH.get(), ac.cargo, parked));
            if (rung == 0) {
                ASSERT_TRUE(ac.liveryTitle.empty());
                ASSERT_TRUE(expected.rung == 0 || expected.orNone) << "rung " << expected.rung;
                continue;
            }
            ASSERT_EQ(rung, expected.rung) << ac.liveryTitle;
            const std::string title(ac.liveryTitle);
            if (RANDOM) {
                ASSERT_EQ(std::ranges::count(expected.titles, title), 1) << title;
            } else {
                ASSERT_EQ(title, expected.titles.front());
            }
        }
    }
    for (std::size_t rung = 0; rung < seen.size(); ++rung) {
        EXPECT_GT(seen[rung], 100) << "rung " << rung << " was hardly ever reached";
    }
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
    EXPECT_EQ(gf_matchLivery(ac), Rung::AirlineModel);
    EXPECT_TRUE(ac.fsltlLivery);
    const std::uint32_t matches = matchSteps[1];
    for (int i = 1; i < 20; ++i) {
        ASSERT_NO_THROW(gf_liveryCreateFailed(ac));
    }
    AcBase again = ac;
    again.liveryTitle = {};
    EXPECT_EQ(gf_matchLivery(again), Rung::None);
    EXPECT_TRUE(again.liveryTitle.empty());
    EXPECT_EQ(matchSteps[1], matches) << "a refused title is no match";
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
