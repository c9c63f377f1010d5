#include "core/parameterfile.h"

#include "core/corescene.h"

#include <algorithm>
#include <clocale>
#include <locale>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* storePath = "user/roaming/Kestrane_P3D/parameters.xml";

/// What a first start writes: every parameter in the order of its group, with its default.
constexpr std::string_view freshStore =
    "RANDOM=1 SCAN_LIVERIES=1 LIG_AUTOMATIC=1 LIG_PRIORITIZE=0 SUPPRESS_STUB=1 LOG=1 ALWAYS_ON_TOP=0 "
    "SCAN_AIRPORTS=1 AFG_AUTOMATIC=1 NAV_LIGHTS_WHILE_PARKED=1 LEARN_SOFT=1 LIGHT_AIRCRAFT=1 HELICOPTERS=1 "
    "HIGH_PERF_AIRCRAFT=1 AEROWINX=0 GUID_CHANGES=1 AUTO_RANGE=1 COLLISION_USER_GND=1 COLLISION_USER_AIR=1 "
    "COLLISION_LIVE_PARKED_GND=0 STRAIGHT_PBS_ONLY=0 PARK_FAKE=0 WEEK=0 PARK_SOFT=1 INITIAL_LOAD_ONLY=0 "
    "CUSTOM_PARKING_PERCENTAGE=-1 MAIN_WINDOW_X=400 MAIN_WINDOW_Y=20 LAST_EPOCH_TIME=0 "
    "HOLDING_THRESHOLD_METERS=250 MAX_HOLDING_MINUTES=20 P3D_VERSION=5 MAX_FIT=47 MATCHING_DEPTH=4 "
    "LATERAL_RANGE=40 AUTO_RANGE_ABOVE_HEIGHT=49000 MAX_LIVE=-1 CUSTOM_MAX_PARK=-1 AIRPORT_RANGE=20 "
    "AIRPORT_HEIGHT=18000 parking_percentage=30 MAX_FIT_FL=24 PROGRAM_VERSION= PROGRAM_INSTALL_PATH= "
    "SIM_INSTALL_PATH= PORT_NUMBER=10747 ALL_INSTALL_PATH= BLOCK_CALLSIGN= DESTINATION= ";

class ParameterFileTest : public test::CoreScene {
protected:
    /// Writes the store with these entries and reads it.
    void readStoreOf(std::string_view parameters) const {
        folder.write(storePath, fmt::format("<parameters>{}</parameters>", parameters));
        readParameters();
    }
    std::string store() const { return folder.read(storePath).value_or("<no file>"); }

    /// The file's entries as "name=value " in their order.
    std::string entries() const {
        pugi::xml_document document;
        EXPECT_TRUE(parseParameters(store(), document)) << store();
        std::string list;
        for (const pugi::xml_node entry : document.child("parameters").children("parameter")) {
            list += fmt::format("{}={} ", entry.attribute("name").value(), entry.attribute("value").value());
        }
        return list;
    }

    std::vector<std::string> filesBesideStore() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(parametersFolder())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    /// The store's place as texts show it.
    std::string writtenPath() const { return (folder.path() / storePath).make_preferred().string(); }
};

TEST_F(ParameterFileTest, AFirstStartWritesEveryDefaultAndNoFolderEntries) {
    MAX_LIVE.set(12);
    lfolder[0].set("left over");
    readParameters();
    EXPECT_EQ(entries(), freshStore);
    EXPECT_EQ(MAX_LIVE, -1);
    EXPECT_TRUE(lfolder[0].empty());
    EXPECT_THAT(log(), HasSubstr(writtenPath() + " not found, default values taken:\n"));
    EXPECT_THAT(log(), HasSubstr("\n" + std::string(44, '*') + " parameters " + std::string(44, '*') + "\n"));
}

