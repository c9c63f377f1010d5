#include "catalogue/referencetables.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "platform/paths.h"
#include "scanner/airportarchive.h"
#include "scanner/archive.h"
#include "scanner/stockscenery.h"
#include "support/environment.h"
#include "support/progresswatch.h"
#include "support/tempfolder.h"
#include "tools/bglscenery/bglwriter.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace kst {
namespace {

namespace fs = std::filesystem;
using scenery::Airport;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// An install folder with two publishers known, a simulator and a download server's archive.
class Archive : public testing::Test {
protected:
    Archive() {
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT",
                             "file://" + platform::utf8FromPath(folder.path()) + "/downloads/");
        ReferenceTables& tables = referenceTables();
        tables = {};
        tables.publisherNames = {{"Fine Makers", "finemk"}, {"Odd (Ltd", "odd.*s[0-9]"}};
        tables.simaddonAirports = {"LSXA"};
        tables.thirdPartyAirports = {{"Other", {"LSXC99"}}, {"Fine Makers", {"LSXC40", "LSXD40"}}};
        SIM_INSTALL_PATH.set("sim v5");
        AFG_AUTOMATIC.set(false);
        lf_createFolders();
        lf_setStockAirportsPath();
        scanFoundAirports = false;
        openLog();
    }
    ~Archive() override {
        closeLog();
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
        referenceTables() = {};
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
        lf_setStockAirportsPath();
        userClosed = false;
        scanFoundAirports = false;
        resetDisplay();
    }

    void addFile(const std::string& path, const std::vector<Airport>& airports) const {
        scenery::File file;
        file.airports = airports;
        folder.write(path, scenery::bglBytes(file));
    }
    void addFile(const std::string& path, const std::string& icao, unsigned stands) const {
        addFile(path, {airport(icao, stands)});
    }
    static Airport airport(const std::string& icao, unsigned stands) {
        Airport result;
        result.icao = icao;
        for (unsigned number = 1; number <= stands; ++number) {
            result.parkings.push_back({12, number});
        }
        return result;
    }
    void addStock(const std::string& icao, const std::string& parameters) const {
        folder.write("downloads/P3D/archive/stock/" + icao + ".xml",
                     "<parameters>" + parameters + "</parameters><parkpositions/>");
    }

    bool scan(const std::vector<std::string>& folders = {"addons"}) const {
        return lf_runAirportScan(folders);
    }
    std::vector<std::string> report() const {
        std::vector<std::string> lines;
        gf_readExtTextFileToStringVector(folders::info / "AirportsScanLog.txt", lines);
        return lines;
    }
    std::string log() const { return folder.read("Log.txt").value_or(""); }
    /// Every file of the two folders, by "folder/name", but for the line with the date of writing.
    std::map<std::string, std::string> entries() const {
        std::map<std::string, std::string> found;
        for (const fs::path& place : {folders::myOrbx, folders::myThirdparty}) {
            for (const fs::directory_entry& entry : fs::directory_iterator(place)) {
                std::string text = folder.read(entry.path()).value_or("");
                const std::size_t date = text.find("name=\"date\"");
                if (date != std::string::npos) {
                    text.erase(date, text.find('\n', date) - date);
                }
                found[(place.filename() / entry.path().filename()).generic_string()] = text;
            }
        }
        return found;
    }

    test::TempFolder folder;
};

TEST_F(Archive, PublisherAndArchiveDecideBetweenLinkAndFile) {
    const struct {
        const char* path;
        const char* icao;
        unsigned stands;
        const char* link; ///< what the link holds, nullptr for none
        bool file;
        const char* place;
        const char* line;
    } cases[] = {
        {"addons/ORBX/a/LSXA.bgl", "LSXA", 900, "archive/simaddon/LSXA.xml\n", false, "my_ORBX",
         "simaddon airport LSXA linked to archive/simaddon/LSXA.xml"},
        {"addons/MyOrbxThings/b.BGL", "LSXB", 2, nullptr, true, "my_ORBX", "LSXB does not exist as simaddon"},
        {"addons/Fine Makers/c.bgl", "LSXC", 40, "archive/thirdparty/Fine%20Makers/LSXC.xml\n", false,
         "my_thirdparty", "thirdparty airport LSXC linked to archive/thirdparty/Fine%20Makers/LSXC.xml"},
        {"addons/FINEMK/d.bgl", "LSXD", 41, "archive/thirdparty/Fine%20Makers/LSXD.xml\n", true,
         "my_thirdparty", "===> LSXD has 41 parkpos while archived one has 40"},
        {"addons/Odd Towns7/e.bgl", "LSXE", 3, nullptr, true, "my_thirdparty",
         "thirdparty Odd (Ltd LSXE does not exist"},
        {"addons/else/f.bgl", "LSXF", 5, nullptr, true, "my_thirdparty", "Generated LSXF.xml: 5 positions"},
        {"addons/else/g.bgl", "LSXG", 0, nullptr, false, "my_thirdparty", nullptr},
    };
    for (const auto& row : cases) {
        addFile(row.path, row.icao, row.stands);
    }
    EXPECT_TRUE(scan());
    std::map<std::string, std::string> found = entries();
    for (const auto& row : cases) {
        const std::string entry = fmt::format("{}/{}", row.place, row.icao);
        EXPECT_EQ(found.contains(entry + ".txt"), row.link != nullptr) << row.path;
        EXPECT_EQ(found.contains(entry + ".xml"), row.file) << row.path;
        if (row.link != nullptr) {
            EXPECT_EQ(found[entry + ".txt"], row.link);
        }
        if (row.line != nullptr) {
            EXPECT_THAT(report(), Contains(row.line));
        }
        found.erase(entry + ".txt");
        found.erase(entry + ".xml");
    }
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(log(), HasSubstr("from filename => publisher  simaddon\n"));
    EXPECT_THAT(log(), HasSubstr("AirportsScanLog.txt written\n"));
}

