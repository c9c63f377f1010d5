// One line of the feed: what becomes a record, what is dropped and why, what is an error.

#include "feedtest.h"

#include "core/geodesy.h"
#include "model/units.h"

#include <array>
#include <cmath>
#include <optional>
#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using namespace kst;
using namespace kst::test;
using testing::HasSubstr;

class TrafficLine : public FeedTest {
protected:
    /// What becomes of the line: "record", the rule by which it is dropped without a word, or the error that
    /// is logged; each is counted under its rule.
    std::string fate(const std::string& line) {
        std::array<std::uint64_t, reasonCount> before{};
        for (std::size_t i = 0; i < before.size(); ++i) {
            before[i] = reasonTotal(static_cast<Reason>(i));
        }
        const std::size_t records = feed(line).size();
        std::string counted = records == 1 ? "record" : "";
        for (std::size_t i = 0; i < before.size(); ++i) {
            const auto reason = static_cast<Reason>(i);
            if (reasonTotal(reason) != before[i]) {
                EXPECT_EQ(reasonTotal(reason), before[i] + 1);
                counted += reasonText(reason);
            }
        }
        const std::string log = newLog();
        if (log.empty()) {
            return counted;
        }
        EXPECT_EQ(counted, reasonText(Reason::MalformedLine)) << line;
        constexpr std::string_view start = "exception in processLine: ";
        EXPECT_TRUE(log.starts_with(start) && log.ends_with('\n')) << log;
        return log.substr(start.size(), log.size() - start.size() - 1);
    }
    std::string fate(const Changes& changes) { return fate(trafficLine(changes)); }
};

/// A record in words, but for heading and bank.
std::string said(const FeedMessage& record) {
    return fmt::format("{} cs={} type={} reg={} {}-{} at {},{} alt={} gs={} track={} vs={} tas={} time={} "
                       "due={} {}",
                       record.hexid, record.callsign, record.type, record.registration, record.origin,
                       record.destination, record.latitude, record.longitude, record.altitude,
                       record.groundSpeed, record.track, record.verticalSpeed, record.trueAirspeed,
                       record.timestamp, record.expiry, record.airborne ? "airborne" : "on ground");
}

TEST_F(TrafficLine, GoodLineArrivesWhole) {
    updateCount = 500;
    const FeedMessage record = accepted(trafficLine());
    EXPECT_EQ(said(record),
              "4921863 cs=SWR8AB type=A320 reg=HB-IJD LSZH-EGLL at 47.1666,8 alt=12000 gs=310.4 "
              "track=271.5 vs=-640 tas=355 time=1700000000.5 due=3500 airborne");
    EXPECT_FALSE(record.headingGiven || record.heading);
    EXPECT_DOUBLE_EQ(record.bank.value_or(0), 4.5 * pi / 180);
    EXPECT_EQ(lastTimestamp, 1700000000.5);
    EXPECT_EQ(happeningTotal(Happening::LinesHeard), 1U);
    EXPECT_EQ(happeningTotal(Happening::LinesAccepted), 1U);
    EXPECT_EQ(newLog(), "");
}

TEST_F(TrafficLine, FieldsAreReadByTheirRules) {
    const std::pair<Changes, const char*> cases[] = {
        {{{9, "null"}, {12, "null"}, {13, "null"}}, " cs= type=A320 reg=HB-IJD - at "},
        {{{9, "SW@R"}}, " cs= "},
        {{{11, "null"}}, " reg= "},
        {{{11, "123456789012"}}, " reg=123456789012 "},
        {{{11, "1234567890123"}}, " reg= "},
        // The leading part of a number counts.
        {{{1, "10001xyz"}}, "10001 "},
        {{{4, "12000ft"}, {5, "-.5"}, {7, "0x12"}}, " alt=12000 gs=310.4 track=0 vs=-0.5 "},
        {{{4, "1.2e4"}, {5, "7."}}, " alt=12000 gs=310.4 track=271.5 vs=7 "},
        // A track of 0 is none: the heading takes its place.
        {{{7, ""}}, " track=0 "},
        {{{7, ""}, {17, "adsb_icao"}, {25, "93.5"}}, " track=93.5 "},
        {{{7, "0"}, {17, "adsb_icao"}, {25, "0"}}, " track=360 "},
        {{{7, "12"}, {17, "adsb_icao"}, {25, "93.5"}}, " track=12 "},
        {{{20, "-2"}}, " tas=-2 "},
        {{{20, "0"}}, " tas=0 "},
    };
    for (const auto& [changes, expected] : cases) {
        EXPECT_THAT(said(accepted(trafficLine(changes))), HasSubstr(expected));
    }
    // An airspeed of -1 is none: the altitude gives one.
    const std::pair<const char*, double> airspeeds[] = {{"2000", 180},  {"2001", 220},  {"5000", 220},
                                                        {"5001", 250},  {"10000", 250}, {"10001", 350},
                                                        {"20000", 350}, {"20001", 430}, {"41000", 430}};
    for (const auto& [altitude, knots] : airspeeds) {
        EXPECT_EQ(accepted(trafficLine({{4, altitude}, {20, "-1"}})).trueAirspeed, knots) << altitude;
    }
}

