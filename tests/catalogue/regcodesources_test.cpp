#include "catalogue/liverytables.h"
#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "catalogue/regcodefiles.h"
#include "catalogue/regcodesources.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/scramble.h"
#include "catalogue/store.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "platform/paths.h"
#include "support/environment.h"
#include "support/places.h"
#include "support/tempfolder.h"
#include "support/thrown.h"
#include "tools/kestrane-data/zipfile.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

struct LineCase {
    const char* line;
    std::vector<RegcodeEntry> entries;
    bool good = true;
};

TEST(RegcodeLine, EveryFormOfTheTable) {
    const LineCase cases[] = {
        {"", {}},
        {"  \t", {}},
        {" KLM old ", {{"KLM old", {}, false}}},
        {"KLM 1;PH-BXA", {{"KLM 1", {"PH-BXA"}, true}}},
        {"KLM 1; PH-BXA ,\r", {{"KLM 1", {"PH-BXA"}, true}}},
        {"KLM 1;PH-BXA;anything", {{"KLM 1", {"PH-BXA"}, true}}},
        {"KLM 1;PH-BXA,PH-BXB", {{"KLM 1", {"PH-BXA", "PH-BXB"}, false}}},
        {"KLM 1;PH-BXA, PH-BXB ; #", {{"KLM 1", {"PH-BXA", "PH-BXB"}, true}}},
        {"KLM 1;PH-BXA,PH-BXB;x", {{"KLM 1", {"PH-BXA", "PH-BXB"}, false}}},
        {"KLM 1;AB,PH-BXB", {{"KLM 1", {"PH-BXB"}, false}}, false},
        {"KLM 1;AB,CD", {}, false},
        {"KLM 1;", {}},
        {"KLM 1; , ,", {}},
        {"KLM 1;1234567890123", {}, false},
        {"KLM 1;123456789012", {{"KLM 1", {"123456789012"}, true}}},
        {"KLM 1;PH-BXA;#;", {}, false},
    };
    for (const LineCase& row : cases) {
        std::vector<RegcodeEntry> entries;
        EXPECT_EQ(readRegcodeLine(row.line, "file", entries), row.good) << row.line;
        EXPECT_EQ(entries, row.entries) << row.line;
    }
}

/// A folder with a store, the user's files and a download server's archive.
class Store : public testing::Test {
protected:
    Store() {
        gf_emptyCatalogue();
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", test::fileUrl(folder_.path()) + "/downloads/");
        folder_.write("downloads/none", "");
        folder_.write("input/my_regcodes/none", "");
        std::filesystem::remove("input/my_regcodes/none");
        setReferenceForTest({{"B738", Category::Large, 35.8}, {"C172", Category::Light, 11.0}});
    }
    ~Store() override {
        gf_emptyCatalogue();
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
        resetMatching();
        setReferenceForTest({});
        scannedLiveries.clear();
        dontUseTitles.clear();
        resetDisplay();
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
    }
    void store(const std::string& liveries) const {
        folder_.write("output/LiveriesScanned.xml", "<?xml version=\"1.0\"?>\n" + liveries);
    }
    static void serveList(const std::string& liveries) {
        data::writeZip("downloads/AIG-regcodes.zip", "AIG-regcodes.xml",
                       "<AIG-regcodes>" + liveries + "</AIG-regcodes>");
    }

    const test::TempFolder folder_;
};

TEST_F(Store, UnusableOnesStopTheStartWithTheirCode) {
    const std::pair<const char*, const char*> cases[] = {{"51: ", nullptr},
                                                         {"51: ", "<liveries><liv"},
                                                         {"51: ", ""},
                                                         {"52: ", "<other></other>"},
                                                         {"533: ", "<liveries></liveries>"},
                                                         {"533: ", "<liveries><x/></liveries>"}};
    for (const auto& [code, text] : cases) {
        std::filesystem::remove("output/LiveriesScanned.xml");
        if (text != nullptr) {
            folder_.write("output/LiveriesScanned.xml", text);
        }
        EXPECT_TRUE(test::thrown<UserErrorException>(gf_processScannedLiveries).starts_with(code)) << code;
    }
}

