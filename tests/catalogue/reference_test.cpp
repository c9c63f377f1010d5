#include "catalogue/reference.h"
#include "catalogue/referencereader.h"
#include "catalogue/scramble.h"
#include "core/exceptions.h"
#include "model/units.h"
#include "support/thrown.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

std::string models(std::initializer_list<const char*> codes) {
    std::string list;
    for (const char* code : codes) {
        list += (list.empty() ? "" : " , ") + gf_encodeModel(code);
    }
    return list;
}

/// The sections that a document must have, in a shuffled order.
std::string requiredSections() {
    const std::string airline = gf_encodeAirline("SWR");
    return fmt::format("<ICAO_airlines><ICAO codes=\"{0}\"/></ICAO_airlines>"
                       "<cargo_operators><ICAO codes=\"{0}\"/></cargo_operators>"
                       "<simaddonsP3D><simaddonP3D arpts=\"LSZH, LFPG\"/></simaddonsP3D>"
                       "<aircrafts><aircraft types=\"{1}\"/><aircraft types=\"{2}\"/></aircrafts>"
                       "<heavy><hvy types=\"{3}\"/></heavy><large><lar types=\"{4}\"/></large>"
                       "<buzjet><bzj types=\"{5}\"/></buzjet><rotorcraft><rot types=\"{6}\"/></rotorcraft>"
                       "<high_performance><hpf types=\"{7}\"/></high_performance>"
                       "<cargo_types><cargo_type types=\"{3}\"/></cargo_types>",
                       airline, models({"A320", "C172", "P28A"}), models({"B744", "C56X", "EC35", "F16"}),
                       models({"B744", "A320"}), models({"A320"}), models({"C56X"}), models({"EC35"}),
                       models({"F16"}));
}

class ReferenceDocument : public testing::Test {
protected:
    void read(const std::string& text) {
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(text.c_str(), pugi::parse_default | pugi::parse_fragment));
        referenceTables() = {};
        readReferenceDocument(document, "test", referenceTables());
    }
    ~ReferenceDocument() override { referenceTables() = {}; }
};

TEST_F(ReferenceDocument, SizeClassFollowsTheOrderOfTheSections) {
    read(requiredSections());
    const std::pair<const char*, Category> expected[] = {
        {"A320", Category::Large}, // stands in heavy as well: large is asked first
        {"B744", Category::Heavy},   {"C56X", Category::Buzjets}, {"EC35", Category::Rotorcraft},
        {"F16", Category::HighPerf}, {"C172", Category::Light},   {"ZZ99", Category::Light},
    };
    for (const auto& [model, category] : expected) {
        EXPECT_EQ(gf_category(model), category) << model;
    }
    EXPECT_TRUE(gf_isValidModel("C172"));
    EXPECT_FALSE(gf_isValidModel(""));
    EXPECT_FALSE(gf_isValidModel("ZZ99"));
    EXPECT_TRUE(gf_isValidAirline("SWR"));
    EXPECT_EQ(referenceTables().simaddonAirports.count("LFPG"), 1U);
    EXPECT_EQ(gf_halfWingSpan("A320"), 0.0) << "a document without wing spans has none for anybody";
}

TEST_F(ReferenceDocument, WingSpansGiveClassMeansAndSkipUnknownModels) {
    const auto span = [](const char* model, const char* metres) {
        return fmt::format("<wingspan type=\"{}\" meters=\"{}\"/>", gf_encodeModel(model), metres);
    };
    read(requiredSections() + "<wingspans>" + span("A320", "34.1") + span("B744", "64.4") +
         span("C172", "11") + span("P28A", "9") + span("A320", "99") + span("ZZ99", "80") + "</wingspans>");
    constexpr double halfMetre = 0.5 * nmPerMetre;
    EXPECT_DOUBLE_EQ(gf_halfWingSpan("A320"), 34.1 * halfMetre) << "the first entry of a model stays";
    EXPECT_DOUBLE_EQ(gf_halfWingSpan("ZZ99"), 10.0 * halfMetre) << "an unknown model takes the mean of Light";
    EXPECT_DOUBLE_EQ(gf_halfWingSpan("F16"), (34.1 + 64.4 + 11 + 9) / 4 * halfMetre)
        << "a class without any span takes the mean of all";
    EXPECT_DOUBLE_EQ(maxHalfWingSpan(), 64.4 * halfMetre) << "a skipped model does not raise the maximum";
}

