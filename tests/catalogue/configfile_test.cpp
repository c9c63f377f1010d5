#include "catalogue/configfile.h"
#include "catalogue/referencetables.h"
#include "catalogue/scannedliveries.h"
#include "core/parameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

using platform::EntryKind;

/// What the files of these tests can refer to.
class ConfigFileTest : public testing::Test {
protected:
    ConfigFileTest() {
        ReferenceTables& tables = referenceTables();
        tables = {};
        tables.validModels = {"B738", "B744", "C172", "GLID"};
        tables.largeModels = {"B738"};
        tables.heavyModels = {"B744"};
        tables.validAirlines = {"KLM", "DLH", "ZZZ"};
        tables.modelFixes = {{"B737-800", "B738"}};
        tables.regcodeTable = {{"PH-BXA", {"KLM", "B738", "", false}},
                               {"D-ABYA", {"", "B744", "DLH", false}}};
        tables.shortPrivateRegcodes = {"N1X"};
        dontUseTitles = {"not this one"};
    }
    ~ConfigFileTest() override {
        referenceTables() = {};
        dontUseTitles.clear();
        SUPPRESS_STUB.setDefault();
    }

    /// Everything that came of the text, a line each: liveries, then reports, then log lines.
    std::string outcome(const std::string& path, const std::string& text) const {
        const FileFindings found = readConfigText({path, cfgKindOf(path), 1, ""}, folder_, text);
        std::string all;
        for (const FoundLivery& livery : found.liveries) {
            const LiveryData& data = livery.livery;
            all += fmt::format("{} {} \"{}\" {}{}\n", data.airline, data.model, data.title, data.regcode,
                               data.cargo ? " cargo" : "");
        }
        const ScanReports& reports = found.reports;
        for (const auto& [name, lines] :
             {std::pair{"airline", &reports.invalidAirlines}, std::pair{"model", &reports.invalidModels},
              std::pair{"fix", &reports.codeFixes}, std::pair{"file", &reports.invalidCfgFiles},
              std::pair{"section", &reports.incompleteSections}, std::pair{"none", &reports.noFltsimFiles},
              std::pair{"log", &found.logLines}}) {
            for (const std::string& line : *lines) {
                all += fmt::format("{}: {}\n", name, line);
            }
        }
        return all;
    }
    /// The same for a file of a model with one section of these lines, whose parts exist.
    std::string section(const std::string& model, const std::string& lines) const {
        return outcome("a.cfg",
                       "atc_model=" + model + "\n[fltsim.0]\ntitle=T\nsim=a\nmodel=m\ntexture=t\n" + lines);
    }

    AircraftFolder folder_{"folder",
                           std::vector<platform::FolderEntry>{{"MODEL.M", EntryKind::Folder, false},
                                                              {"texture.t", EntryKind::Folder, false},
                                                              {"model", EntryKind::Folder, false},
                                                              {"Texture", EntryKind::Folder, false},
                                                              {"texture.\xC3\x9C", EntryKind::Folder, false},
                                                              {"A.AIR", EntryKind::File, false},
                                                              {"texture.file", EntryKind::File, false},
                                                              {"b.air", EntryKind::Folder, false}}};
};

struct SectionCase {
    const char* model;
    const char* lines;
    const char* outcome;
};

