#include "catalogue/cfglines.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace kst {
namespace {

constexpr std::pair<CfgKey, const char*> keyNames[] = {{CfgKey::Title, "title"},
                                                       {CfgKey::Sim, "sim"},
                                                       {CfgKey::Model, "model"},
                                                       {CfgKey::Texture, "texture"},
                                                       {CfgKey::AtcModel, "atc_model"},
                                                       {CfgKey::AtcId, "atc_id"},
                                                       {CfgKey::AtcParkingCodes, "atc_parking_codes"},
                                                       {CfgKey::AtcParkingTypes, "atc_parking_types"}};

/// The pieces that decide, one between each two bars: every kind of white space, both cases, line ends within
/// a line, bytes beyond ASCII, keys cut short or run together.
constexpr const char* pieces =
    " |\t|\v|\f|\r|\n|=|==|[|]|//|_|,|;|title|TITLE|TiTle|titles|sim|SIM|simx|model|Model|texture|TEXTURE|"
    "atc_model|atc_id|ATC_ID|atc_parking_codes|atc_parking_types|ATC_Parking_Types|atc|\xC3\xA9|\xE9|\xA0|"
    "\x85|"
    "\xE2\x80\xA8|x|KLM 737|0|99|[fltsim.|[FLTSIM.|[FltSim.|fltsim|[fltsim.0]|[fltsim.12]|"
    "[fltsim.2147483648]|title=|title =|model=x| = |";

TEST(CfgLines, MatchWhatTheExpressionsMatch) {
    std::vector<std::string> parts = {std::string(1, '\0')};
    std::istringstream all(pieces);
    for (std::string piece; std::getline(all, piece, '|');) {
        parts.push_back(piece);
    }
    std::vector<std::pair<CfgKey, std::regex>> rules;
    for (const auto& [key, name] : keyNames) {
        rules.emplace_back(
            key, std::regex("\\s*(" + std::string(name) + ")\\s*=\\s*(.*\\S)\\s*", std::regex::icase));
    }
    const std::regex sectionStart("\\s*(\\[fltsim\\.)(\\d+)\\]\\s*", std::regex::icase);
    std::mt19937 random{20240304};
    int keysSeen = 0;
    int sectionsSeen = 0;
    for (int i = 0; i < 40'000; ++i) {
        std::string line;
        for (auto count = random() % 7; count > 0; --count) {
            line += parts[random() % parts.size()];
        }
        SCOPED_TRACE(testing::PrintToString(line));
        CfgLine expected{CfgKey::None, {}};
        std::smatch match;
        for (const auto& [key, expression] : rules) {
            if (std::regex_match(line, match, expression)) {
                expected.key = key;
                expected.value = std::string_view(line).substr(static_cast<std::size_t>(match.position(2)),
                                                               static_cast<std::size_t>(match.length(2)));
                ++keysSeen;
            }
        }
        const CfgLine found = matchKeyLine(line);
        ASSERT_EQ(found.key, expected.key);
        ASSERT_EQ(found.value, expected.value);

        const bool starts = std::regex_match(line, match, sectionStart);
        ASSERT_EQ(std::string(matchSectionStart(line).value_or("none")), starts ? match[2].str() : "none");
        sectionsSeen += starts ? 1 : 0;
    }
    EXPECT_GT(keysSeen, 1000);
    EXPECT_GT(sectionsSeen, 200);
}

TEST(CfgLines, ABrokenSectionStartCountsUnlessItIsAComment) {
    EXPECT_TRUE(isUnnumberedSectionStart("[fltsim.]"));
    EXPECT_TRUE(isUnnumberedSectionStart("x [FLTSIM.1] x"));
    EXPECT_FALSE(isUnnumberedSectionStart("[FltSim.]"));
    EXPECT_FALSE(isUnnumberedSectionStart("[fltsim.1]"));
    EXPECT_FALSE(isUnnumberedSectionStart("//[fltsim.]"));
}

} // namespace
} // namespace kst
