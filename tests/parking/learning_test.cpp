// Learned airport files: what is laid over an airport's own file, what is saved, and how much is known.

#include "core/controlids.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "core/run/schedule.h"
#include "core/runstate.h"
#include "parking/learning.h"
#include "parking/parkingworld.h"
#include "parking/stands.h"
#include "platform/paths.h"
#include "support/environment.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace kst::test {
namespace {

namespace fs = std::filesystem;

ParkOption observation(std::string_view reg, int day, std::initializer_list<std::size_t> hours,
                       bool fromArchive) {
    ParkOption option;
    option.reg = reg;
    option.airl = "SWR";
    option.type = "A320";
    option.cs = "SWR100";
    option.day = day;
    option.fromArchive = fromArchive;
    for (const std::size_t hh : hours) {
        option.hours.set(hh);
    }
    return option;
}

void addOption(ParkPos& stand, ParkOption option) {
    option.seq = static_cast<std::uint32_t>(stand.options.size()) + 1;
    stand.options.push_back(std::move(option));
}

class Learning : public ::testing::Test, protected ParkingWorld {
protected:
    Learning() {
        AirportFile& airport = loadedAirport();
        airport.icao = "LSZH";
        airport.airport_name = "Zurich";
        airport.publisher = "stock";
        setAirportLoaded();
        for (const char* id : {"A1", "A2", "A3"}) {
            ParkPos& stand = airport.stands.emplace_back();
            stand.id = id;
            stand.latitude = 47.46;
            stand.longitude = 8.55;
            stand.radius = 20.0 / metresPerNm;
        }
        numberStands(airport.stands);
    }

    ParkPos& stand(std::string_view id) {
        return *std::ranges::find(loadedAirport().stands, id, &ParkPos::id);
    }
    /// Reads a learned file with these stands and settings over the airport.
    void readLearned(std::string_view stands, std::string_view parameters = "") {
        const fs::path file = folder.write(
            learned,
            fmt::format("<parameters><parameter name=\"airport_name\" value=\"Zurich\"/>{}</parameters>"
                        "<parkpositions>{}</parkpositions>",
                        parameters, stands));
        lf_readLearned(file, loadedAirport());
    }
    /// The learned file as the program tells it.
    std::string learnedText() const { return platform::utf8FromPath(fs::path(learned).make_preferred()); }
    std::optional<std::string> saved() { return folder.read(learned); }