TEST_F(ConfigFileTest, SectionsAreAcceptedRepairedAndReported) {
    const SectionCase cases[] = {
        {"B738", "atc_parking_codes=KLM", "KLM B738 \"T\" \n"},
        {"B738", " ATC_PARKING_CODES = KLMX \t\n", "KLM B738 \"T\" \n"},
        {"B738", "atc_parking_codes=DLHC\natc_id=D-ABYA", "DLH B738 \"T\" D-ABYA\n"},
        {"B738", "atc_parking_codes=RFO", ""},
        {"B738", "atc_parking_codes=QQQ\natc_id=PH-BXA",
         "KLM B738 \"T\" PH-BXA\nairline: QQQ          in a.cfg [fltsim.0]\n"},
        {"B738", "atc_parking_codes=QQQ\natc_parking_codes=KLM",
         "KLM B738 \"T\" \nairline: QQQ          in a.cfg [fltsim.0]\n"},
        {"C172", "atc_parking_codes=KLM, DLH",
         "PVT C172 \"T\" \nairline: KLM,DLH      in a.cfg [fltsim.0]\n"},
        {"C172", "atc_parking_codes=, ,", "PVT C172 \"T\" \nairline:              in a.cfg [fltsim.0]\n"},
        {"B738", "atc_parking_codes=KLM\n//atc_parking_codes=DLH\nui_type=x",
         "section: a.cfg [fltsim.0] has more than one atc_parking_codes key\n"},
        {"B738", "atc_parking_codes=KLM\nui_type=x\n//atc_parking_codes=DLH\n\n//\n", "KLM B738 \"T\" \n"},
        {"B738", "atc_parking_codes=KLM\ntitle=again",
         "section: a.cfg [fltsim.0] has more than one title key\n"},
        {"B738", "atc_parking_codes=KLM\natc_parking_types=gate, cargo", "KLM B738 \"T\"  cargo\n"},
        {"B738", "atc_parking_codes=KLM\natc_parking_types=GATE", "KLM B738 \"T\" \n"},
        {"B738", "atc_parking_types=GATE\natc_parking_types=RAMP",
         "section: a.cfg [fltsim.0] has more than one atc_parking_types key\n"},
        {"B738", "atc_parking_codes=ZZZ\natc_id=PH-BXA", "ZZZ B738 \"T\" \n"},
        {"C172", "atc_id=HB-ABC;comment", "PVT C172 \"T\" HB-ABC\n"},
        {"C172", "atc_id=;comment", "PVT C172 \"T\" \nlog: invalid atc_id=;comment ==> in: T\n"},
        {"C172", "atc_id=HB-ABC, HB-ABD", "PVT C172 \"T\" \n"},
        {"C172", "atc_id=HB-ABC,,HB-ABD", "PVT C172 \"T\" \nlog: empty regcode in T HB-ABC,,HB-ABD\n"},
        {"C172", "atc_id=A,\v,B", "PVT C172 \"T\" \nlog: regcode is a space char? T A,\v,B\n"},
        {"C172", "atc_id=123456789012", "PVT C172 \"T\" 123456789012\n"},
        {"C172", "atc_id=1234567890123",
         "PVT C172 \"T\" \nlog: regcode: 1234567890123, has more than 12 chars or contains UTF16 chars in "
         "\"T\"?\n"},
        {"C172", "atc_id=PH-*",
         "PVT C172 \"T\" \nlog: T PH-* wild cards no longer supported, atc_id skipped \n"},
        {"C172", "atc_id=PH-*\natc_id=HB-ABC",
         "PVT C172 \"T\" HB-ABC\nlog: T PH-* wild cards no longer supported, atc_id skipped \n"},
        {"C172", "atc_id=HB-ABC\natc_id=HB-ABC",
         "section: a.cfg, [fltsim.0], has more than one atc_id key\n"},
        {"C172", "atc_id=HB-ABC\natc_id = HB-ABC", "PVT C172 \"T\" HB-ABC\n"},
        {"B744", "atc_id=D-ABYA", "DLH B744 \"T\" D-ABYA\n"},
        {"B744", "atc_id=D-NONE",
         "section: \"a.cfg [fltsim.0]\" \"T\" has no airline and its regcode is not in my dbase (very old "
         "liv?)\n"},
        {"B744", "", "section: \"a.cfg [fltsim.0]\" \"T\" has no airline and no regcode info\n"},
        {"C172", "", "PVT C172 \"T\" \n"},
        {"C172", "description=see [notes]\natc_id=HB-ABC", "PVT C172 \"T\" HB-ABC\n"},
        {"C172", "12345[\natc_id=HB-ABC", "PVT C172 \"T\" \n"},
        {"C172", "123456[\natc_id=HB-ABC", "PVT C172 \"T\" HB-ABC\n"},
        {"C172", "//[fltsim.1]\natc_id=HB-ABC", "PVT C172 \"T\" \n"},
        {"C172", "title=", "PVT C172 \"T\" \n"},
        {"C172", "texture=other\nsim=other\nmodel=other", "PVT C172 \"T\" \n"},
    };
    for (const SectionCase& c : cases) {
        EXPECT_EQ(section(c.model, c.lines), c.outcome) << c.lines;
    }
}