TEST_F(ReferenceDocument, FixesLeadToAModelAndTheFirstCounts) {
    read(requiredSections() + R"(<fixes><fx wro="A-320" cor="A320"/><fx wro="A-320" cor="C172"/>)"
                              R"(<fx wro="X" cor="ZZ99"/></fixes>)");
    EXPECT_EQ(referenceTables().modelFixes.size(), 1U);
    EXPECT_EQ(referenceTables().modelFixes.at("A-320"), "A320");
}

TEST_F(ReferenceDocument, MissingOrEmptySectionNamesItself) {
    const std::string good = requiredSections();
    for (const char* section : {"aircrafts", "heavy", "large", "buzjet", "rotorcraft", "high_performance",
                                "cargo_types", "ICAO_airlines", "cargo_operators", "simaddonsP3D"}) {
        std::string without = good;
        const std::string open = fmt::format("<{}>", section);
        without.replace(without.find(open), open.size(), fmt::format("<{0}></{0}><other_{0}>", section));
        const std::string close = fmt::format("</{}>", section);
        without.replace(without.rfind(close), close.size(), fmt::format("</other_{}>", section));
        const std::string error = test::thrown<UserErrorException>([&] { read(without); });
        EXPECT_TRUE(error.starts_with("61: ") && error.find(section) != std::string::npos) << error;
    }
}

TEST_F(ReferenceDocument, FirstRegistrationWinsAndSpellingsAreTried) {
    const auto db = [](const char* reg, const char* airline, const char* type, const char* more) {
        return fmt::format("<db reg=\"{}\" airl=\"{}\" type=\"{}\" {}/>", gf_encodeRegcode(reg),
                           gf_encodeAirline(airline), gf_encodeModel(type), more);
    };
    read(requiredSections() + "<dbase>" + db("PH-BXA", "KLM", "B738", "cargo=\"Yes\"") +
         db("PH-BXA", "SWR", "A320", "") + db("N123AB", "PVT", "C172", "") + db("N12", "PVT", "C172", "") +
         db("HB-ABC", "SWR", "A320", fmt::format("opr=\"{}\"", gf_encodeAirline("EDW")).c_str()) +
         "</dbase>");
    EXPECT_EQ(gf_regcodeAirline("PHBXA"), "KLM");
    EXPECT_TRUE(gf_regcodeRecord("PH-BXA")->cargo);
    EXPECT_FALSE(gf_regcodeRecord("HBABC")->cargo);
    EXPECT_EQ(gf_regcodeOperator("HBABC"), "EDW");
    EXPECT_EQ(gf_regcodeModel("N123AB"), "C172");
    EXPECT_EQ(gf_regcodeInTitle("Cub N123AB"), "N12")
        << "short ones of private aircraft are looked for in titles";
    EXPECT_FALSE(gf_regcodeRecord("").has_value());
    EXPECT_FALSE(gf_regcodeRecord("D-XXXX").has_value());
}

// However the registrations are cut into pieces, every one is read that a parser of the whole document sees.
TEST_F(ReferenceDocument, RegistrationsAreReadInPieces) {
    const auto db = [](const std::string& reg, const char* more = "") {
        std::string code = gf_encodeRegcode(reg);
        for (std::size_t at = 0; (at = code.find('<', at)) != std::string::npos; at += 4) {
            code.replace(at, 1, "&lt;");
        }
        return fmt::format("<db reg=\"{}\" {}/>", code, more);
    };
    std::string many;
    for (int i = 0; i < 5000; ++i) {
        many += db(fmt::format("N{}", i), "note='a \" > b'") + "\n";
    }
    const std::pair<std::string, std::size_t> cases[] = {
        {"<dbase>" + many + "</dbase>", 5000},
        {"<!-- <dbase>" + db("NO") + "--><dbase>" + db("YES") + "<!-- " + db("NO") + " -->" + db("YES2") +
             "</dbase><dbase>" + db("NO") + "</dbase>",
         2},
        {"<dbase />" + ("<dbase>" + db("NO") + "</dbase>"), 0},
        {"<x><dbase>" + db("NO") + "</dbase></x><dbase note=\">\">" + db("YES") + "<y>" + db("NO") +
             "</y></dbase>",
         1},
        {"<dbase>" + db("YES") + "<db>" + db("NO") + "</db></dbase>", 2},
        {"", 0},
    };
    for (const auto& [registrations, count] : cases) {
        referenceTables() = {};
        std::string text = "<?xml version=\"1.0\"?>\n" + requiredSections() + registrations;
        readReferenceText(text, "test", referenceTables());
        EXPECT_EQ(referenceTables().regcodeTable.size(), count) << registrations.substr(0, 200);
        EXPECT_EQ(referenceTables().regcodeTable.find("NO"), nullptr) << registrations.substr(0, 200);
    }
    for (const char* broken : {"<dbase>", "<dbase><db></dbase>", "<dbase><db reg=\"</dbase>",
                               "<dbase><db a=b/></dbase>", "<![CDATA[", "</dbase>"}) {
        std::string text = requiredSections() + broken;
        const auto error =
            test::thrown<UserErrorException>([&] { readReferenceText(text, "test", referenceTables()); });
        EXPECT_TRUE(error.starts_with("60: ")) << broken << error;
    }
}

