// One line of the feed: what becomes a record, what is dropped and why, what is an error.

#include "feedtest.h"

#include "core/geodesy.h"
#include "model/units.h"

#include <cmath>
#include <limits>
#include <optional>
#include <random>

#include <fmt/format.h>

namespace {

using namespace kst;
using namespace kst::test;
using TrafficLine = FeedTest;

TEST_F(TrafficLine, GoodLineArrivesWhole) {
    updateCount = 500;
    const FeedMessage message = accepted(trafficLine());
    EXPECT_EQ(message.hexid, 4921863U);
    EXPECT_EQ(message.callsign, "SWR8AB");
    EXPECT_EQ(message.type, "A320");
    EXPECT_EQ(message.registration, "HB-IJD");
    EXPECT_EQ(message.origin, "LSZH");
    EXPECT_EQ(message.destination, "EGLL");
    EXPECT_EQ(message.latitude, 47.1666);
    EXPECT_EQ(message.longitude, 8.0);
    EXPECT_EQ(message.altitude, 12000.0);
    EXPECT_EQ(message.groundSpeed, 310.4);
    EXPECT_EQ(message.track, 271.5);
    EXPECT_EQ(message.verticalSpeed, -640.0);
    EXPECT_EQ(message.trueAirspeed, 355.0);
    EXPECT_EQ(message.timestamp, 1700000000.5);
    EXPECT_EQ(message.expiry, 3500);
    EXPECT_TRUE(message.airborne);
    EXPECT_FALSE(message.headingGiven);
    EXPECT_EQ(message.heading, std::nullopt);
    ASSERT_TRUE(message.bank);
    EXPECT_DOUBLE_EQ(*message.bank, 4.5 * pi / 180);
    EXPECT_EQ(lastTimestamp, 1700000000.5);
    EXPECT_EQ(happeningTotal(Happening::LinesHeard), 1U);
    EXPECT_EQ(happeningTotal(Happening::LinesAccepted), 1U);
    EXPECT_EQ(newLog(), "");
}

TEST_F(TrafficLine, TextsThatSayNothingBecomeEmpty) {
    const FeedMessage message = accepted(trafficLine({{9, "null"}, {12, "null"}, {13, "null"}}));
    EXPECT_EQ(message.callsign + message.origin + message.destination, "");
    EXPECT_EQ(accepted(trafficLine({{9, "SW@R"}})).callsign, "");
    EXPECT_EQ(accepted(trafficLine({{11, "null"}})).registration, "");
    EXPECT_EQ(accepted(trafficLine({{11, "123456789012"}})).registration, "123456789012");
    EXPECT_EQ(accepted(trafficLine({{11, "1234567890123"}})).registration, "");
}

TEST_F(TrafficLine, EndOfLineIsNoPartOfTheLastField) {
    // The category is the last field here, and a B2 is a balloon.
    std::string line = trafficLine({{28, "B2"}});
    line.resize(line.size() - 4);
    EXPECT_TRUE(feed(line + "\r\n").empty());
    EXPECT_EQ(reasonTotal(Reason::CategoryNotAircraft), 1U);
}

struct DroppedCase {
    Changes changes;
    Reason reason;
};

TEST_F(TrafficLine, DroppedLinesAreSilentAndCounted) {
    const std::vector<DroppedCase> cases = {
        {{{16, "ZRH VEH"}}, Reason::GroundVehicle},
        {{{11, "null"}, {15, "F"}}, Reason::NoRegistrationFromF},
        {{{11, ""}, {15, "F"}}, Reason::NoRegistrationFromF},
        {{{2, "47.7"}}, Reason::OutOfRange},
        {{{3, "-172.0"}}, Reason::OutOfRange},
        {{{28, ""}}, Reason::CategoryNotAircraft},
        {{{28, "B1"}}, Reason::CategoryNotAircraft},
        {{{28, "B2"}}, Reason::CategoryNotAircraft},
        {{{28, "B4"}}, Reason::CategoryNotAircraft},
        {{{28, "C1"}}, Reason::CategoryNotAircraft},
        {{{28, "C2"}}, Reason::CategoryNotAircraft},
        {{{10, ""}}, Reason::TypeUnusable},
        {{{10, "null"}}, Reason::TypeUnusable},
        {{{10, "0"}}, Reason::TypeUnusable},
        {{{10, "ZZZZ"}}, Reason::TypeUnusable},
        {{{10, "A3200"}}, Reason::TypeUnusable},
        {{{10, "GRND"}}, Reason::TypeUnusable},
        {{{10, "GLID"}}, Reason::TypeUnusable},
        {{{10, "SERV"}}, Reason::TypeUnusable},
        {{{10, "BALL"}}, Reason::TypeUnusable},
        {{{10, "PARA"}}, Reason::TypeUnusable},
        {{{10, "SHIP"}}, Reason::TypeUnusable},
        {{{10, "EMER"}}, Reason::TypeUnusable},
        {{{1, "10000"}}, Reason::IdentityReserved},
        {{{1, "0"}}, Reason::IdentityReserved},
        {{{9, "null"}, {11, "null"}}, Reason::NoCallsignNoRegistration},
        {{{9, ""}, {11, ""}}, Reason::NoCallsignNoRegistration},
        {{{9, "A@B"}, {11, "1234567890123"}}, Reason::NoCallsignNoRegistration},
        {{{9, "ERARMTR0"}}, Reason::BlockedCallsign},
        {{{4, "0"}}, Reason::GroundWithoutParkAirport},
    };
    for (const DroppedCase& c : cases) {
        const std::string line = trafficLine(c.changes);
        const std::uint64_t before = reasonTotal(c.reason);
        EXPECT_TRUE(feed(line).empty()) << line;
        EXPECT_EQ(reasonTotal(c.reason), before + 1) << reasonText(c.reason) << ": " << line;
    }
    EXPECT_EQ(happeningTotal(Happening::LinesHeard), cases.size());
    EXPECT_EQ(happeningTotal(Happening::LinesAccepted), 0U);
    EXPECT_EQ(newLog(), "");
}

TEST_F(TrafficLine, KindsThatLookLikeTheDroppedOnesPass) {
    const std::vector<Changes> cases = {{{1, "10001"}},     {{1, "10001xyz"}}, {{1, "4294967295"}},
                                        {{28, "B3"}},       {{28, "C3"}},      {{10, "B77W"}},
                                        {{9, "ERARMTR01"}}, {{9, "VEH1"}},     {{11, "null"}, {15, "E"}},
                                        {{15, "F"}}};
    for (const Changes& changes : cases) {
        accepted(trafficLine(changes));
    }
}

struct MalformedCase {
    std::size_t field;
    std::string text;
    std::string error;
};

TEST_F(TrafficLine, MalformedFieldsAreOneLogLineEach) {
    const std::vector<MalformedCase> cases = {
        {14, "soon", "741: timestamp:soon"},
        {14, "", "741: timestamp:"},
        {14, "nan", "741: timestamp:nan"},
        {14, "1e300", "741: timestamp:1e300"},
        {2, "north", "742: lat:north"},
        {2, "+47", "742: lat:+47"},
        {2, " 47", "742: lat: 47"},
        {2, "1e999", "742: lat:1e999"},
        {3, "-", "743: lon:-"},
        {2, "90.0001", "744: lalo:90.000100,8.000000"},
        {2, "nan", "744: lalo:nan,8.000000"},
        {2, "-inf", "744: lalo:-inf,8.000000"},
        {3, "-180.5", "744: lalo:47.166600,-180.500000"},
        {1, "abc", "640: hexid incorrectabc"},
        {1, "-5", "640: hexid incorrect-5"},
        {1, "4294967296", "640: hexid incorrect4294967296"},
        {8, "fast", "747: gs:fast"},
        {8, "inf", "747: gs:inf"},
        {8, "", "747: gs:"},
        {7, "west", "648: track incorrect west"},
        {7, "NaN", "648: track incorrect NaN"},
        {5, "up", "748: vs:up"},
        {23, "", "750: roll:"},
        {23, "infinity", "750: roll:infinity"},
        {20, "", "691: TAS incorrect"},
        {20, "nan(1)", "691: TAS incorrectnan(1)"},
    };
    for (const MalformedCase& c : cases) {
        EXPECT_TRUE(feed(trafficLine({{c.field, c.text}})).empty()) << c.error;
        EXPECT_EQ(newLog(), fmt::format("exception in processLine: sys error {}\n", c.error));
    }
    EXPECT_EQ(reasonTotal(Reason::MalformedLine), cases.size());
}

TEST_F(TrafficLine, MalformedAltitudeIsLoggedWithItsLine) {
    const std::string line = trafficLine({{4, "FL120"}});
    EXPECT_TRUE(feed(line).empty());
    EXPECT_EQ(newLog(),
              "exception in processLine: sys error 641: altitude FL120 incorrect, from: " + line + "\n");
    EXPECT_TRUE(feed(trafficLine({{4, "inf"}})).empty());
    EXPECT_TRUE(feed(trafficLine({{4, "nan"}})).empty());
    EXPECT_EQ(reasonTotal(Reason::MalformedLine), 3U);
}

TEST_F(TrafficLine, PositionOfNoFlightIsAnError) {
    workingRangeNm = 10'000.0;
    struct Case {
        const char* lat;
        const char* lon;
        bool good;
    };
    for (const Case& c : {Case{"0.0005", "0.01", false}, Case{"0", "0", false}, Case{"0.0009", "0.05", false},
                          Case{"0.0005", "0.06", true}, Case{"0.00091", "0.01", true},
                          Case{"-0.0001", "0.01", true}, Case{"0.0005", "-0.01", true}}) {
        EXPECT_EQ(feed(trafficLine({{2, c.lat}, {3, c.lon}})).size(), c.good ? 1U : 0U)
            << c.lat << " " << c.lon;
    }
    EXPECT_NE(newLog().find("sys error 744: lalo:0.000500,0.010000"), std::string::npos);
}

TEST_F(TrafficLine, LeadingPartOfANumberCounts) {
    EXPECT_EQ(accepted(trafficLine({{4, "12000ft"}})).altitude, 12000.0);
    EXPECT_EQ(accepted(trafficLine({{4, "1.2e4"}})).altitude, 12000.0);
    EXPECT_EQ(accepted(trafficLine({{5, "-.5"}})).verticalSpeed, -0.5);
    EXPECT_EQ(accepted(trafficLine({{5, "7."}})).verticalSpeed, 7.0);
    EXPECT_EQ(accepted(trafficLine({{7, "0x12"}})).track, 0.0);
}

TEST_F(TrafficLine, TargetExactlyAtTheRangePasses) {
    const LatLon target{47.1666, 8.0};
    const double distanceNm = gf_distanceNm(reference, target);
    workingRangeNm = distanceNm;
    accepted(trafficLine());
    workingRangeNm = std::nextafter(distanceNm, 0.0);
    EXPECT_TRUE(feed(trafficLine()).empty());
    EXPECT_EQ(reasonTotal(Reason::OutOfRange), 1U);
}

TEST_F(TrafficLine, HeadingsOfTheTransponder) {
    struct Case {
        const char* kind;
        const char* heading;
        std::optional<double> radians;
        const char* log;
    };
    const std::vector<Case> cases = {
        {"adsb_icao", "0", 2 * pi, ""},
        {"adsb_icao", "360", 2 * pi, ""},
        {"adsb_icao", "90", pi / 2, ""},
        {"adsb_icao", "-1", std::nullopt, ""},
        {"adsb_mlat", "90", std::nullopt, ""},
        {"adsb_icao_nt", "90", std::nullopt, ""},
        {"adsb_mlat", "rubbish", std::nullopt, ""},
    };
    for (const Case& c : cases) {
        const FeedMessage message = accepted(trafficLine({{17, c.kind}, {25, c.heading}}));
        EXPECT_EQ(message.headingGiven, c.radians.has_value()) << c.heading;
        ASSERT_EQ(message.heading.has_value(), c.radians.has_value()) << c.heading;
        if (c.radians) {
            EXPECT_DOUBLE_EQ(*message.heading, *c.radians);
        }
    }
    const std::vector<std::pair<const char*, const char*>> errors = {{"", "745: true heading:"},
                                                                     {"nan", "745: true heading:nan"},
                                                                     {"360.04", "746: true heading:360.04"},
                                                                     {"inf", "746: true heading:INF"}};
    for (const auto& [heading, error] : errors) {
        EXPECT_TRUE(feed(trafficLine({{17, "adsb_icao"}, {25, heading}})).empty());
        EXPECT_EQ(newLog(), fmt::format("exception in processLine: sys error {}\n", error));
    }
}

TEST_F(TrafficLine, TrackFallsBackToTheHeading) {
    EXPECT_EQ(accepted(trafficLine({{7, ""}})).track, 0.0);
    EXPECT_EQ(accepted(trafficLine({{7, "0"}})).track, 0.0);
    EXPECT_DOUBLE_EQ(accepted(trafficLine({{7, ""}, {17, "adsb_icao"}, {25, "93.5"}})).track, 93.5);
    EXPECT_DOUBLE_EQ(accepted(trafficLine({{7, "0"}, {17, "adsb_icao"}, {25, "0"}})).track, 360.0);
    EXPECT_EQ(accepted(trafficLine({{7, "12"}, {17, "adsb_icao"}, {25, "93.5"}})).track, 12.0);
}

struct HeightCase {
    std::optional<double> elevationFt;
    const char* altitude;
    const char* groundSpeed;
    double altitudeFt;
    bool airborne;
};

TEST_F(TrafficLine, AltitudeIsCleanedAndGroundRecognised) {
    setParkAirport(nearAirport());
    const std::vector<HeightCase> cases = {
        // Without a field elevation every altitude counts as a thousand feet higher.
        {std::nullopt, "100", "50", 100, true},
        {std::nullopt, "100", "35", 0, false},
        {std::nullopt, "100", "30", 0, false},
        {std::nullopt, "0", "250", 0, false},
        {std::nullopt, "-75", "250", 0, false},
        {std::nullopt, "35000", "35", 0, false},
        // Below the field, or close to it and slow.
        {1400.0, "1400", "140", 0, false},
        {1400.0, "1390", "140", 0, false},
        {1400.0, "1445", "120", 0, false},
        {1400.0, "1445", "120.5", 1445, true},
        {1400.0, "1446", "120", 1446, true},
        {1400.0, "1490", "80", 0, false},
        {1400.0, "1490", "81", 1490, true},
        {1400.0, "1491", "80", 1491, true},
        {1400.0, "1520", "43", 0, false},
        {1400.0, "1520", "44", 1520, true},
        {1400.0, "1521", "43", 1521, true},
        {1400.0, "1521", "35", 0, false},
        // From 14,000 feet the field does not matter.
        {14100.0, "13999", "250", 0, false},
        {14100.0, "14000", "250", 14000, true},
    };
    for (const HeightCase& c : cases) {
        setFieldElevation(c.elevationFt);
        const FeedMessage message = accepted(trafficLine({{4, c.altitude}, {8, c.groundSpeed}}));
        EXPECT_EQ(message.altitude, c.altitudeFt) << c.altitude << " ft " << c.groundSpeed << " kt";
        EXPECT_EQ(message.airborne, c.airborne) << c.altitude << " ft " << c.groundSpeed << " kt";
        EXPECT_EQ(message.bank.has_value(), c.airborne) << "an aircraft on the ground has no bank";
    }
}

TEST_F(TrafficLine, GroundTrafficNeedsAParkAirportWithinFiveMiles) {
    const std::string parked = trafficLine({{4, "0"}, {8, "0"}});
    EXPECT_TRUE(feed(parked).empty());
    ParkAirportFacts airport = nearAirport();
    setParkAirport(airport);
    EXPECT_EQ(feed(parked).size(), 1U);
    airport.position = {47.1666 - 5.01 / 60, 8.0};
    setParkAirport(airport);
    EXPECT_TRUE(feed(parked).empty());
    EXPECT_EQ(reasonTotal(Reason::GroundWithoutParkAirport), 2U);
    accepted(trafficLine());
}

TEST_F(TrafficLine, AirportRangeShowsOnlyTheFirstThreeThousandFeet) {
    closeAirportMode = true;
    accepted(trafficLine({{4, "12000"}}));
    setParkAirport(nearAirport());
    EXPECT_EQ(accepted(trafficLine({{4, "4400"}})).altitude, 4400.0);
    EXPECT_TRUE(feed(trafficLine({{4, "4400.5"}})).empty());
    EXPECT_EQ(reasonTotal(Reason::TooHighForAirportMode), 1U);
    closeAirportMode = false;
    accepted(trafficLine({{4, "12000"}}));
}

TEST_F(TrafficLine, MissingAirspeedComesFromTheAltitude) {
    const std::vector<std::pair<const char*, double>> cases = {
        {"2000", 180},  {"2001", 220},  {"5000", 220},  {"5001", 250}, {"10000", 250},
        {"10001", 350}, {"20000", 350}, {"20001", 430}, {"41000", 430}};
    for (const auto& [altitude, knots] : cases) {
        EXPECT_EQ(accepted(trafficLine({{4, altitude}, {20, "-1"}})).trueAirspeed, knots) << altitude;
    }
    EXPECT_EQ(accepted(trafficLine({{20, "-2"}})).trueAirspeed, -2.0);
    EXPECT_EQ(accepted(trafficLine({{20, "0"}})).trueAirspeed, 0.0);
}

TEST_F(TrafficLine, BankHasTheOppositeSignOfTheRoll) {
    EXPECT_EQ(accepted(trafficLine({{23, "-1"}})).bank, std::nullopt);
    EXPECT_EQ(accepted(trafficLine({{23, "0"}})).bank, std::nullopt);
    EXPECT_DOUBLE_EQ(accepted(trafficLine({{23, "30"}})).bank.value_or(0), -pi / 6);
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
    using Seen = std::vector<std::pair<LatLon, std::string>>;
    EXPECT_EQ(seenTargets(), (Seen{{{47.1666, 8.0}, "TAXI1"}, {{47.2, 8.0}, "GLID1"}}));
    collectSeenTargets(false);
    feed(trafficLine({{2, "47.25"}}));
    EXPECT_EQ(seenTargets().size(), 2U);
    collectSeenTargets(true);
    EXPECT_TRUE(seenTargets().empty());
}

TEST_F(TrafficLine, ClosedFeedThrowsRecordsAway) {
    setFeedOpen(false);
    EXPECT_TRUE(feed(trafficLine()).empty());
    setFeedOpen(true);
    EXPECT_EQ(feed(trafficLine()).size(), 1U);
    EXPECT_EQ(reasonTotal(Reason::FeedClosed), 1U);
}

TEST_F(TrafficLine, ShortLinesAreMalformed) {
    const std::string whole = trafficLine();
    std::size_t commas = 0;
    for (std::size_t i = 0; i < whole.size() && commas < 28; ++i) {
        if (whole[i] == ',') {
            ++commas;
            EXPECT_TRUE(feed(whole.substr(0, i + 1)).empty());
            EXPECT_EQ(
                newLog(),
                fmt::format("exception in processLine: line has {} fields, 29 are the least\n", commas));
        }
    }
    ASSERT_EQ(commas, 28U);
    EXPECT_EQ(reasonTotal(Reason::MalformedLine), 28U);
}

TEST_F(TrafficLine, LogLinesCannotBeForgedOrBlownUp) {
    feed(trafficLine({{2, "x\nError all is lost"}}));
    EXPECT_EQ(newLog(), "exception in processLine: sys error 742: lat:x.Error all is lost\n");
    feed(trafficLine({{2, std::string(16'000, 'x')}}));
    EXPECT_LT(newLog().size(), 2'200U);
}

TEST_F(TrafficLine, NamesThatNoAircraftHasAreMalformed) {
    for (const std::string& name :
         {std::string(33, 'A'), std::string("SWR\x01"), std::string("SW\xc3\xa9")}) {
        for (const std::size_t field : {9, 12, 13}) {
            EXPECT_TRUE(feed(trafficLine({{field, name}})).empty()) << name;
        }
    }
    EXPECT_EQ(reasonTotal(Reason::MalformedLine), 9U);
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
        for (const FeedMessage& message : feed(line)) {
            EXPECT_LE(std::abs(message.latitude), 90.0) << line;
            EXPECT_LE(std::abs(message.longitude), 180.0) << line;
            EXPECT_GE(message.altitude, 0.0) << line;
            EXPECT_TRUE(std::isfinite(message.altitude) && std::isfinite(message.groundSpeed)) << line;
            EXPECT_TRUE(std::isfinite(message.track) && std::isfinite(message.verticalSpeed)) << line;
            EXPECT_GT(message.hexid, 10'000U) << line;
        }
    }
    EXPECT_GT(reasonTotal(Reason::MalformedLine), 1'000U);
    EXPECT_EQ(reasonTotal(Reason::LineTooLong), 1U);
}

} // namespace