TEST_F(ConfigFileTest, ASectionNeedsItsTitleAndItsPartsOnDisk) {
    const std::string refused = "section: a.cfg [fltsim.0] does not exist\n";
    const std::pair<std::string, std::string> cases[] = {
        {"title=T\nsim=a\nmodel=m\ntexture=t", "PVT C172 \"T\" \n"},
        {"title=T\nsim=a", "PVT C172 \"T\" \n"}, // the plain folders
        {"title=T\nsim=a\nmodel=m..\ntexture=t.", "PVT C172 \"T\" \n"},
        {"title=T\nsim=a\ntexture=\xC3\xBC", "PVT C172 \"T\" \n"},
        {"title=T\nsim=a\ntexture=\xDC", "PVT C172 \"T\" \n"}, // the same letter of a file without a mark
        {"title=T\nsim=a\nmodel=none", refused},
        {"title=T\nsim=a\ntexture=file", refused},
        {"title=T\nsim=b", refused},
        {"title=T", refused},
        {"title=T\nsim=..\\elsewhere\\a", refused},
        {"sim=a", "section: a.cfg [fltsim.0] misses title\n"},
        {"title=not this one\nsim=a", ""},
        {"title=my N1X\nsim=a", "PVT C172 \"my N1X\" N1X\n"},
    };
    for (const auto& [lines, expected] : cases) {
        EXPECT_EQ(outcome("a.cfg", "atc_model=C172\n[fltsim.0]\n" + lines), expected) << lines;
    }
}

TEST_F(ConfigFileTest, StubsAreLeftOutWithoutAWord) {
    const std::string text = "atc_model=C172\n[fltsim.0]\natc_parking_codes=QQQ\ntitle=A_STUB\nsim=none\n"
                             "[fltsim.1]\ntitle=A_STUB \nsim=a\n[fltsim.2]\ntitle=A_STUB2\nsim=a\n";
    EXPECT_EQ(outcome("a.cfg", text), "PVT C172 \"A_STUB2\" \n");
    SUPPRESS_STUB.set(false);
    EXPECT_THAT(outcome("a.cfg", text), testing::HasSubstr("PVT C172 \"A_STUB\" \n"));
}