TEST_F(TrafficLine, WhatIsNoAircraftIsDroppedSilentlyAndCounted) {
    const auto lines = [](std::size_t field, std::initializer_list<const char*> texts) {
        std::vector<Changes> all;
        for (const char* const text : texts) {
            all.push_back({{field, text}});
        }
        return all;
    };
    const std::pair<Reason, std::vector<Changes>> cases[] = {
        {Reason::GroundVehicle, lines(16, {"ZRH VEH"})},
        {Reason::NoRegistrationFromF, {{{11, "null"}, {15, "F"}}, {{11, ""}, {15, "F"}}}},
        {Reason::OutOfRange, {{{2, "47.7"}}, {{3, "-172.0"}}}},
        {Reason::CategoryNotAircraft, lines(28, {"", "B1", "B2", "B4", "C1", "C2"})},
        {Reason::TypeUnusable, lines(10, {"", "null", "0", "ZZZZ", "A3200", "GRND", "GLID", "SERV", "BALL",
                                          "PARA", "SHIP", "EMER"})},
        {Reason::IdentityReserved, lines(1, {"10000", "0"})},
        {Reason::NoCallsignNoRegistration,
         {{{9, "null"}, {11, "null"}}, {{9, ""}, {11, ""}}, {{9, "A@B"}, {11, "1234567890123"}}}},
        {Reason::BlockedCallsign, lines(9, {"ERARMTR0"})},
        {Reason::GroundWithoutParkAirport, lines(4, {"0"})},
    };
    for (const auto& [reason, dropped] : cases) {
        for (const Changes& changes : dropped) {
            EXPECT_EQ(fate(changes), reasonText(reason)) << trafficLine(changes);
        }
    }
    EXPECT_EQ(happeningTotal(Happening::LinesAccepted), 0U);
    for (const auto& alike : {lines(1, {"10001", "4294967295"}), lines(28, {"B3", "C3"}), lines(10, {"B77W"}),
                              lines(9, {"ERARMTR01", "VEH1"}), lines(15, {"F"}),
                              std::vector<Changes>{{{11, "null"}, {15, "E"}}}}) {
        for (const Changes& changes : alike) {
            EXPECT_EQ(fate(changes), "record") << trafficLine(changes);
        }
    }
    // The category may be the last field: the line's end is no part of it.
    std::string line = trafficLine({{28, "B2"}});
    line.resize(line.size() - 4);
    EXPECT_EQ(fate(line + "\r\n"), reasonText(Reason::CategoryNotAircraft));
    setFeedOpen(false);
    EXPECT_EQ(fate(Changes{}), reasonText(Reason::FeedClosed));
}