TEST_F(Store, HandEditedOneIsSortedAndRepeatsGo) {
    store(
        R"(<liveries><liv airl="KLM" type="B738" title="b"/><liv airl="AAL" type="B738" title="c" cargo="Yes"/>
        <liv airl="KLM" type="B738" title="a" atcid="PH-BXA"/><liv airl="KLM" type="B738" title="b"/></liveries>)");
    lf_readLiveries();
    const std::vector<LiveryData> expected = {{"AAL", "B738", "c", "", 0, true},
                                              {"KLM", "B738", "a", "PH-BXA", 0, false},
                                              {"KLM", "B738", "b", "", 0, false}};
    EXPECT_EQ(scannedLiveries, expected);
}

TEST_F(Store, LaterSourcesOutrankTheLiveriesThemselves) {
    store(R"(<liveries>
        <liv airl="KLM" type="B738" title="a" atcid="PH-BXA"/><liv airl="KLM" type="B738" title="b" atcid="PH-BXA"/>
        <liv airl="KLM" type="B738" title="c"/><liv airl="PVT" type="C172" title="d" atcid="G-ABCD"/></liveries>)");
    serveList(fmt::format(R"(<livery title="c" reg="{},{}"/><livery title="not installed" reg="{}"/>
        <livery title=""/><livery title="bad" reg="{}"/>)",
                          gf_encodeRegcode("PH-BXA"), gf_encodeRegcode("PH-BXB"), gf_encodeRegcode("G-ABCD"),
                          std::string(25, 'A')));
    folder_.write("input/my_regcodes/mine.TxT", "b;PH-BXB\nnot used\nc;A,B,C,D;#;x\n");
    gf_processScannedLiveries();

    const auto& titles = liveryTables().regcodeTitles;
    EXPECT_EQ(titles.at("PH-BXA"), "c");
    EXPECT_EQ(titles.at("PH-BXB"), "b");
    EXPECT_EQ(titles.at("G-ABCD"), "d");
    EXPECT_EQ(liveryTables().specialTitles.size(), 1U);
    EXPECT_TRUE(liveryTables().specialTitles.contains("b"));
    EXPECT_EQ(folder_.read("output/errors/InlineRegcodes.txt"), "PH-BXA \"b\" => already in use by \"a\"\n");
    const std::string list = platform::utf8FromPath(std::filesystem::path("input") / "AIG-regcodes.xml");
    const std::string mine = platform::utf8FromPath(std::filesystem::path("input") / "my_regcodes");
    EXPECT_EQ(folder_.read("output/info/OfflineRegcodes.txt"),
              fmt::format("Processing file {0}\n"
                          "There were errors in processing the AIG-regcode file \"{0}\", see the Log.txt\n"
                          "   regcode PH-BXA for \"c\", instead of the same for \"a\"\n"
                          "1 new regcode added, 1 regcode replaced\n"
                          "Processing files in {1}\n"
                          "   regcode PH-BXB for \"b\", instead of the same for \"c\"\n"
                          "0 new regcodes added, 1 regcode replaced, 1 regcode defined as special\n",
                          list, mine));
    EXPECT_FALSE(std::filesystem::exists("input/AIG-regcodes.xml"));
    EXPECT_TRUE(std::filesystem::exists("input/AIG-regcodes0.xml"));
    EXPECT_EQ(messageLine().message,
              fmt::format("There were errors in processing the regcode files in folder "
                          "\"{}\", see the Log.txt",
                          mine));
    EXPECT_EQ(statusValues().liveryCount, 4U);
    EXPECT_TRUE(scannedLiveries.empty());

    // A second start of the worker finds the tables; a new scan has them built anew.
    std::filesystem::remove("output/LiveriesScanned.xml");
    EXPECT_NO_THROW(gf_processScannedLiveries());
    gf_emptyCatalogue();
    EXPECT_THROW(gf_processScannedLiveries(), UserErrorException);
}

TEST_F(Store, TitlesNotToUseComeFromBothSources) {
    serveList(fmt::format(R"(<livery title="listed"/><livery title="kept" reg="{}"/>)",
                          gf_encodeRegcode("PH-BXA")));
    folder_.write("input/my_regcodes/a.txt", "\xEF\xBB\xBFmine\nkept;PH-BXB\n");
    folder_.write("input/my_regcodes/b.dat", "other file\n");
    gf_readDontUseTitles();
    EXPECT_EQ(dontUseTitles, (TitleSet{"listed", "mine"}));

    // Without a server the user's own files still count.
    std::filesystem::remove("downloads/AIG-regcodes.zip");
    dontUseTitles.clear();
    gf_readDontUseTitles();
    EXPECT_EQ(dontUseTitles, (TitleSet{"mine"}));
}

} // namespace
} // namespace kst