TEST_F(ConfigFileTest, SectionNumbersCountFromZeroWithoutGap) {
    const std::string good = "[fltsim.1]\ntitle=one\nsim=a\n [FltSim.0] \ntitle=zero\nsim=a\n";
    EXPECT_EQ(outcome("a.cfg", "atc_model=C172\n" + good), "PVT C172 \"one\" \nPVT C172 \"zero\" \n");
    const std::pair<const char*, const char*> cases[] = {
        {"[fltsim.0]\n[fltsim.2]", "file: a.cfg contains non-consecutive [fltsim.x] numbers at .x=2\n"},
        {"[fltsim.1]", "file: a.cfg contains non-consecutive [fltsim.x] numbers at .x=1\n"},
        {"[fltsim.0]\n[fltsim.00]", "file: a.cfg contains non-consecutive [fltsim.x] numbers at .x=0\n"},
        {"[fltsim.0]\n[fltsim.]", "file: a.cfg contains a [fltsim.] section without a number\n"},
        {"[fltsim.]\n[fltsim.1]", "file: a.cfg contains non-consecutive [fltsim.x] numbers at .x=1\n"},
        {"[fltsim.0]\n[fltsim.2147483648]", "log: fltsim num 2147483648 incorrect\n"},
        {"[General]\n//[fltsim.0]", "none: a.cfg\n"},
        {"", "none: a.cfg\n"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(outcome("a.cfg", fmt::format("atc_model=C172\n{}", text)), expected) << text;
    }
}

TEST_F(ConfigFileTest, TheModelOfAFileMustBeKnown) {
    const std::string rest = "\n[fltsim.0]\ntitle=T\nsim=a\natc_parking_codes=KLM\n";
    EXPECT_EQ(outcome("a.cfg", "atc_model=B737-800" + rest),
              "KLM B738 \"T\" \nfix: Model fix: B737-800 found in a.cfg changed into B738\n");
    EXPECT_EQ(outcome("a.cfg", "atc_model=b738" + rest), "model: b738             in a.cfg\n");
    EXPECT_EQ(outcome("a.cfg", "atc_model=" + rest),
              "file: Line atc_model= is missing in [General] section of a.cfg\n");
    EXPECT_EQ(outcome("a.cfg", rest + "\n[General]\natc_model=B738\natc_model=none\n"), "KLM B738 \"T\" \n");
}

TEST_F(ConfigFileTest, ModelSetsCarryModelInThePathAndAirlineInTheTitle) {
    const std::string file = "x\\IVAO_MTL\\IVAO_B738\\aircraft.cfg";
    const auto report = [&](const std::string& text) {
        return "section: " + file + " [fltsim.0] " + text + "\n";
    };
    const std::pair<std::string, std::string> cases[] = {
        {"title=IVAO B738 KLM\natc_parking_codes=DLH\natc_parking_types=CARGO",
         "KLM B738 \"IVAO B738 KLM\" \n"},
        {"title=B738DLHx\natc_id=D-ABYA;x", "DLH B738 \"B738DLHx\" D-ABYA;x\n"},
        {"title=B738 QQQ", "airline: QQQ          in " + file + " [fltsim.0]\n"},
        {"title=B738 ZZZ\natc_id=PH-BXA", "ZZZ B738 \"B738 ZZZ\" \n"},
        {"title=B738 KL B738 \t DLH", "DLH B738 \"B738 KL B738 \t DLH\" \n"},
        {"title=T\natc_id=PH-BXA", "KLM B738 \"T\" PH-BXA\n"},
        {"title=T\natc_id=PH-XXX", report("misses airlinecode in title: T, and regcode unknown")},
        {"title=T", report("misses airlinecode in title: T, and no regcode")},
        {"title=B738 KLM\natc_id=A,,B", "KLM B738 \"B738 KLM\" \nlog:  empty regcode in: A,,B\n"},
        {"title=B738 KLM\natc_id=1234567890123",
         "KLM B738 \"B738 KLM\" \nlog: regcode: 13, has more than 12 chars in title: B738 KLM\n"},
        {"title=B738 KLM\nui_type=far along [\natc_id=PH-BXA", "KLM B738 \"B738 KLM\" \n"},
    };
    for (const auto& [lines, expected] : cases) {
        EXPECT_EQ(outcome(file, "[fltsim.0]\nsim=a\n" + lines), expected) << lines;
    }
    for (const auto& [path, expected] : std::initializer_list<std::pair<const char*, const char*>>{
             {"/x/IVAO_MTL/ivao_B744F/Aircraft.CFG", "KLM B744 \"B744 KLM\" \n"},
             {"/x/IVAO_MTL/IVAO_C172w/aircraft.cfg", "KLM C172 \"C172 KLM\" \n"},
             {"/x/IVAO_MTL/IVAO_GLID_A13/aircraft.cfg", "KLM GLID \"GLID KLM\" \n"},
             {"/x/IVAO_MTL/IVAO_GLID_SH/aircraft.cfg", "KLM GLID \"GLID KLM\" \n"},
             {"/x/IVAO_MTL/IVAO_T154B2/aircraft.cfg",
              "model: T154             in /x/IVAO_MTL/IVAO_T154B2/aircraft.cfg\n"},
             {"/x/ivao_x-csl/B738/aircraft.cfg",
              "model:                  in /x/ivao_x-csl/B738/aircraft.cfg\n"},
             {"/x/IVAO_MTL/IVAO_B738/sim.cfg",
              "model:                  in /x/IVAO_MTL/IVAO_B738/sim.cfg\n"}}) {
        const std::string model = std::string(expected).substr(4, 4);
        EXPECT_EQ(outcome(path, "[fltsim.0]\nsim=a\ntitle=" + model + " KLM\n"), expected) << path;
    }
}

} // namespace
} // namespace kst