TEST_F(TrafficLine, MalformedFieldsAreOneLogLineEach) {
    const struct {
        std::size_t field;
        std::vector<std::string> texts;
        const char* error; ///< with the text in its place
    } cases[] = {
        {14, {"soon", "", "nan", "1e300"}, "741: timestamp:{}"},
        {2, {"north", "+47", " 47", "1e999"}, "742: lat:{}"},
        {3, {"-"}, "743: lon:{}"},
        {2, {"90.000100", "nan", "-inf"}, "744: lalo:{},8.000000"},
        {3, {"-180.500000"}, "744: lalo:47.166600,{}"},
        {1, {"abc", "-5", "4294967296"}, "640: hexid incorrect{}"},
        {8, {"fast", "inf", ""}, "747: gs:{}"},
        {7, {"west", "NaN"}, "648: track incorrect {}"},
        {5, {"up"}, "748: vs:{}"},
        {23, {"", "infinity"}, "750: roll:{}"},
        {20, {"", "nan(1)"}, "691: TAS incorrect{}"},
    };
    for (const auto& row : cases) {
        for (const std::string& text : row.texts) {
            EXPECT_EQ(fate({{row.field, text}}), "sys error " + fmt::format(fmt::runtime(row.error), text));
        }
    }
    for (const char* const altitude : {"FL120", "inf", "nan"}) {
        const std::string line = trafficLine({{4, altitude}});
        EXPECT_EQ(fate(line), fmt::format("sys error 641: altitude {} incorrect, from: {}", altitude, line));
    }
    for (const std::string& name :
         {std::string(33, 'A'), std::string("SWR\x01"), std::string("SW\xc3\xa9")}) {
        for (const std::size_t field : {9, 12, 13}) {
            EXPECT_NE(fate({{field, name}}), "record") << name;
        }
    }
    EXPECT_EQ(fate({{2, "x\nError all is lost"}}), "sys error 742: lat:x.Error all is lost");
    EXPECT_LT(fate({{2, std::string(16'000, 'x')}}).size(), 2'200U) << "no line blows the log up";
}

TEST_F(TrafficLine, ShortLinesAreMalformed) {
    const std::string whole = trafficLine();
    std::size_t end = 0;
    for (int fields = 1; fields <= 28; ++fields) {
        end = whole.find(',', end) + 1;
        EXPECT_EQ(fate(whole.substr(0, end)), fmt::format("line has {} fields, 29 are the least", fields));
    }
}

TEST_F(TrafficLine, PositionOfNoFlightIsAnError) {
    workingRangeNm = 10'000.0;
    const struct {
        const char* lat;
        const char* lon;
        bool good;
    } cases[] = {{"0.0005", "0.01", false}, {"0", "0", false},         {"0.0009", "0.05", false},
                 {"0.0005", "0.06", true},  {"0.00091", "0.01", true}, {"-0.0001", "0.01", true},
                 {"0.0005", "-0.01", true}};
    for (const auto& row : cases) {
        EXPECT_THAT(fate({{2, row.lat}, {3, row.lon}}), HasSubstr(row.good ? "record" : "744: lalo:0.000"));
    }
}

TEST_F(TrafficLine, TargetExactlyAtTheRangePasses) {
    const double distanceNm = gf_distanceNm(reference, {47.1666, 8.0});
    workingRangeNm = distanceNm;
    accepted(trafficLine());
    workingRangeNm = std::nextafter(distanceNm, 0.0);
    EXPECT_EQ(fate(Changes{}), reasonText(Reason::OutOfRange));
}

TEST_F(TrafficLine, HeadingsOfTheTransponderAndBank) {
    const struct {
        const char* kind;
        const char* heading;
        double radians; ///< 0 for none
    } cases[] = {
        {"adsb_icao", "0", 2 * pi},  {"adsb_icao", "360", 2 * pi}, {"adsb_icao", "90", pi / 2},
        {"adsb_icao", "-1", 0},      {"adsb_mlat", "90", 0},       {"adsb_icao_nt", "90", 0},
        {"adsb_mlat", "rubbish", 0},
    };
    for (const auto& row : cases) {
        const FeedMessage record = accepted(trafficLine({{17, row.kind}, {25, row.heading}}));
        EXPECT_EQ(record.headingGiven, record.heading.has_value()) << row.heading;
        EXPECT_DOUBLE_EQ(record.heading.value_or(0), row.radians) << row.heading;
    }
    for (const auto& [heading, error] :
         {std::pair("", "745: true heading:"), std::pair("nan", "745: true heading:nan"),
          std::pair("360.04", "746: true heading:360.04"), std::pair("inf", "746: true heading:INF")}) {
        EXPECT_EQ(fate({{17, "adsb_icao"}, {25, heading}}), fmt::format("sys error {}", error));
    }
    EXPECT_EQ(accepted(trafficLine({{23, "-1"}})).bank, std::nullopt);
    EXPECT_EQ(accepted(trafficLine({{23, "0"}})).bank, std::nullopt);
    EXPECT_DOUBLE_EQ(accepted(trafficLine({{23, "30"}})).bank.value_or(0), -pi / 6);
}

// Without a field elevation every altitude counts as a thousand feet higher; from 14,000 feet the field does
// not matter; else it is the height above the field that counts, with the speed.
TEST_F(TrafficLine, AltitudeIsCleanedAndGroundRecognised) {
    setParkAirport(nearAirport());
    const struct {
        std::optional<double> elevationFt;
        double altitudeFt, speedKt;
        bool airborne;
    } cases[] = {
        {{}, 100, 50, true},        {{}, 100, 35, false},      {{}, 100, 30, false},
        {{}, 0, 250, false},        {{}, -75, 250, false},     {{}, 35000, 35, false},
        {1400, 1400, 140, false},   {1400, 1390, 140, false},  {1400, 1445, 120, false},
        {1400, 1445, 120.5, true},  {1400, 1446, 120, true},   {1400, 1490, 80, false},
        {1400, 1490, 81, true},     {1400, 1491, 80, true},    {1400, 1520, 43, false},
        {1400, 1520, 44, true},     {1400, 1521, 43, true},    {1400, 1521, 35, false},
        {14100, 13999, 250, false}, {14100, 14000, 250, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(fmt::format("{} ft {} kt", row.altitudeFt, row.speedKt));
        setFieldElevation(row.elevationFt);
        const FeedMessage record = accepted(
            trafficLine({{4, fmt::format("{}", row.altitudeFt)}, {8, fmt::format("{}", row.speedKt)}}));
        EXPECT_EQ(record.airborne, row.airborne);
        EXPECT_EQ(record.altitude, row.airborne ? row.altitudeFt : 0.0);
        EXPECT_EQ(record.bank.has_value(), row.airborne) << "an aircraft on the ground has no bank";
    }
}

TEST_F(TrafficLine, GroundTrafficNeedsAParkAirportWithinFiveMiles) {
    const Changes parked = {{4, "0"}, {8, "0"}};
    ParkAirportFacts airport = nearAirport();
    setParkAirport(airport);
    EXPECT_EQ(fate(parked), "record");
    airport.position = {47.1666 - 5.01 / 60, 8.0};
    setParkAirport(airport);
    EXPECT_EQ(fate(parked), reasonText(Reason::GroundWithoutParkAirport));
    EXPECT_EQ(fate(Changes{}), "record");
}

TEST_F(TrafficLine, AirportRangeShowsOnlyTheFirstThreeThousandFeet) {
    closeAirportMode = true;
    EXPECT_EQ(fate({{4, "12000"}}), "record") << "no airport";
    setParkAirport(nearAirport());
    EXPECT_EQ(fate({{4, "4400"}}), "record");
    EXPECT_EQ(fate({{4, "4400.5"}}), reasonText(Reason::TooHighForAirportMode));
    closeAirportMode = false;
    EXPECT_EQ(fate({{4, "12000"}}), "record");
}

TEST_F(TrafficLine, SeenTargetsAreNotedOnlyWhileCollecting) {
    feed(trafficLine());
    EXPECT_TRUE(seenTargets().empty());
    collectSeenTargets(true);
    // On the ground without a park airport, a type not shown, no valid callsign, out of range.
    feed(trafficLine({{4, "0"}, {9, "TAXI1"}}));
    feed(trafficLine({{2, "47.2"}, {9, "GLID1"}, {10, "GLID"}}));
    feed(trafficLine({{2, "47.3"}, {9, "A@B"}}));
    feed(trafficLine({{2, "47.3"}, {9, "null"}}));
    feed(trafficLine({{2, "48.3"}, {9, "FAR1"}}));
    collectSeenTargets(false);
    feed(trafficLine({{2, "47.25"}}));
    using Seen = std::vector<std::pair<LatLon, std::string>>;
    EXPECT_EQ(seenTargets(), (Seen{{{47.1666, 8.0}, "TAXI1"}, {{47.2, 8.0}, "GLID1"}}));
    collectSeenTargets(true);
    EXPECT_TRUE(seenTargets().empty());
}

TEST_F(TrafficLine, GarbageNeitherCrashesNorReachesTheWorker) {
    std::mt19937 random{20'240'304};
    const std::string good = trafficLine();
    std::vector<std::string> lines = {std::string(16'383, ','), std::string(16'384, 'A'),
                                      std::string(16'383, ' '), ",", std::string("\0\0", 2)};
    for (int i = 0; i < 2'000; ++i) {
        std::string line = i % 2 == 0 ? good : std::string(random() % 400 + 1, ',');
        for (int hit = 0; hit < 8; ++hit) {
            line[random() % line.size()] = static_cast<char>(random());
        }
        lines.push_back(line);
    }
    for (const std::string& line : lines) {
        for (const FeedMessage& record : feed(line)) {
            EXPECT_LE(std::abs(record.latitude), 90.0) << line;
            EXPECT_LE(std::abs(record.longitude), 180.0) << line;
            EXPECT_GE(record.altitude, 0.0) << line;
            EXPECT_TRUE(
                std::isfinite(record.altitude + record.groundSpeed + record.track + record.verticalSpeed))
                << line;
            EXPECT_GT(record.hexid, 10'000U) << line;
        }
    }
    EXPECT_GT(reasonTotal(Reason::MalformedLine), 1'000U);
    EXPECT_EQ(reasonTotal(Reason::LineTooLong), 1U);
}

} // namespace