TEST_F(ReferenceDocument, BadRegistrationsAreSkippedButABadAirlineEndsTheRead) {
    read(requiredSections() + "<dbase><db reg=\"AAAAAAAAAAAAAAAAAAAAAAAAA\"/><db reg=\"" +
         gf_encodeRegcode("HB-ABC") + "\" type=\"ABCDE\"/><db reg=\"" + gf_encodeRegcode("HB-DEF") +
         "\"/></dbase>");
    EXPECT_EQ(referenceTables().regcodeTable.size(), 1U);
    EXPECT_TRUE(gf_regcodeRecord("HBDEF").has_value());
    EXPECT_THROW(read(requiredSections() + "<dbase><db reg=\"AB\" airl=\"ABCD\"/></dbase>"),
                 std::runtime_error);
}

TEST(Publisher, IsKnownByTheFileName) {
    referenceTables().publisherNames = {
        {"Alpha", "Alpha Design"}, {"Beta", "b.ta[0-9]"}, {"Gamma", "ga(mma"}};
    const std::pair<const char*, const char*> cases[] = {
        {"orbx_lszh.bgl", "simaddon"}, {"ALPHA DESIGN lszh.bgl", "Alpha"}, {"xx_BxTA7.bgl", "Beta"},
        {"beta.bgl", "Beta"},          {"xga(mma.bgl", "Gamma"},           {"GA(MMA.bgl", "unknown"},
        {"lszh.bgl", "unknown"},
    };
    for (const auto& [file, publisher] : cases) {
        EXPECT_EQ(gf_publisherOfFile(file), publisher) << file;
    }
    referenceTables() = {};
}

TEST(RegcodeInTitle, FirstShortOneOfAPrivateAircraft) {
    referenceTables().shortPrivateRegcodes = {"G-AB", "N12"};
    EXPECT_EQ(gf_regcodeInTitle("Cub N12 of G-AB"), "G-AB");
    EXPECT_EQ(gf_regcodeInTitle("Cub N123"), "N12");
    EXPECT_EQ(gf_regcodeInTitle("Cub n12"), "");
    referenceTables() = {};
}

TEST(RegcodeVariants, HyphenFormsComeFirst) {
    using List = std::vector<std::string>;
    const std::pair<const char*, List> cases[] = {
        {"PHBXA", {"PH-BXA", "P-HBXA", "PHBXA"}},
        {"PH-BXA", {"PH-BXA"}},
        {"N123AB", {"N123AB"}},
        {"GABC", {"GABC"}},
        {"ABCDEFGHIJKLMNOPQRSTUVWX",
         {"AB-CDEFGHIJKLMNOPQRSTUVWX", "A-BCDEFGHIJKLMNOPQRSTUVWX", "ABCDEFGHIJKLMNOPQRSTUVWX"}},
        {"ABCDEFGHIJKLMNOPQRSTUVWXY", {}},
    };
    for (const auto& [regcode, forms] : cases) {
        const RegcodeVariants variants = gf_regcodeVariants(regcode);
        EXPECT_EQ(List(variants.begin(), variants.end()), forms) << regcode;
    }
}

TEST(CommaList, ItemsAreTrimmedAndEmptyOnesKept) {
    using List = std::vector<std::string_view>;
    EXPECT_EQ(splitCommaList(" A320 ,\tB738\r\n,,C172"), (List{"A320", "B738", "", "C172"}));
    EXPECT_EQ(splitCommaList(""), (List{""}));
}

} // namespace
} // namespace kst
