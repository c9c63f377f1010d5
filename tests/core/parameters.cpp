#include "core/parameters.h"

#include "core/parameterfile.h"

#include <limits>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(ParameterTextTest, BooleansFollowTheirFirstLetter) {
    BoolParameter parameter("P", false);
    for (const char* text : {"1", "t", "true", "T", "TRUE", "y", "yes", "Y", "1x"}) {
        parameter.set(false);
        parameter.setFromText(text);
        EXPECT_TRUE(parameter) << text;
        EXPECT_EQ(parameter.text(), "1");
    }
    for (const char* text : {"", "0", "no", "false", " 1", "on", "x1", "-1"}) {
        parameter.set(true);
        parameter.setFromText(text);
        EXPECT_FALSE(parameter) << text;
        EXPECT_EQ(parameter.text(), "0");
    }
}

TEST(ParameterTextTest, IntegersAreReadAsFarAsTheyGoAndClamped) {
    IntParameter parameter("P", 5, -30, 100);
    const std::pair<const char*, int> cases[] = {
        {"42", 42},       {"-7", -7},      {"101", 100}, {"-31", -30},
        {"12abc", 12},    {"3.9", 3},      {"1e1", 1},   {" 8 ", 8},
        {"+9", 9},        {"", 0},         {"abc", 0},   {"--5", 0},
        {"+-5", -5},      {"-", 0},        {"0x10", 0},  {"99999999999999999999", 100},
        {"7\xC3\xA9", 7}, {"\xFF\xFE", 0}, {"1,000", 1}, {"-99999999999999999999", -30},
    };
    for (const auto& [text, expected] : cases) {
        parameter.set(5);
        parameter.setFromText(text);
        EXPECT_EQ(parameter.get(), expected) << text;
    }
}

TEST(ParameterTextTest, FloatsAreReadAsFarAsTheyGoAndClamped) {
    FloatParameter parameter("P", 24.0F, -0.5F, 24.0F);
    const std::pair<std::string, float> cases[] = {
        {"12.5", 12.5F},
        {"12,5", 12.0F},
        {".5", 0.5F},
        {"1e1", 10.0F},
        {"25", 24.0F},
        {"-3", -0.5F},
        {"1e400", 24.0F},
        {"-1e400", -0.5F},
        {"1e-400", 0.0F},
        {"nan", 0.0F},
        {"inf", 0.0F},
        {"-inf", 0.0F},
        {"", 0.0F},
        {"6 h", 6.0F},
        {"0x18", 0.0F},
        {"-.25", -0.25F},
        {".", 0.0F},
        {"0." + std::string(400, '0') + "1", 0.0F},
        {std::string(400, '9') + ".5", 24.0F},
    };
    for (const auto& [text, expected] : cases) {
        parameter.set(5.0F);
        parameter.setFromText(text);
        EXPECT_EQ(parameter.get(), expected) << text;
    }
    parameter.set(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(parameter.get(), 0.0F) << "a value that is no number must not get past the limits";
}

TEST(ParameterTextTest, FloatsSurviveTheirText) {
    FloatParameter parameter("P", 24.0F, 0.5F, 24.0F);
    for (const float value : {24.0F, 0.5F, 12.5F, 0.1F + 0.6F, 23.999998F}) {
        parameter.set(value);
        const std::string text = parameter.text();
        parameter.set(1.0F);
        parameter.setFromText(text);
        EXPECT_EQ(parameter.get(), value) << text;
    }
}

TEST(ParameterTableTest, NoNameAndNoControlTwice) {
    std::set<std::string_view> names;
    std::set<int> controls;
    for (const Parameter* parameter : allParameters()) {
        EXPECT_TRUE(names.insert(parameter->name()).second) << parameter->name();
        EXPECT_TRUE(parameter->controlId() == control::none || controls.insert(parameter->controlId()).second)
            << parameter->name();
    }
    // 24 check boxes, 9 number boxes, 3 text boxes.
    EXPECT_EQ(controls.size(), 36U);
}

TEST(ParameterTableTest, LimitsHoldInBothDirections) {
    std::string limits;
    for (Parameter* parameter : allParameters()) {
        const bool text = dynamic_cast<TextParameter*>(parameter) != nullptr;
        if (text || dynamic_cast<BoolParameter*>(parameter) != nullptr) {
            continue;
        }
        parameter->setFromText("-2147483648");
        limits += std::string(parameter->name()) + " " + parameter->text();
        parameter->setFromText("2147483647");
        limits += " " + parameter->text() + "\n";
        parameter->setDefault();
    }
    EXPECT_EQ(limits, "CUSTOM_PARKING_PERCENTAGE -1 100\n"
                      "MAIN_WINDOW_X -30000 30000\n"
                      "MAIN_WINDOW_Y -30000 30000\n"
                      "LAST_EPOCH_TIME 0 2147483647\n"
                      "HOLDING_THRESHOLD_METERS 10 4000\n"
                      "MAX_HOLDING_MINUTES 1 60\n"
                      "P3D_VERSION 5 6\n"
                      "MAX_FIT 0 47\n"
                      "MATCHING_DEPTH 1 4\n"
                      "LATERAL_RANGE 2 100\n"
                      "AUTO_RANGE_ABOVE_HEIGHT 18000 49000\n"
                      "MAX_LIVE -1 300\n"
                      "CUSTOM_MAX_PARK -1 500\n"
                      "AIRPORT_RANGE 8 30\n"
                      "AIRPORT_HEIGHT 2000 45000\n"
                      "parking_percentage 0 100\n"
                      "MAX_FIT_FL 0.5 24\n");
}

} // namespace
} // namespace kst
