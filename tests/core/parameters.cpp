#include "core/parameters.h"

#include "core/parameterfile.h"

#include <climits>
#include <limits>
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
    IntParameter positive("P", 5, 2, 100);
    positive.setFromText("nonsense");
    EXPECT_EQ(positive.get(), 2) << "0 is clamped as well";
    parameter.set(INT_MAX);
    EXPECT_EQ(parameter.get(), 100);
}

TEST(ParameterTextTest, FloatsAreReadAsFarAsTheyGoAndClamped) {
    FloatParameter parameter("P", 24.0F, -0.5F, 24.0F);
    const std::pair<const char*, float> cases[] = {
        {"12.5", 12.5F},  {"12,5", 12.0F},  {".5", 0.5F},      {"1e1", 10.0F},   {"25", 24.0F},
        {"-3", -0.5F},    {"1e400", 24.0F}, {"-1e400", -0.5F}, {"1e-400", 0.0F}, {"nan", 0.0F},
        {"inf", 0.0F},    {"-inf", 0.0F},   {"", 0.0F},        {"6 h", 6.0F},    {"0x18", 0.0F},
        {"-.25", -0.25F}, {".", 0.0F},
    };
    for (const auto& [text, expected] : cases) {
        parameter.set(5.0F);
        parameter.setFromText(text);
        EXPECT_EQ(parameter.get(), expected) << text;
    }
    parameter.setFromText("0." + std::string(400, '0') + "1");
    EXPECT_EQ(parameter.get(), 0.0F);
    parameter.setFromText(std::string(400, '9') + ".5");
    EXPECT_EQ(parameter.get(), 24.0F);
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
    parameter.setDefault();
    EXPECT_EQ(parameter.text(), "24");
}

TEST(ParameterTableTest, NoNameAndNoControlTwice) {
    std::vector<std::string_view> names;
    std::vector<int> controls;
    for (const Parameter* parameter : allParameters()) {
        EXPECT_EQ(std::count(names.begin(), names.end(), parameter->name()), 0) << parameter->name();
        names.push_back(parameter->name());
        if (parameter->controlId() != control::none) {
            EXPECT_EQ(std::count(controls.begin(), controls.end(), parameter->controlId()), 0)
                << parameter->name();
            controls.push_back(parameter->controlId());
        }
    }
    // 24 check boxes, 9 number boxes, 3 text boxes.
    EXPECT_EQ(controls.size(), 36U);
}

TEST(ParameterTableTest, LimitsHoldInBothDirections) {
    struct Limits {
        IntParameter* parameter;
        int minimum, maximum;
    };
    const Limits table[] = {
        {&CUSTOM_PARKING_PERCENTAGE, -1, 100},
        {&MAIN_WINDOW_X, -30000, 30000},
        {&MAIN_WINDOW_Y, -30000, 30000},
        {&LAST_EPOCH_TIME, 0, 2147483647},
        {&HOLDING_THRESHOLD_METERS, 10, 4000},
        {&MAX_HOLDING_MINUTES, 1, 60},
        {&P3D_VERSION, 5, 6},
        {&MAX_FIT, 0, 47},
        {&MATCHING_DEPTH, 1, 4},
        {&LATERAL_RANGE, 2, 100},
        {&AUTO_RANGE_ABOVE_HEIGHT, 18000, 49000},
        {&MAX_LIVE, -1, 300},
        {&CUSTOM_MAX_PARK, -1, 500},
        {&AIRPORT_RANGE, 8, 30},
        {&AIRPORT_HEIGHT, 2000, 45000},
        {&parking_percentage, 0, 100},
    };
    for (const Limits& limits : table) {
        limits.parameter->setFromText("-2147483648");
        EXPECT_EQ(limits.parameter->get(), limits.minimum) << limits.parameter->name();
        limits.parameter->setFromText("2147483647");
        EXPECT_EQ(limits.parameter->get(), limits.maximum) << limits.parameter->name();
        limits.parameter->setDefault();
    }
    MAX_FIT_FL.setFromText("0");
    EXPECT_EQ(MAX_FIT_FL.get(), 0.5F);
    MAX_FIT_FL.setFromText("24.5");
    EXPECT_EQ(MAX_FIT_FL.get(), 24.0F);
    MAX_FIT_FL.setDefault();
}

} // namespace
} // namespace kst