TEST_F(ParameterFileTest, ASecondStartLeavesTheFileAsItIs) {
    readParameters();
    const auto written = std::filesystem::last_write_time(parametersFile());
    const std::string before = store();
    readParameters();
    EXPECT_EQ(store(), before);
    EXPECT_EQ(std::filesystem::last_write_time(parametersFile()), written);
    EXPECT_THAT(log(), HasSubstr("from \"" + writtenPath() + "\"\nRANDOM=1\n"));
}

TEST_F(ParameterFileTest, ValuesAreTakenClampedAndLoggedAsTheyHold) {
    test::RecordingWindow window;
    readStoreOf(R"(
        <parameter name="LATERAL_RANGE" value="5000"/>
        <parameter name="WEEK" value="yes"/>
        <parameter name="LOG" value="no"/>
        <parameter name="MAX_FIT_FL" value="6.5 hours"/>
        <parameter name="MAX_LIVE" value="many"/>
        <parameter name="SIM_INSTALL_PATH" value="C:\Lots &amp; more\Prepar3D v5"/>
        <parameter name="lfolder2" value="D:\liveries"/>)");
    EXPECT_EQ(LATERAL_RANGE, 100);
    EXPECT_TRUE(WEEK);
    EXPECT_FALSE(LOG);
    EXPECT_EQ(MAX_FIT_FL, 6.5F);
    EXPECT_EQ(MAX_LIVE, 0);
    EXPECT_EQ(SIM_INSTALL_PATH.get(), "C:\\Lots & more\\Prepar3D v5");
    EXPECT_EQ(lfolder[2].get(), "D:\\liveries");
    for (const char* line : {"\nLATERAL_RANGE=100\n", "\nWEEK=1\n", "\nLOG=0\n", "\nMAX_FIT_FL=6.5\n",
                             "\nlfolder2=D:\\liveries\n"}) {
        EXPECT_THAT(log(), HasSubstr(line));
    }
    EXPECT_THAT(window.asked, testing::IsSupersetOf({"show LATERAL_RANGE=100", "show PARK_SOFT=1"}))
        << "every box shows what was read";
}

TEST_F(ParameterFileTest, MissingEntriesAreAddedAtTheEndAndOthersLeftAlone) {
    readStoreOf(R"(
        <!-- my settings -->
        <parameter name="OF_A_LATER_VERSION" value="7"/>
        <parameter name="MAX_LIVE" value="80"/>
        <parameter name="AIRPORT_RANGE"/>)");
    EXPECT_THAT(entries(),
                testing::StartsWith("OF_A_LATER_VERSION=7 MAX_LIVE=80 AIRPORT_RANGE=20 RANDOM=1 "));
    EXPECT_THAT(store(), HasSubstr("<!-- my settings -->"));
    EXPECT_EQ(MAX_LIVE, 80);
    EXPECT_EQ(AIRPORT_RANGE, 20);
}

TEST_F(ParameterFileTest, EmptyFolderEntriesDisappear) {
    lfolder[3].set("from before");
    readStoreOf(R"(
        <parameter name="lfolder3" value=""><deep><er/></deep></parameter>
        <parameter name="afolder0" value="D:\scenery"/>
        <parameter name="afolder9"/>
        <parameter name="afolder1" value=""/>
        <parameter name="afolder1" value="D:\twice"/>)");
    EXPECT_THAT(entries(), Not(HasSubstr("lfolder")));
    EXPECT_THAT(entries(), HasSubstr("afolder0=D:\\scenery "));
    EXPECT_THAT(entries(), HasSubstr("afolder1=D:\\twice "));
    EXPECT_EQ(afolder[1].get(), "D:\\twice");
    EXPECT_THAT(entries(), Not(HasSubstr("afolder9")));
    EXPECT_TRUE(lfolder[3].empty());
    EXPECT_THAT(log(), HasSubstr("\nParameter lfolder3 removed\n"));
    EXPECT_THAT(log(), HasSubstr("\nParameter afolder9 removed\n"));
}