    const fs::path learned = "airports/learned/stock/LSZH.xml";
};

TEST_F(Learning, WhereTheLearnedFileLies) {
    const std::array<const char*, 3> cases[] = {
        {"", "stock", ""},
        {"archive/stock/LSZH.xml", "stock", "airports/learned/stock/LSZH.xml"},
        {"archive/thirdparty/Fly%20High%20Ltd/EGLL.xml", "Fly High Ltd",
         "airports/learned/thirdparty/Fly High Ltd/EGLL.xml"},
        {"airports/my_thirdparty/EGLL.xml", "Fly", "airports/learned/thirdparty/Fly/EGLL.xml"},
        {"airports/my_thirdparty2024/EGLL.xml", "Fly", "airports/learned/thirdparty/Fly/EGLL.xml"},
        {"airports/my_ORBX/YMML.xml", "simaddon", "airports/learned/simaddon/YMML.xml"},
        {"airports/my_thirdparty/EGLL.xml", "../../a:b", "airports/learned/thirdparty/.._.._a_b/EGLL.xml"},
        {"airports/my_thirdparty/EGLL.xml", "..", "airports/learned/thirdparty/unknown/EGLL.xml"},
    };
    for (const auto& [location, publisher, path] : cases) {
        EXPECT_EQ(lf_learnedApfPath(location, publisher), fs::path(path)) << location;
    }
}

TEST_F(Learning, HowMuchIsKnown) {
    EXPECT_EQ(gf_qualityFactor(), QualityFactors{});
    ParkOption guess = observation("HB-JCA", 1, {0}, true);
    guess.real = false;
    std::vector<ParkOption> many(400, observation("HB-JCA", 1, {0, 1, 2, 3}, true));
    // 10,000 for a known stand, 20 for each observation, 100 for each day, 2 for each half hour, over three
    // stands.
    const struct {
        const char* name;
        std::vector<ParkOption> options; ///< on the first of three stands
        QualityFactors expected;
    } cases[] = {
        {"one", {observation("HB-JCA", 1, {0}, true)}, {21, 0}},           // 10122 / 3 * 0.00625
        {"any day", {observation("HB-JCA", 0, {0, 1, 2}, true)}, {21, 0}}, // 10026
        {"two days", {observation("HB-JCA", 1, {}, true), observation("HB-JCA", 7, {}, true)}, {21, 0}},
        {"guess", {guess}, {0, 21}},
        {"both", {guess, observation("HB-JCA", 1, {0}, false)}, {21, 21}},
        {"very many", many, {32, 0}}, // 10000 + 4000 + 100 + 1200
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        stand("A1").options.clear();
        for (const ParkOption& option : entry.options) {
            addOption(stand("A1"), option);
        }
        EXPECT_EQ(gf_qualityFactor(), entry.expected);
        for (ParkOption& option : stand("A1").options) {
            option.seq = 0;
        }
        EXPECT_EQ(gf_qualityFactor(), (QualityFactors{0, 0})) << "dead ones do not count";
    }
    // Every stand as well known as can be.
    for (int day = 1; day <= 7; ++day) {
        many.push_back(observation("HB-JCA", day, {47}, true));
    }
    std::ranges::for_each(many, [](ParkOption& option) { option.seq = 1; });
    for (ParkPos& each : loadedAirport().stands) {
        each.options = many;
    }
    EXPECT_EQ(gf_qualityFactor().Qf_real, 99);
}

TEST_F(Learning, LearnedFileIsLaidOverTheAirport) {
    addOption(stand("A1"), observation("HB-JCA", 1, {10, 11}, true));
    readLearned(
        "<parkpos id=\"A1\" radius_change=\"true\" radius=\"19.5\">"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" day=\"1\" hh=\"11,12\"/>"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" day=\"1\" hh=\"12,13\" cs=\"SWR1:SWR2\"/>"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" day=\"1\" hh=\"13\"/>"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" day=\"1\" hh=\"14\"/>"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" soft=\"true\" day=\"1\" hh=\"10\"/>"
        "<opt reg=\"HB-JCA\" airl=\"SWR\" type=\"A320\" day=\"2\" hh=\"10\"/></parkpos>"
        "<parkpos id=\"A2\" radius_change=\"true\" cargo_change=\"true\" cargo=\"true\"/>"
        "<parkpos id=\"X9\"><opt reg=\"HB-JCA\" day=\"1\" hh=\"1\"/></parkpos>"
        "<parkpos id=\"A3\" manual=\"true\" latitude=\"47.1\" longitude=\"8.1\" radius=\"30\"/>"
        "<parkpos id=\"M1\" manual=\"true\" latitude=\"0.0005\" longitude=\"0.01\" radius=\"30\"/>"
        "<parkpos id=\"M2\" manual=\"true\" latitude=\"47.1\" longitude=\"8.1\"/>"
        "<parkpos id=\"M3\" manual=\"true\" latitude=\"47.1\" longitude=\"8.1\" radius=\"30\" ramp=\"true\">"
        "<opt reg=\"HB-JCB\" airl=\"SWR\" type=\"A320\" day=\"3\" hh=\"5\"/></parkpos>");

    std::string options;
    for (const ParkOption& option : stand("A1").options) {
        options += fmt::format("{}:{}{}{} ", option.seq, option.day, option.real ? "" : " soft",
                               option.fromArchive ? " archive" : "");
    }
    EXPECT_EQ(options, "1:1 archive 2:1 3:1 4:1 soft 5:2 ");
    EXPECT_EQ(stand("A1").options[1].cs + " " + stand("A1").options[1].cs2, "SWR1 SWR2");
    EXPECT_NEAR(stand("A1").radius * metresPerNm, 19.5, 1e-9);
    EXPECT_EQ(stand("A2").radius, 0.0);
    EXPECT_TRUE(stand("A2").cargo && stand("A2").cargo_change);
    ASSERT_EQ(loadedAirport().stands.size(), 4U);
    EXPECT_TRUE(stand("M3").manual && stand("M3").ramp);
    EXPECT_FALSE(stand("M3").options.front().fromArchive);
    const std::string path = "airports/learned/stock/LSZH.xml";
    for (const char* line :
         {"learned stand X9 in {} not found?", "manually created standid A3 already exists in {}",
          "manually created standid M1 misses correct attributes in {}",
          "manually created standid M2 misses correct attributes in {}"}) {
        EXPECT_NE(log().find(fmt::format(fmt::runtime(line), platform::utf8FromPath(folder.path() / path))),
                  std::string::npos)
            << line;
    }
}

TEST_F(Learning, HandmadeFileStandsInPlaceOfTheAirports) {
    const char* handmade = "<parameter name=\"handmade\" value=\"0\"/>";
    readLearned("<parkpos id=\"H1\" latitude=\"47.1\" longitude=\"8.1\" radius=\"30\">"
                "<opt reg=\"HB-JCB\" airl=\"SWR\" type=\"A320\" day=\"3\" hh=\"5\"/></parkpos>",
                handmade);
    EXPECT_TRUE(loadedAirport().handmade);
    ASSERT_EQ(loadedAirport().stands.size(), 1U);
    EXPECT_TRUE(loadedAirport().stands.front().options.front().fromArchive);
    EXPECT_THROW(readLearned("<parkpos id=\"H1\"/><parkpos id=\"H1\"/>", handmade), UserErrorException);
    EXPECT_NE(log().find("lf_readLearned: "), std::string::npos);
    readLearned("");
    EXPECT_FALSE(loadedAirport().handmade);
}

TEST_F(Learning, DamagedFileIsSetAsideAndTheNextSaveSparesIt) {
    folder.write(learned, "<parameters");
    lf_readLearned(folder.path() / learned, loadedAirport());
    EXPECT_EQ(loadedAirport().stands.size(), 3U);
    EXPECT_FALSE(saved());
    EXPECT_EQ(folder.read("airports/learned/stock/LSZH.0.xml"), "<parameters");
    EXPECT_NE(log().find("found, but could not be loaded, saved as *.0.xml: "), std::string::npos);
    noteStandChange();
    lf_saveLearnedChanges();
    EXPECT_TRUE(saved());
    EXPECT_EQ(folder.read("airports/learned/stock/LSZH.0.xml"), "<parameters");
}

TEST_F(Learning, FileOfAnotherAirportIsReadWithAWarning) {
    loadedAirport().airport_name = "Geneva";
    readLearned("<parkpos id=\"A1\" cargo_change=\"true\" cargo=\"true\"/>");
    EXPECT_EQ(messageLine().message,
              "Warning: learned file airport name: \"Zurich\" differs from archived file "
              "airport name: \"Geneva\"");
    EXPECT_TRUE(stand("A1").cargo);
}

TEST_F(Learning, OnlyWhatWasLearnedIsSavedAtTheRenewal) {
    addOption(stand("A1"), observation("HB-JCA", 1, {10}, true));
    addOption(stand("A2"), observation("HB-JCB", 1, {10}, true));
    addOption(stand("A2"), observation("HB-JCC", 2, {11}, false));
    addOption(stand("A2"), observation("HB-JCD", 2, {11}, false));
    stand("A2").options.back().cs2 = "SWR101";
    stand("A2").options.back().seq = 0;
    stand("A3").cargo_change = true;
    lf_saveLearnedChanges();
    EXPECT_FALSE(saved()) << "nothing waits to be saved";
    noteStandChange();
    AUTO_RANGE.set(false);
    constexpr std::uint32_t renewal = 1200;
    lf_servePeriods(renewal - 60);
    EXPECT_FALSE(saved());
    lf_servePeriods(renewal);
    const std::string file = saved().value_or("");
    // One that stood back in the last renewal is kept as well.
    for (const char* there : {"A2", "HB-JCC", "HB-JCD", "\"SWR100:SWR101\"", "A3", "LEARN_SOFT"}) {
        EXPECT_NE(file.find(there), std::string::npos) << there;
    }
    for (const char* absent : {"\"A1\"", "HB-JCA", "HB-JCB", "latitude"}) {
        EXPECT_EQ(file.find(absent), std::string::npos) << absent;
    }
    EXPECT_EQ(stand("A2").options.size(), 3U) << "the table itself keeps all";
    stand("A2").options.back().seq = 0;
    lf_saveLearned();
    EXPECT_EQ(saved().value_or("HB-JCD").find("HB-JCD"), std::string::npos) << "it stands back";
}

TEST_F(Learning, WhatASaveTells) {
    const struct {
        int changes;
        bool parameters, handmade;
        const char* text;
    } cases[] = {
        {1, false, false, " \"{}\" saved with 1 update "},
        {2, true, false, " \"{}\" saved with 2 updates and one or more parameter changes"},
        {0, true, true, " handmade \"{}\" saved with 0 updates and one or more parameter changes"},
    };
    for (const auto& entry : cases) {
        for (int i = 0; i < entry.changes; ++i) {
            noteStandChange();
        }
        EXPECT_EQ(statusValues().updatesShown, static_cast<std::uint32_t>(entry.changes));
        parametersChanged = entry.parameters;
        loadedAirport().handmade = entry.handmade;
        lf_saveLearnedChanges();
        EXPECT_EQ(messageLine().message.substr(8), fmt::format(fmt::runtime(entry.text), learnedText()));
        EXPECT_EQ(statusValues().updatesShown, 0U);
        EXPECT_FALSE(parametersChanged);
    }
}

TEST_F(Learning, FailedSaveLeavesEverythingAsItWas) {
    // A file where the folder should be, as good as a disk that takes nothing.
    fs::remove(learned.parent_path());
    folder.write(learned.parent_path(), "in the way");
    noteStandChange();
    lf_saveLearnedChanges();
    EXPECT_EQ(messageLine().message.substr(8), fmt::format(" saving \"{}\" did not succeed", learnedText()));
    EXPECT_EQ(standChanges(), 1U) << "it is tried again at the next renewal";
    clearLoadedAirport();
    clearMessage();
    lf_saveLearnedChanges();
    EXPECT_EQ(messageLine().message, "") << "no airport, nothing to save";
}

TEST_F(Learning, SoftLearningIsBarredWhereMuchIsKnown) {
    const struct {
        int quality;
        std::size_t stands;
        bool wanted, barred;
    } cases[] = {{45, 20, true, true}, {44, 20, true, false}, {45, 19, true, false}, {99, 200, false, true}};
    for (const auto& entry : cases) {
        LEARN_SOFT.set(entry.wanted);
        parametersChanged = false;
        loadedAirport().quality = {entry.quality, 0};
        loadedAirport().stands.resize(entry.stands);
        lf_applyLearnSoftRule();
        EXPECT_EQ(softLearningBarred(), entry.barred);
        EXPECT_EQ(LEARN_SOFT, entry.wanted && !entry.barred);
        EXPECT_EQ(controlEnabled(control::LearnSoft), !entry.barred);
        EXPECT_EQ(parametersChanged, entry.wanted && entry.barred);
    }
}

TEST_F(Learning, WhetherAnAirportCanBeLearnedOffLine) {
    const std::pair<const char*, bool> cases[] = {
        {"<parameter name=\"Qf_real\" value=\"3\"/>", true},
        {"<parameter name=\"Qf_real\" value=\"-1\"/><parameter name=\"Qf_soft\" value=\"0\"/>", true},
        {"<parameter name=\"Qf_real\" value=\"-1\"/><parameter name=\"Qf_soft\" value=\"-1\"/>", false},
        {"", false},
        {"<parameter name=\"Qf_real\" value=\"3\"/><parameter name=\"WEEK\" value=\"18\"/>", true},
        {"<parameter name=\"Qf_real\" value=\"3\"/><parameter name=\"WEEK\" value=\"17\"/>", false},
        {"<parameter name=", false},
    };
    setEnvironment("KESTRANE_DOWNLOAD_ROOT",
                   "file://" + (folder.path() / "server/downloads/").generic_string());
    for (const auto& [parameters, suitable] : cases) {
        folder.write("server/downloads/P3D/archive/stock/LSZH.xml",
                     fmt::format("<parameters>{}</parameters>", parameters));
        EXPECT_EQ(gf_stockIsSuitable("LSZH"), suitable) << parameters;
    }
    EXPECT_FALSE(gf_stockIsSuitable("EGLL"));
    EXPECT_FALSE(gf_stockIsSuitable("../stock/LSZH"));
    EXPECT_NE(log().find("EGLL Not suitable for offline learning"), std::string::npos);
    EXPECT_FALSE(folder.read("offline.xml")) << "a file was left behind";
}

} // namespace
} // namespace kst::test