TEST_F(Archive, AGeneratedFileHoldsTheStandsInTheOrderOfTheirNames) {
    Airport airport;
    airport.icao = "LSXH";
    airport.names = {"Heliport"};
    airport.parkings = {{12, 2, 5, 33.3F, 0.0F, 47.1, 8.1}, {12, 10, 9, 20.0F, 12.34F, 47.2, 8.2}};
    airport.helipads = {{47.25, 8.5, 25.0F, 90.0F}};
    addFile("addons/h.bgl", {airport});
    EXPECT_TRUE(scan());
    const std::string text = entries()["my_thirdparty/LSXH.xml"];
    const std::size_t first =
        text.find("id=\"A10\" latitude=\"47.200000\" longitude=\"8.200000\" heading=\"12.3\" "
                  "radius=\"20.0\" cargo=\"false\" ramp=\"false\"");
    const std::size_t second = text.find("id=\"A2\" latitude=\"47.100000\" longitude=\"8.100000\" "
                                         "heading=\"360.0\" radius=\"33.3\" cargo=\"true\" ramp=\"true\"");
    const std::size_t third = text.find("id=\"helipad1\" latitude=\"47.250000\" longitude=\"8.500000\" "
                                        "heading=\"90.0\" radius=\"12.5\" heli=\"true\" ramp=\"false\"");
    EXPECT_TRUE(first < second && second < third && third != std::string::npos) << text;
    for (const char* part : {"name=\"altitude\" value=\"1312\"", "name=\"publisher\" value=\"unknown\"",
                             "name=\"airport_name\" value=\"Heliport\"", "h.bgl"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
    EXPECT_THAT(report(), Contains("Generated LSXH.xml: 3 positions, of which 1 helipad"));
}

TEST_F(Archive, WhatIsNoAddOnSceneryIsPassedOver) {
    for (const char* path : {"addons/a/X.Bgl", "addons/a/x.txt", "addons/statics/x.bgl",
                             "addons/a_heliports.bgl", "sim v5/Scenery/World/x.bgl"}) {
        addFile(path, "LSXX", 3);
    }
    folder.write("addons/empty.bgl", "");
    folder.write("file", "");
    EXPECT_FALSE(scan({"", "addons", "absent", "file", "sim v5/Scenery", "sim v5"}));
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_THAT(report(), testing::ElementsAre("Scanning for addon airports in addons",
                                               "Scanning for addon airports in sim v5"));
    EXPECT_THAT(log(), HasSubstr("absent does not exist, skipped!\n"));
    EXPECT_THAT(log(), HasSubstr("file is not a folder name, skipped!\n"));
}

TEST_F(Archive, ABrokenFileIsReportedAndTheOthersAreRead) {
    Airport broken = airport("LSXB", 2);
    broken.parkingCount = 65535;
    Airport shouting = airport("LSXS", 0);
    for (unsigned number = 0; number < 4000; ++number) {
        shouting.parkings.push_back({12, number, 9, 0.5F});
    }
    addFile("addons/0.bgl", {airport("LSX0", 1), broken});
    addFile("addons/1.bgl", {shouting});
    for (const char* icao : {"LSX2", "LSX3", "LSX4", "LSX5", "LSX6", "LSX7", "LSX8", "LSX9"}) {
        addFile(fmt::format("addons/{}.bgl", icao), icao, 2);
    }
    EXPECT_TRUE(scan());
    EXPECT_EQ(entries().size(), 9U);
    EXPECT_FALSE(entries().contains("my_thirdparty/LSXB.xml"));
    const std::vector<std::string> lines = report();
    EXPECT_EQ(std::ranges::count_if(
                  lines, [](const auto& line) { return line.starts_with("===>  airports search"); }),
              1);
    EXPECT_LT(lines.size(), 1100U) << "one file fills the report";
}

TEST_F(Archive, ProgressGrowsOverAllFolders) {
    const test::ProgressWatch watch;
    for (const char* name : {"one/LSX1", "one/sub/LSX2", "one/sub/LSX3", "two/LSX4", "two/LSX5"}) {
        addFile(fmt::format("{}.bgl", name), std::string(name).substr(4 + (name[4] == 's' ? 4 : 0)), 2);
    }
    EXPECT_TRUE(scan({"one", "two"}));
    const std::string last = watch.expectGrowth("Scanning for addon airports ... ");
    EXPECT_TRUE(last.ends_with(" with airports")) << last;
}

TEST_F(Archive, TwoScansGiveTheSameFilesAndTheSameLines) {
    // One airport in two files: the second is read long before the first, and yet it is the one that stays.
    std::vector<Airport> first(20000, airport("LSYY", 0));
    first.push_back(airport("LSXX", 1));
    addFile("addons/00.bgl", first);
    addFile("addons/01.bgl", "LSXX", 2);
    for (unsigned i = 10; i < 20; ++i) {
        addFile(fmt::format("addons/{}/x.bgl", i), fmt::format("LS{}", i), i);
    }
    const auto sortedReport = [&] {
        std::vector<std::string> lines = report();
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    scan();
    const auto files = entries();
    const auto lines = sortedReport();
    ASSERT_EQ(files.size(), 11U);
    EXPECT_THAT(files.at("my_thirdparty/LSXX.xml"), HasSubstr("num_parkpos\" value=\"2\""));
    scan();
    EXPECT_EQ(entries(), files);
    EXPECT_EQ(sortedReport(), lines);
}

TEST_F(Archive, AirportsThatCanBeLearnedOffLineAreLaidOut) {
    addFile("addons/ORBX/a.bgl", "LSXB", 2);
    addFile("addons/finemk/d.bgl", "LSXD", 41);
    addFile("addons/else/e.bgl", {airport("LSXE", 2), airport("LSXF", 2)});
    addStock("LSXB", R"(<parameter name="Qf_real" value="20"/>)");
    addStock("LSXD", R"(<parameter name="Qf_soft" value="3"/><parameter name="WEEK" value="18"/>)");
    addStock("LSXE", R"(<parameter name="Qf_real" value="20"/><parameter name="WEEK" value="17"/>)");
    folder.write("TBLO/OLD1.xml", "of the scan before");
    folder.write("airports/my_thirdparty/longer.xml", "no airport of the scan");
    EXPECT_TRUE(scan());
    std::vector<std::string> copies;
    for (const fs::directory_entry& entry : fs::directory_iterator("TBLO")) {
        copies.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(copies, testing::UnorderedElementsAre("LSXB.xml", "LSXD.xml"));
    const auto found = entries();
    EXPECT_TRUE(found.contains("my_ORBX/LSXB.xml")) << "nothing else serves it";
    EXPECT_FALSE(found.contains("my_thirdparty/LSXD.xml")) << "its link serves it";
    EXPECT_TRUE(found.contains("my_thirdparty/LSXE.xml"));
    EXPECT_EQ(statusValues().offlineAirports, 2U);
    EXPECT_TRUE(statusValues().simaddonComplete);
    EXPECT_THAT(log(), HasSubstr("\n===> please zip the folder"));

    // Nothing to learn: the folder goes, and the log says so.
    fs::remove_all("downloads");
    fs::remove("airports/my_thirdparty/longer.xml");
    scan();
    EXPECT_FALSE(fs::exists("TBLO"));
    EXPECT_EQ(statusValues().offlineAirports, 0U);
    EXPECT_THAT(log(), HasSubstr("All your ORBX airports are done, no off line learning needed.\n"));
    EXPECT_THAT(log(), HasSubstr("All your third party airports are done, no off line learning needed.\n"));
}

TEST_F(Archive, AScanIsDoneOnceAndItsFailureLeavesTheFoldersAlone) {
    SCAN_AIRPORTS.set(true);
    folder.write("airports/my_ORBX/OLD1.xml", "of the scan before");
    folder.write("airports/my_thirdparty/OLD2.txt", "of the scan before");
    EXPECT_THROW(gf_scanAirports(), UserErrorException) << "no folder is named";
    EXPECT_TRUE(SCAN_AIRPORTS);
    EXPECT_EQ(entries().size(), 2U);

    afolder[0].set("addons");
    addFile("addons/a.bgl", "LSXF", 1);
    gf_scanAirports();
    EXPECT_FALSE(SCAN_AIRPORTS);
    EXPECT_EQ(entries().size(), 1U);
    EXPECT_THAT(log(), HasSubstr("airports scan manual  starts"));
    EXPECT_THAT(log(), HasSubstr("Airports scan successful\n"));

    SCAN_AIRPORTS.set(true);
    scanFoundAirports = false;
    fs::remove("addons/a.bgl");
    gf_scanAirports();
    EXPECT_FALSE(SCAN_AIRPORTS);
    EXPECT_THAT(log(), HasSubstr("Warning: Scan has not found any add-on airports\n"));
}

TEST_F(Archive, AnExitEndsTheScanWhichThenStaysDue) {
    SCAN_AIRPORTS.set(true);
    afolder[0].set("addons");
    addFile("addons/a.bgl", "LSXF", 1);
    userClosed = true;
    gf_scanAirports();
    EXPECT_TRUE(SCAN_AIRPORTS);
    EXPECT_THAT(entries(), IsEmpty());
}

} // namespace
} // namespace kst
