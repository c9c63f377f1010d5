#include "catalogue/configfile.h"
#include "catalogue/referencetables.h"
#include "catalogue/scan.h"
#include "catalogue/scanfolder.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "support/environment.h"
#include "support/places.h"
#include "support/progresswatch.h"
#include "support/tempfolder.h"
#include "support/thrown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

/// A scan of folders that lie in the working directory.
class LiveryScan : public testing::Test {
protected:
    LiveryScan() {
        ReferenceTables& tables = referenceTables();
        tables = {};
        tables.validModels = {"A320", "B738", "C172"};
        tables.largeModels = {"A320", "B738"};
        tables.validAirlines = {"KLM", "DLH"};
        tables.regcodeTable = {{"D-AIUA", {"DLH", "A320", "EWG", true}}};
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", "file:///nowhere/downloads/");
        lf_createFolders();
        openLog();
    }
    ~LiveryScan() override {
        closeLog();
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
        referenceTables() = {};
        resetDisplay();
        LIG_PRIORITIZE.setDefault();
        LIG_AUTOMATIC.setDefault();
        SCAN_LIVERIES.setDefault();
        userClosed = false;
        for (TextParameter& parameter : lfolder) {
            parameter.setDefault();
        }
    }

    /// An aircraft folder with sections of these lines each, all of whose parts exist.
    void aircraft(const fs::path& path, const std::string& model, const std::vector<std::string>& sections,
                  const char* file = "aircraft.cfg") const {
        fs::create_directories(path / "model");
        fs::create_directories(path / "texture");
        folder.write(path / ".AIR", "");
        std::string text = "[General]\natc_model=" + model + "\n";
        for (std::size_t i = 0; i < sections.size(); ++i) {
            text += fmt::format("[fltsim.{}]\n{}\n", i, sections[i]);
        }
        folder.write(path / file, text);
    }
    std::string stored() const {
        pugi::xml_document document;
        document.load_file(liveriesStorePath().c_str());
        std::string lines;
        for (const pugi::xml_node node : document.child("liveries").children("liv")) {
            for (const pugi::xml_attribute attribute : node.attributes()) {
                lines += fmt::format("{}={} ", attribute.name(), attribute.value());
            }
            lines.back() = '\n';
        }
        return lines;
    }
    std::string log() const { return report("Log.txt"); }
    std::string report(const fs::path& name) const {
        return test::withSlashes(folder.read(name).value_or(""));
    }

    test::TempFolder folder;
};

TEST_F(LiveryScan, StoresWhatItFoundSortedAndCorrected) {
    aircraft("ai/b", "B738",
             {"title=two\natc_parking_codes=KLM", "title=one & \"<\xE9>\"\natc_parking_codes=KLM"});
    aircraft("ai/a/deep/er", "C172", {"title=known\natc_id=DAIUA"}, "SIM.CFG");
    EXPECT_TRUE(lf_scanFolders({"missing", "ai/b/aircraft.cfg", "", "AI"}));
    EXPECT_EQ(stored(), "airl=EWG type=A320 cargo=true title=known atcid=DAIUA\n"
                        "airl=KLM type=B738 title=one & \"<\xE9>\"\nairl=KLM type=B738 title=two\n");
    EXPECT_EQ(report("output/info/AirlineModelConversions.txt"),
              fmt::format("{0:80} DAIUA cargo false => true\n{0:80} DAIUA airl DLH => EWG\n"
                          "{0:80} DAIUA model C172 => A320\n",
                          "known"));
    EXPECT_FALSE(folder.read("output/errors/IncompleFltsimSections.txt"));
    for (const char* line :
         {"\nmissing does not exist, skipped!\n", "\nai/b/aircraft.cfg is not a folder name, skipped!\n",
          "\n3 liveries found in AI\n", "\n3 in total\n", "\n\"output/LiveriesScanned.xml\" saved\n",
          "\n3 liveries in output/LiveriesScanned.xml\n", "\n\nNo errors\n\nInformation:\n",
          "\n3 liveries updated with real live data from dbase, see "
          "output/info/AirlineModelConversions.txt\n"}) {
        EXPECT_THAT(log(), HasSubstr(line));
    }
}

TEST_F(LiveryScan, TheFirstInTheOrderOfTheWalkKeepsATitle) {
    const std::string section = "title=same\natc_parking_codes=";
    aircraft("ai/c", "B738", {section + "DLH"});
    aircraft("ai/b/x", "B738", {section + "KLM", section + "DLH"});
    aircraft("ai_2/a", "B738", {section + "DLH"});
    EXPECT_TRUE(lf_scanFolders({"ai", "ai_2", "ai"}));
    EXPECT_EQ(stored(), "airl=KLM type=B738 title=same\n");
    EXPECT_EQ(report("output/errors/IncompleFltsimSections.txt"),
              "ai/b/x/aircraft.cfg [fltsim.0] title \"same\" already exists\n"
              "ai/b/x/aircraft.cfg [fltsim.1] title \"same\" already exists\n"
              "ai/b/x/aircraft.cfg [fltsim.1] title \"same\" already exists\n"
              "ai/c/aircraft.cfg [fltsim.0] title \"same\" already exists\n"
              "ai/c/aircraft.cfg [fltsim.0] title \"same\" already exists\n"
              "ai_2/a/aircraft.cfg [fltsim.0] title \"same\" already exists\n");
    EXPECT_THAT(log(), HasSubstr("\n1 liverie found in ai\n0 liverie found in ai_2\n"));
    EXPECT_THAT(log(), HasSubstr("\n6 incomplete [fltsim.x] sections, see "));
}