TEST_F(ParameterFileTest, AFolderEntryAsDeepAsTheFileAllowsIsRemoved) {
    std::string deep;
    constexpr int depth = 300'000;
    for (const char* tag : {"<a>", "</a>"}) {
        for (int i = 0; i < depth; ++i) {
            deep += tag;
        }
    }
    readStoreOf(fmt::format(R"(<parameter name="lfolder0" value="">{}</parameter>)", deep));
    EXPECT_EQ(entries(), freshStore);
}

TEST_F(ParameterFileTest, AnUnusableFileBlocksNoStartAndIsKept) {
    const std::string cases[] = {
        "",
        "<parameters><parameter name=\"MAX_LIVE\" val",
        "not XML at all",
        std::string("\0\0\0\0", 4),
        "<parameters><parameter name=\"MAX_LIVE\" value=\"3\"></parameters>",
        std::string(5'000'000, ' '),
    };
    int kept = 0;
    for (const std::string& content : cases) {
        folder.write(storePath, content);
        MAX_LIVE.set(7);
        readParameters();
        EXPECT_EQ(MAX_LIVE, -1);
        EXPECT_EQ(entries(), freshStore);
        const std::string copy = fmt::format("user/roaming/Kestrane_P3D/parameters-unusable-{}.xml", ++kept);
        EXPECT_TRUE(folder.read(copy) == content) << copy;
        EXPECT_THAT(messageLine().message, HasSubstr(fmt::format("parameters-unusable-{}.xml", kept)));
    }
    EXPECT_THAT(log(), HasSubstr("not found, default values taken:"));
    std::filesystem::remove(folder.path() / storePath);
    std::filesystem::create_directories(folder.path() / storePath / "in the way");
    readParameters();
    EXPECT_EQ(entries(), freshStore) << "a folder in the file's place";
}

TEST_F(ParameterFileTest, ReadsTheEncodingsThatEditorsWrite) {
    const std::string ascii = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><parameters>"
                              "<parameter name=\"MAX_LIVE\" value=\"33\"/></parameters>";
    std::string utf16 = "\xFF\xFE";
    for (const char c : ascii) {
        utf16 += {c, '\0'};
    }
    folder.write(storePath, utf16);
    readParameters();
    EXPECT_EQ(MAX_LIVE, 33);

    // The declaration must not outlive the encoding that it names.
    folder.write(storePath, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><parameters>"
                            "<parameter name=\"SIM_INSTALL_PATH\" value=\"D:\\Fl\xFCge\"/></parameters>");
    for (int start = 0; start < 2; ++start) {
        readParameters();
        EXPECT_EQ(SIM_INSTALL_PATH.get(), "D:\\Fl\xC3\xBCge");
    }
}

TEST_F(ParameterFileTest, ASaveChangesOneEntryAndNothingElse) {
    readParameters();
    MAX_LIVE.set(44);
    WEEK.set(true);
    EXPECT_TRUE(saveParameter(MAX_LIVE));
    std::string expected(freshStore);
    expected.replace(expected.find("MAX_LIVE=-1"), 11, "MAX_LIVE=44");
    EXPECT_EQ(entries(), expected);
    EXPECT_THAT(log(), HasSubstr("\nMAX_LIVE=44\n"));
    EXPECT_EQ(storedParameterText("MAX_LIVE"), "44");
    EXPECT_EQ(storedParameterText("WEEK"), "0");
    EXPECT_EQ(storedParameterText("x' or 'a'='a"), "") << "a name cannot reach into the query";
    EXPECT_EQ(storedParameterText("x\"] | //*[@name=\"LOG"), "");
    EXPECT_THAT(filesBesideStore(), testing::ElementsAre("parameters.xml"));
}

TEST_F(ParameterFileTest, ASaveMakesWhatIsMissing) {
    EXPECT_EQ(storedParameterText("MAX_LIVE"), "");
    std::filesystem::remove_all(parametersFolder());
    EXPECT_TRUE(saveParameter(MAX_LIVE));
    EXPECT_EQ(entries(), "MAX_LIVE=-1 ");
    folder.write(storePath, "<other/>");
    EXPECT_TRUE(saveParameter(MAX_LIVE));
    EXPECT_EQ(entries(), "MAX_LIVE=-1 ");
}

