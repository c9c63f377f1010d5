// The weather datagrams: which pressures count, and what is said about the others.

#include "feedtest.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using namespace kst;
using namespace kst::test;

class Weather : public FeedTest {
protected:
    Weather() {
        qnhReader.localFeed = true;
        qnhReader.lastLine.clear();
    }
    static void give(std::string_view line) { giveDatagram(qnhReader, line); }
};

TEST_F(Weather, PressuresInEveryForm) {
    const std::pair<const char*, int> cases[] = {{"1005", 1005},     {"2992", 1013},
                                                 {"1013.4", 1013},   {"1004.5", 1005},
                                                 {"\"1020\"", 1020}, {"\"1019.6\"", 1020},
                                                 {"\"29xx\"", 0},    {"\"1001 hPa\"", 1001},
                                                 {"29.92", 0},       {"930", 930},
                                                 {"929", 0},         {"1080", 1080},
                                                 {"1081", 0},        {"3189", 1080},
                                                 {"3191", 0},        {"2746", 930},
                                                 {"\"2992\"", 1013}, {"-1013", 0},
                                                 {"929.5", 930},     {"1e400", 0},
                                                 {"1e300", 0},       {"99999999999999999999", 0}};
    for (const auto& [value, hectopascals] : cases) {
        SCOPED_TRACE(value);
        lf_resetReaders();
        constexpr int before = 999;
        qnh = before;
        give(fmt::format("{{\"ICAO\":\"LSZH\",\"QNH\":{}}}", value));
        EXPECT_EQ(qnh, hectopascals != 0 ? hectopascals : before);
        EXPECT_EQ(newLog() == "", hectopascals != 0);
        if (hectopascals != 0) {
            EXPECT_EQ(statusValues().qnhShown, hectopascals);
        }
    }
}

TEST_F(Weather, UnusableDatagramsSayWhy) {
    const struct {
        std::string datagram;
        const char* log; ///< with the datagram in its place
        int after = 1005;
    } cases[] = {
        {R"({"TEMP":12})", "no QNH {}\n"},
        {R"({"QNH":null})", "no QNH {}\n"},
        {R"({"QNH":[]})", "no QNH {}\n"},
        {R"({"QNH":{}})", "no QNH {}\n"},
        {R"([1013])", "no QNH {}\n"},
        {R"(1013)", "no QNH {}\n"},
        {R"({"QNH":1081})", "? Strange QNH 366 found in {}\n"},
        {R"({"QNH":900})", "? Strange QNH 900 found in {}\n"},
        // A text without a usable number counts as the standard.
        {R"({"QNH":"high"})", "QNH string invalid arg: no number in \"high\"\n", standardQnh},
        {R"({"QNH":"1e12"})", "QNH string out of range: \"1e12\"\n", standardQnh},
        {R"({"QNH":"nan"})", "QNH string invalid arg: no number in \"nan\"\n", standardQnh},
        {R"({"QNH":""})", "QNH string invalid arg: no number in \"\"\n", standardQnh},
    };
    for (const auto& row : cases) {
        qnh = 1005;
        give(row.datagram);
        EXPECT_EQ(newLog(), fmt::format(fmt::runtime(row.log), row.datagram));
        EXPECT_EQ(qnh, row.after) << row.datagram;
    }
    for (const std::string wrongType : {R"({"QNH":true})", R"({"QNH":[1013]})", R"({"QNH":{"hPa":1013}})"}) {
        give(wrongType);
        const std::string log = newLog();
        EXPECT_EQ(log.find("no QNH " + wrongType + "\nException "), 0U) << log;
        EXPECT_NE(log.find(", in " + wrongType + "\n"), std::string::npos) << log;
    }
}

TEST_F(Weather, GarbageIsLoggedAndThePressureStays) {
    qnh = 1005;
    for (const std::string& datagram :
         {std::string("{"), std::string("QNH=1013"), std::string("{\"QNH\":1013"),
          std::string("\xff\xfe{\"QNH\":1013}"), std::string(16'000, '['), std::string("{\"QNH\":\"\xff\"}"),
          "{\"QNH\":" + std::string(8'000, '[') + std::string(8'000, ']') + "}"}) {
        give(datagram);
        const std::string log = newLog();
        EXPECT_THAT(log, testing::HasSubstr("Exception "));
        EXPECT_LT(log.size(), 7'000U);
    }
    EXPECT_EQ(qnh, 1005);
}

TEST_F(Weather, OnlyAChangeOrTheStandardIsShownAgain) {
    const struct {
        const char* datagram;
        bool shown;
    } steps[] = {{R"({"QNH":1005})", true},
                 {R"({"QNH":1005})", false},
                 {R"({"QNH":1013})", true},
                 {R"({"QNH":1013})", true}};
    for (const auto& step : steps) {
        updateStatus(Band::Status, [](StatusValues& status) {
            status.qnhShown = 1;
            status.weatherStatus = 2;
        });
        give(step.datagram);
        EXPECT_EQ(statusValues().qnhShown == qnh, step.shown) << step.datagram;
        EXPECT_EQ(statusValues().weatherStatus, step.shown ? 1 : 2) << step.datagram;
    }
    // After a reset the same pressure counts again.
    give(R"({"QNH":1005})");
    qnh = standardQnh;
    lf_resetReaders();
    give(R"({"QNH":1005})");
    EXPECT_EQ(qnh, 1005);
}

} // namespace