TEST_F(LiveryScan, EveryReportHasItsFileAndItsLine) {
    folder.write("input/my_regcodes/mine.txt", "unwanted\n");
    aircraft("ai/1", "none", {"title=1"});
    aircraft("ai/2", "B738", {});
    aircraft("ai/3", "B738", {"title=3\natc_parking_codes=QQQ", "title=unwanted\natc_parking_codes=KLM"});
    aircraft("ai/4", "C172", {"title=4\natc_parking_codes=QQQ\natc_id=PH-*"});
    folder.write("ai/4/no configuration.txt", "");
    folder.write("ai/5/aircraft.cfg", "[fltsim.1]\n");
    folder.write("ai/6/aircraft.cfg", "[fltsim.0]\n");
    folder.write("ai/7/aircraft.cfg", "\xFF\xFE" + std::string("\x00\xD8\n\0", 4));
    EXPECT_TRUE(lf_scanFolders({"ai"}));
    EXPECT_EQ(stored(), "airl=PVT type=C172 title=4\n");
    EXPECT_EQ(report("output/errors/InvalidAirlineCodes.txt"),
              "QQQ          in ai/3/aircraft.cfg [fltsim.0]\nQQQ          in ai/4/aircraft.cfg [fltsim.0]\n");
    EXPECT_EQ(report("output/errors/InvalidAircraftCodes.txt"), "none             in ai/1/aircraft.cfg\n");
    EXPECT_EQ(report("output/errors/InvalidAircraftCfgFiles.txt"),
              "Line atc_model= is missing in [General] section of ai/6/aircraft.cfg\n"
              "ai/5/aircraft.cfg contains non-consecutive [fltsim.x] numbers at .x=1\n");
    EXPECT_EQ(report("output/info/AircraftCfgWithNoFltsimSection.txt"), "ai/2/aircraft.cfg\n");
    EXPECT_FALSE(fs::exists("output/errors/Fixes.txt"));
    EXPECT_THAT(log(), HasSubstr("4 PH-* wild cards no longer supported"));
    EXPECT_THAT(log(),
                HasSubstr("\nErrors:\n2 invalid airline codes, see output/errors/InvalidAirlineCodes.txt\n"
                          "1 invalid model code, see output/errors/InvalidAircraftCodes.txt\n"
                          "2 invalid aircraft.cfg files, see output/errors/InvalidAircraftCfgFiles.txt\n"
                          "1 incomplete [fltsim.x] sections, see output/errors/IncompleFltsimSections.txt\n"
                          "\nInformation:\n1 empty aircraft.cfg files, see "));
}

TEST_F(LiveryScan, FoldersOfAirportsAndLongPathsAreNotEntered) {
    const std::string longName(240, 'x');
    aircraft("ai/Airport", "B738", {"title=capital\natc_parking_codes=KLM"});
    aircraft("ai/my airports/x", "B738", {"title=below\natc_parking_codes=KLM"});
    aircraft("ai/" + longName, "B738", {"title=243\natc_parking_codes=KLM"});
    aircraft("ai/" + longName + "/1234567", "B738", {"title=251\natc_parking_codes=KLM"});
    aircraft("airport", "B738", {"title=the folder itself\natc_parking_codes=KLM"});
    aircraft("airport/x", "B738", {"title=below that\natc_parking_codes=KLM"});
    EXPECT_TRUE(lf_scanFolders({"ai", "airport"}));
    EXPECT_EQ(stored(), "airl=KLM type=B738 title=243\nairl=KLM type=B738 title=capital\n"
                        "airl=KLM type=B738 title=the folder itself\n");
}

TEST_F(LiveryScan, PrioritiesLeaveThePairsOfTheLowestFolder) {
    std::vector<LiveryData> liveries = {{"KLM", "B738", "a2", "", 2, false},
                                        {"KLM", "B738", "a1", "", 1, false},
                                        {"KLM", "A320", "b3", "", 3, false},
                                        {"KLM", "B738", "c1", "", 1, false},
                                        {"DLH", "B738", "d2", "", 2, false}};
    prioritiseLiveries(liveries);
    std::vector<std::string> left;
    for (const LiveryData& livery : liveries) {
        left.push_back(livery.title);
    }
    EXPECT_THAT(left, ElementsAre("a1", "b3", "c1", "d2"));
}

