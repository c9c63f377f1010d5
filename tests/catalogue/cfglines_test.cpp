#include "catalogue/cfglines.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace kst {
namespace {

struct KeyRule {
    CfgKey key;
    std::regex expression;
};

std::vector<KeyRule> keyRules() {
    std::vector<KeyRule> rules;
    for (const auto& [key, name] : std::initializer_list<std::pair<CfgKey, const char*>>{
             {CfgKey::Title, "title"},
             {CfgKey::Sim, "sim"},
             {CfgKey::Model, "model"},
             {CfgKey::Texture, "texture"},
             {CfgKey::AtcModel, "atc_model"},
             {CfgKey::AtcId, "atc_id"},
             {CfgKey::AtcParkingCodes, "atc_parking_codes"},
             {CfgKey::AtcParkingTypes, "atc_parking_types"}}) {
        rules.push_back(
            {key, std::regex("\\s*(" + std::string(name) + ")\\s*=\\s*(.*\\S)\\s*", std::regex::icase)});
    }
    return rules;
}

/// Lines put together from the pieces that decide: every kind of white space, both cases, line ends within a
/// line, zero bytes, bytes beyond ASCII, keys cut short or run together.
class LineMaker {
public:
    std::string line() {
        // A piece between each two bars.
        static const std::vector<std::string> pieces = [] {
            std::vector<std::string> found;
            std::istringstream all(
                " |\t|\v|\f|\r|\n|=|==|[|]|//|_|,|;|title|TITLE|TiTle|titles|sim|SIM|simx|model|Model|"
                "texture|TEXTURE|atc_model|atc_id|ATC_ID|atc_parking_codes|atc_parking_types|"
                "ATC_Parking_Types|atc|\xC3\xA9|\xE9|\xA0|\x85|\xE2\x80\xA8|x|KLM 737|0|99|[fltsim.|"
                "[FLTSIM.|[FltSim.|fltsim|[fltsim.0]|[fltsim.12]|[fltsim.2147483648]|title=|title =|"
                "model=x| = |");
            for (std::string piece; std::getline(all, piece, '|');) {
                found.push_back(piece);
            }
            found.emplace_back(1, '\0');
            return found;
        }();
        std::string text;
        const int count = std::uniform_int_distribution<int>(0, 6)(random_);
        for (int i = 0; i < count; ++i) {
            text += pieces[std::uniform_int_distribution<std::size_t>(0, pieces.size() - 1)(random_)];
        }
        return text;
    }

private:
    std::mt19937 random_{20240304};
};

TEST(CfgLines, MatchWhatTheExpressionsMatch) {
    constexpr int lines = 40'000;
    const std::vector<KeyRule> rules = keyRules();
    const std::regex sectionStart("\\s*(\\[fltsim\\.)(\\d+)\\]\\s*", std::regex::icase);
    LineMaker maker;
    int keysSeen = 0;
    int sectionsSeen = 0;
    for (int i = 0; i < lines; ++i) {
        const std::string line = maker.line();
        CfgKey key = CfgKey::None;
        std::string value;
        std::smatch match;
        for (const KeyRule& rule : rules) {
            if (std::regex_match(line, match, rule.expression)) {
                key = rule.key;
                value = match[2];
                ++keysSeen;
            }
        }
        const CfgLine found = matchKeyLine(line);
        ASSERT_EQ(found.key, key) << testing::PrintToString(line);
        ASSERT_EQ(found.value, value) << testing::PrintToString(line);

        const auto digits = matchSectionStart(line);
        const bool starts = std::regex_match(line, match, sectionStart);
        ASSERT_EQ(digits.has_value(), starts) << testing::PrintToString(line);
        if (starts) {
            ++sectionsSeen;
            ASSERT_EQ(*digits, match[2].str()) << testing::PrintToString(line);
        }
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
