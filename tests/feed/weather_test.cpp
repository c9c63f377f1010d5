// The weather datagrams: which pressures count, and what is said about the others.

#include "feedtest.h"

#include <fmt/format.h>

namespace {

using namespace kst;
using namespace kst::test;

class Weather : public FeedTest {
protected:
    Weather() {
        qnhReader.localFeed = true;
        qnhReader.lastLine.clear();
    }
    void give(std::string_view line) { giveDatagram(qnhReader, line); }
};

struct PressureCase {
    const char* value;
    int hectopascals;
};

TEST_F(Weather, PressuresInEveryForm) {
    const std::vector<PressureCase> cases = {{"1005", 1005},     {"2992", 1013},
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
    for (const PressureCase& c : cases) {
        lf_resetReaders();
        constexpr int before = 999;
        qnh = before;
        give(fmt::format("{{\"ICAO\":\"LSZH\",\"QNH\":{}}}", c.value));
        EXPECT_EQ(qnh, c.hectopascals != 0 ? c.hectopascals : before) << c.value;
        if (c.hectopascals != 0) {
            EXPECT_EQ(statusValues().qnhShown, c.hectopascals) << c.value;
            EXPECT_EQ(newLog(), "") << c.value;
        } else {
            EXPECT_NE(newLog(), "") << c.value;
        }
    }
}

struct ComplaintCase {
    std::string datagram;
    std::string log;
};

TEST_F(Weather, UnusableDatagramsSayWhy) {
    const std::vector<ComplaintCase> cases = {
        {R"({"TEMP":12})", "no QNH {\"TEMP\":12}\n"},
        {R"({"QNH":null})", "no QNH {\"QNH\":null}\n"},
        {R"({"QNH":[]})", "no QNH {\"QNH\":[]}\n"},
        {R"({"QNH":{}})", "no QNH {\"QNH\":{}}\n"},
        {R"([1013])", "no QNH [1013]\n"},
        {R"(1013)", "no QNH 1013\n"},
        {R"({"QNH":1081})", "? Strange QNH 366 found in {\"QNH\":1081}\n"},
        {R"({"QNH":900})", "? Strange QNH 900 found in {\"QNH\":900}\n"},
    };
    qnh = 1005;
    for (const ComplaintCase& c : cases) {
        give(c.datagram);
        EXPECT_EQ(newLog(), c.log);
        EXPECT_EQ(qnh, 1005) << c.datagram;
    }
}

TEST_F(Weather, WrongTypesAreLoggedTwice) {
    for (const std::string datagram : {R"({"QNH":true})", R"({"QNH":[1013]})", R"({"QNH":{"hPa":1013}})"}) {
        give(datagram);
        const std::string log = newLog();
        EXPECT_EQ(log.find("no QNH " + datagram + "\nException "), 0U) << log;
        EXPECT_NE(log.find(", in " + datagram + "\n"), std::string::npos) << log;
    }
}

TEST_F(Weather, TextWithoutUsableNumberCountsAsStandard) {
    qnh = 1005;
    give(R"({"QNH":"high"})");
    EXPECT_EQ(newLog(), "QNH string invalid arg: no number in \"high\"\n");
    EXPECT_EQ(qnh, standardQnh);
    qnh = 1005;
    give(R"({"QNH":"1e12"})");
    EXPECT_EQ(newLog(), "QNH string out of range: \"1e12\"\n");
    EXPECT_EQ(qnh, standardQnh);
    give(R"({"QNH":"nan"})");
    EXPECT_EQ(newLog(), "QNH string invalid arg: no number in \"nan\"\n");
    give(R"({"QNH":""})");
    EXPECT_EQ(newLog(), "QNH string invalid arg: no number in \"\"\n");
}

TEST_F(Weather, GarbageIsLoggedAndThePressureStays) {
    qnh = 1005;
    const std::vector<std::string> datagrams = {"{",
                                                "QNH=1013",
                                                "{\"QNH\":1013",
                                                "\xff\xfe{\"QNH\":1013}",
                                                std::string(16'000, '['),
                                                "{\"QNH\":\"\xff\"}",
                                                "{\"QNH\":" + std::string(8'000, '[') +
                                                    std::string(8'000, ']') + "}"};
    for (const std::string& datagram : datagrams) {
        give(datagram);
        const std::string log = newLog();
        EXPECT_NE(log.find("Exception "), std::string::npos) << log;
        EXPECT_LT(log.size(), 7'000U);
    }
    EXPECT_EQ(qnh, 1005);
}

TEST_F(Weather, OnlyAChangeOrTheStandardIsShownAgain) {
    give(R"({"QNH":1005})");
    updateStatus(Band::Status, [](StatusValues& status) {
        status.qnhShown = 1;
        status.weatherStatus = 2;
    });
    give(R"({"QNH":1005})");
    EXPECT_EQ(statusValues().qnhShown, 1);
    EXPECT_EQ(statusValues().weatherStatus, 2);
    give(R"({"QNH":1013})");
    EXPECT_EQ(statusValues().qnhShown, 1013);
    EXPECT_EQ(statusValues().weatherStatus, 1);
    updateStatus(Band::Status, [](StatusValues& status) { status.qnhShown = 1; });
    give(R"({"QNH":1013})");
    EXPECT_EQ(statusValues().qnhShown, 1013);
}

TEST_F(Weather, ResetMakesTheNextPressureCountAgain) {
    give(R"({"QNH":1005})");
    qnh = standardQnh;
    lf_resetReaders();
    give(R"({"QNH":1005})");
    EXPECT_EQ(qnh, 1005);
}

} // namespace