TEST_F(LiveryScan, TheTenthFolderHasTheLastNumber) {
    std::vector<std::string> folders;
    for (int i = 0; i < 12; ++i) {
        const std::string name = fmt::format("f{:02}", i);
        aircraft(name, "B738", {fmt::format("title=t{}\natc_parking_codes=KLM", i)});
        folders.push_back(name);
    }
    LIG_PRIORITIZE.set(true);
    EXPECT_TRUE(lf_scanFolders({folders.begin() + 1, folders.end()}));
    EXPECT_EQ(stored(), "airl=KLM type=B738 title=t1\n");
    ScanState state;
    scannedLiveries.clear();
    lf_searchLiveriesinFolder(10, "f11", state);
    ASSERT_EQ(scannedLiveries.size(), 1U);
    EXPECT_EQ(scannedLiveries.front().priority, 10);
    scannedLiveries.clear();
}

TEST_F(LiveryScan, AScanWithoutResultTellsWhatToDo) {
    folder.write("output/LiveriesScanned.xml", "old");
    folder.write("output/errors/Fixes.txt", "old");
    SCAN_LIVERIES.set(true);
    LIG_AUTOMATIC.set(true);
    const auto message = [] { return test::thrown<UserErrorException>(gf_scanLiveries); };
    EXPECT_EQ(message(), "43: Automatic scan has not found any liveries, switch off automatic and set "
                         "lfolder parameter(-s), Manual 5.1");
    EXPECT_FALSE(fs::exists("output/LiveriesScanned.xml"));
    EXPECT_FALSE(fs::exists("output/errors"));
    LIG_AUTOMATIC.set(false);
    EXPECT_EQ(message(), "48: Set lfolder parameter(-s) to your liveries first, see Manual 5.1 (or check "
                         "Liveries automatic)");
    fs::create_directory("empty");
    lfolder[3].set("empty");
    EXPECT_EQ(message(), "53: no liveries found");
    EXPECT_THAT(log(), HasSubstr("\nNo liveries found in empty\n"));
    EXPECT_TRUE(SCAN_LIVERIES) << "the next start tries again";
}

TEST_F(LiveryScan, AGoodScanTurnsItselfOffAndIsRead) {
    aircraft("ai", "B738", {"title=one\natc_parking_codes=KLM"});
    SCAN_LIVERIES.set(true);
    LIG_AUTOMATIC.set(false);
    lfolder[9].set(".\\ai");
    gf_emptyCatalogue();
    gf_scanLiveries();
    gf_emptyCatalogue();
    EXPECT_FALSE(SCAN_LIVERIES);
    EXPECT_EQ(statusValues().liveryCount, 1U);
    EXPECT_THAT(log(), HasSubstr("++++++++++++++++++++++++ liveries scan manual starts ++++++++"));
    EXPECT_THAT(log(), HasSubstr("++++++++++++++++++++++++ liveries scan ends ++++++++"));
}

TEST_F(LiveryScan, AnExitEndsItAndLeavesNoStore) {
    aircraft("ai", "B738", {"title=one\natc_parking_codes=KLM"});
    folder.write("output/LiveriesScanned.xml", "old");
    userClosed = true;
    EXPECT_TRUE(lf_scanFolders({"ai"}));
    EXPECT_FALSE(fs::exists("output/LiveriesScanned.xml"));
    EXPECT_THAT(scannedLiveries, IsEmpty());
}

TEST_F(LiveryScan, WhatVanishesOrCannotBeReadIsPassedOver) {
    aircraft("ai/good", "B738", {"title=one\natc_parking_codes=KLM"});
    fs::create_directories("ai/folder/aircraft.cfg");
    folder.write("ai/huge/aircraft.cfg", "x");
    fs::resize_file("ai/huge/aircraft.cfg", largestTextFile + 1);
    ScanState state;
    lf_searchLiveriesinFolder(1, "ai", state);
    lf_searchLiveriesinFolder(1, "gone", state);
    EXPECT_EQ(scannedLiveries.size(), 1U);
    EXPECT_THAT(log(), HasSubstr("liveries search in folder gone aborted because of iterator problem: "));
    EXPECT_THAT(log(), HasSubstr("ai/huge/aircraft.cfg: "));
    const FileFindings gone = lf_searchLiveriesinFile({"ai/gone.cfg", CfgKind::Standard, 1, ""}, {"ai", {}});
    EXPECT_TRUE(gone.liveries.empty() && gone.reports.noFltsimFiles.empty());
    scannedLiveries.clear();
}

TEST_F(LiveryScan, ProgressGrowsOverAllFolders) {
    const test::ProgressWatch watch;
    for (const char* place : {"ai/a", "ai/b/c", "ai/b/d", "ai_2/e"}) {
        aircraft(place, "B738", {fmt::format("title={}\natc_parking_codes=KLM", place)});
    }
    EXPECT_TRUE(lf_scanFolders({"ai", "ai_2"}));
    EXPECT_THAT(watch.expectGrowth("Scanning for liveries: "), testing::EndsWith(" files, 4 liveries"));
}

} // namespace
} // namespace kst