TEST_F(ParameterFileTest, ASaveOverAnUnusableFileKeepsItAndAllPresentValues) {
    folder.write(storePath, "<parameters><param");
    AIRPORT_RANGE.set(25);
    MAX_LIVE.set(44);
    EXPECT_TRUE(saveParameter(MAX_LIVE));
    EXPECT_THAT(entries(), HasSubstr(" MAX_LIVE=44 "));
    EXPECT_THAT(entries(), HasSubstr(" AIRPORT_RANGE=25 "));
    EXPECT_THAT(filesBesideStore(), Contains("parameters-unusable-1.xml"));
}

TEST_F(ParameterFileTest, AFailedSaveIsLoggedAndTheValueStays) {
    std::filesystem::remove_all(parametersFolder());
    folder.write("user/roaming/Kestrane_P3D", "a file where the folder belongs");
    MAX_LIVE.set(44);
    EXPECT_FALSE(saveParameter(MAX_LIVE));
    EXPECT_EQ(MAX_LIVE, 44);
    EXPECT_THAT(log(), HasSubstr("\nsaving xml did not work?\n"));
    readParameters();
    EXPECT_EQ(MAX_LIVE, -1);
}

TEST_F(ParameterFileTest, AnyTextOfTheOperatorSurvivesTheFile) {
    for (const char* text : {"<&>\"'", "line\nend\ttab\r", " blanks ", "]]>", "\xE2\x82\xAC \xF0\x9F\x9B\xA9",
                             "--><parameter name='MAX_LIVE' value='3'/>", "\x01\x1F"}) {
        SIM_INSTALL_PATH.set(text);
        ASSERT_TRUE(saveParameter(SIM_INSTALL_PATH));
        EXPECT_EQ(storedParameterText("SIM_INSTALL_PATH"), text);
    }
}

TEST_F(ParameterFileTest, SavesOfTwoThreadsLoseNothing) {
    readParameters();
    const auto saveMany = [](IntParameter& parameter) {
        for (int value = 0; value <= 30; ++value) {
            parameter.set(value);
            saveParameter(parameter);
        }
    };
    std::thread other([&] { saveMany(MAX_LIVE); });
    saveMany(CUSTOM_MAX_PARK);
    other.join();
    EXPECT_EQ(storedParameterText("MAX_LIVE"), "30");
    EXPECT_EQ(storedParameterText("CUSTOM_MAX_PARK"), "30");
    EXPECT_THAT(filesBesideStore(), testing::ElementsAre("parameters.xml"));
}

/// Numbers as a German or French system writes them, for everything that asks the locale.
class CommaNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(ParameterFileTest, NumbersDoNotFollowTheSystemsLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    // Where the machine has such a locale, the C library follows it too.
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    readParameters();
    MAX_FIT_FL.set(12.5F);
    AUTO_RANGE_ABOVE_HEIGHT.set(42000);
    saveParameter(MAX_FIT_FL);
    saveParameter(AUTO_RANGE_ABOVE_HEIGHT);
    EXPECT_EQ(storedParameterText("MAX_FIT_FL"), "12.5");
    EXPECT_EQ(storedParameterText("AUTO_RANGE_ABOVE_HEIGHT"), "42000");
    readParameters();
    EXPECT_EQ(MAX_FIT_FL, 12.5F);
    EXPECT_EQ(AUTO_RANGE_ABOVE_HEIGHT, 42000);
    EXPECT_THAT(log(), HasSubstr("\nMAX_FIT_FL=12.5\n"));
    EXPECT_EQ(formatHours(7.5), "7.5");
    std::setlocale(LC_ALL, "C");
    std::locale::global(before);
}

} // namespace
} // namespace kst
