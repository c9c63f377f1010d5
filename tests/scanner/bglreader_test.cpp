#include "scanner/bglfile.h"
#include "scanner/standids.h"
#include "support/tempfolder.h"
#include "tools/bglscenery/bglwriter.h"
#include "tools/bglscenery/sceneryset.h"

#include <limits>
#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace kst {
namespace {

using scenery::Airport;
using scenery::File;
using scenery::Helipad;
using scenery::Parking;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double metre = nmPerMetre;
constexpr double degree = radPerDeg;
/// Half the step in which a file keeps positions.
constexpr double positionStep = 2.3e-7;

struct Decoded {
    std::vector<AirportFile> airports;
    std::vector<std::string> lines;
    bool failed = false;
};

Decoded decode(const std::string& bytes) {
    Decoded result;
    BglOutput output;
    output.begun = [](AirportFile&) {};
    output.done = [&](AirportFile& airport) { result.airports.push_back(airport); };
    output.report = [&](std::string_view line) { result.lines.emplace_back(line); };
    try {
        decodeBgl(BglWords(std::as_bytes(std::span(bytes))), "a.bgl", output);
    } catch (const std::exception&) {
        result.failed = true;
    }
    return result;
}

Decoded decode(const std::vector<Airport>& airports) {
    File file;
    file.airports = airports;
    return decode(scenery::bglBytes(file));
}

/// The one airport that the file holds.
AirportFile decodeOne(const Airport& airport) {
    const Decoded decoded = decode(std::vector{airport});
    EXPECT_EQ(decoded.airports.size(), 1U);
    return decoded.airports.empty() ? AirportFile{} : decoded.airports.front();
}

std::vector<std::string> ids(const AirportFile& airport) {
    std::vector<std::string> result;
    for (const ParkPos& stand : airport.stands) {
        result.push_back(stand.id);
    }
    return result;
}

TEST(BglReader, BothFormsComeBackValueByValue) {
    Airport airport;
    airport.icao = "LS0Z";
    airport.names = {"Field of tests"};
    airport.otherSubRecords = 3;
    airport.helipads = {{-33.5, -70.25, 24.0F, 0.0F}, {47.002, 8.002, 18.0F, 181.5F}};
    airport.parkings = {{10, 7, 9, 20.5F, 0.0F, 47.458216, 8.554767, {"SWR", "EDW"}},
                        {13, 4095, 5, 36.0F, 275.0F, -89.9, 179.9, {}},
                        {0, 0, 2, 9.0F, 90.5F, 47.45, -179.9, std::vector<std::string>(255, "AAA")},
                        {8, 12, 11, 12.0F, 12.0F, 47.46, 8.56, {}}};
    Airport extended = airport;
    extended.icao = "LS1Z";
    extended.extended = true;
    const Decoded decoded = decode({airport, extended});
    EXPECT_FALSE(decoded.failed);
    EXPECT_THAT(decoded.lines, IsEmpty());
    ASSERT_EQ(decoded.airports.size(), 2U);
    EXPECT_EQ(decoded.airports[0].icao, "LS0Z");
    EXPECT_EQ(decoded.airports[1].icao, "LS1Z");
    for (const AirportFile& found : decoded.airports) {
        EXPECT_EQ(found.airport_name, "Field of tests");
        EXPECT_EQ(found.altitude, 1312);
        ASSERT_THAT(ids(found), ElementsAre("helipad1", "helipad2", "g7", "B4095", "0", "wp12"))
            << found.icao;
        for (std::size_t i = 0; i < 2; ++i) {
            const ParkPos& stand = found.stands[i];
            const Helipad& written = airport.helipads[i];
            EXPECT_NEAR(stand.latitude, written.lat, positionStep);
            EXPECT_NEAR(stand.longitude, written.lon, positionStep);
            EXPECT_DOUBLE_EQ(stand.radius, written.widthM * 0.5 * metre);
            EXPECT_TRUE(stand.heli && !stand.cargo && !stand.ramp);
        }
        EXPECT_DOUBLE_EQ(found.stands[0].heading, 360.0 * degree);
        EXPECT_DOUBLE_EQ(found.stands[1].heading, 181.5 * degree);
        for (std::size_t i = 0; i < airport.parkings.size(); ++i) {
            const ParkPos& stand = found.stands[i + 2];
            const Parking& written = airport.parkings[i];
            EXPECT_NEAR(stand.latitude, written.lat, positionStep) << stand.id;
            EXPECT_NEAR(stand.longitude, written.lon, positionStep) << stand.id;
            EXPECT_DOUBLE_EQ(stand.radius, written.radiusM * metre) << stand.id;
            EXPECT_DOUBLE_EQ(stand.heading, (i == 0 ? 360.0F : written.headingDeg) * degree) << stand.id;
            EXPECT_EQ(stand.cargo, i == 1) << stand.id;
            EXPECT_EQ(stand.ramp, i == 1 || i == 2) << stand.id;
            EXPECT_FALSE(stand.heli || stand.suffixed) << stand.id;
        }
    }
}

TEST(BglReader, ParkingsThatAreNoStandsAreLeftOutAndTold) {
    constexpr float noNumber = std::numeric_limits<float>::quiet_NaN();
    const struct {
        Parking parking;
        bool taken;
        const char* line;
    } cases[] = {
        {{10, 1, 9, 1.0F}, false, "skipped position with radius 1.0 meters, in a.bgl"},
        {{10, 1, 9, 1.1F}, true, nullptr},
        {{10, 1, 9, 199.9F}, true, nullptr},
        {{10, 1, 9, 200.0F}, false, "skipped position with radius 200.0 meters, in a.bgl"},
        {{10, 1, 9, noNumber}, false, "skipped position with radius NAN meters, in a.bgl"},
        {{10, 1, 0, 20.0F}, false, nullptr},
        {{10, 1, 1, 20.0F}, true, nullptr},
        {{10, 1, 11, 20.0F}, true, nullptr},
        {{10, 1, 12, 20.0F}, false, nullptr},
        {{10, 1, 9, 20.0F, 90.0F, -91.0, 8.0}, false, "lat/lon: -91.000000,8.000000, incorrect (skipped) "},
        {{10, 1, 9, 20.0F, 90.0F, 47.0, 180.5}, false, "lat/lon: 47.000000,180.500000, incorrect (skipped) "},
        {{10, 1, 9, 20.0F, 90.0F, 0.0005, 0.01}, false, "lat/lon: 0.000500,0.010000, incorrect (skipped) "},
    };
    for (const auto& row : cases) {
        Airport airport;
        airport.parkings = {row.parking, {11, 99}};
        const Decoded decoded = decode(std::vector{airport});
        ASSERT_EQ(decoded.airports.size(), 1U);
        // The one behind it is found whatever happened to the first.
        using List = std::vector<std::string>;
        EXPECT_EQ(ids(decoded.airports[0]), row.taken ? (List{"g1", "99"}) : List{"99"})
            << row.parking.radiusM;
        EXPECT_EQ(decoded.lines, row.line != nullptr ? List{row.line} : List{});
    }
}

TEST(BglReader, StandPrefixes) {
    const std::map<unsigned, std::string> expected = {
        {0, ""},    {1, "r"},  {2, "p"},   {3, "np"}, {4, "ep"}, {5, "sep"}, {6, "sp"},
        {7, "swp"}, {8, "wp"}, {9, "nwp"}, {10, "g"}, {11, ""},  {12, "A"},  {37, "Z"}};
    for (const auto& [code, prefix] : expected) {
        EXPECT_EQ(lf_standPrefix(code), prefix) << code;
    }
}

TEST(BglReader, StandsOfOneNumberAreLetteredBySize) {
    Airport airport;
    airport.parkings = {{10, 12, 9, 20.0F}, {10, 13, 9, 20.0F}, {10, 12, 9, 30.0F}};
    const AirportFile two = decodeOne(airport);
    EXPECT_THAT(ids(two), ElementsAre("g12a", "g13", "g12"));

    // Name code 61 gives the letter that name code 1 stands for.
    airport.parkings = {{1, 12, 9, 20.0F}, {61, 12, 9, 30.0F}};
    EXPECT_THAT(ids(decodeOne(airport)), ElementsAre("r12a", "r12"));

    airport.parkings.clear();
    for (float radius = 20.0F; radius < 28.0F; ++radius) {
        airport.parkings.push_back({10, 12, 9, radius});
    }
    const Decoded eight = decode(std::vector{airport});
    ASSERT_EQ(eight.airports.size(), 1U);
    EXPECT_THAT(ids(eight.airports[0]), ElementsAre("g12f", "g12e", "g12d", "g12c", "g12b", "g12a", "g12"));
    EXPECT_THAT(eight.lines, ElementsAre("===> Warning more then 6 the same ids g12, in a.bgl"));
}

TEST(BglReader, HelipadsAreNumberedAndDoublesLeftOut) {
    Airport airport;
    airport.names = {"Heliport"};
    airport.helipads = {{47.0, 8.0}, {47.0, 8.0}, {-91.0, 8.0}, {47.0, 8.1}};
    airport.parkings = {Parking{}};
    airport.helipadsBehindParkings = {{47.0, 8.2}};
    const Decoded decoded = decode(std::vector{airport});
    ASSERT_EQ(decoded.airports.size(), 1U);
    EXPECT_THAT(ids(decoded.airports[0]), ElementsAre("helipad1", "helipad2", "g1"));
    EXPECT_THAT(decoded.lines, ElementsAre("double helipad Heliport (skipped) 47.000000,8.000000",
                                           "lat/lon helipad incorrect (skipped): -91.000000,8.000000"));
}

TEST(BglReader, NameAltitudeAndIdentifier) {
    struct Case {
        std::vector<std::string> names;
        std::string expected;
    };
    const std::string longName(60, 'x');
    for (const Case& row : {Case{{}, ""}, Case{{"A"}, "A"}, Case{{"One", "One"}, "One"},
                            Case{{"One", "Two"}, ""}, Case{{"One", "Two", "Three"}, "Three"},
                            Case{{"Twelve chars"}, "Twelve chars"}, Case{{longName}, longName.substr(0, 44)},
                            Case{{"Z\xFCrich"}, "Zürich"}, Case{{"Zürich"}, "Zürich"}}) {
        Airport airport;
        airport.names = row.names;
        airport.helipads = {Helipad{}};
        EXPECT_EQ(decodeOne(airport).airport_name, row.expected);
    }
    for (const auto& [elevationMm, feet] : std::map<int, int>{
             {-3353, -11}, {-6096, -20}, {-6400, 0}, {400000, 1312}, {3048000, 10000}, {3100000, 0}}) {
        Airport airport;
        airport.elevationMm = elevationMm;
        EXPECT_EQ(decodeOne(airport).altitude, feet) << elevationMm;
    }
    for (const auto& [icao, sound] : std::map<std::string, bool>{{"LSZH", true},
                                                                 {"00AA", true},
                                                                 {"Z9Z9", true},
                                                                 {"LSZ", false},
                                                                 {"LSZHX", false},
                                                                 {"L ZH", false}}) {
        const auto decoded = lf_decodeIdentifierOrRegionCode(scenery::encodedIdentifier(icao));
        EXPECT_EQ(decoded.value_or("none"), sound ? icao : "none");
    }
    EXPECT_FALSE(lf_decodeIdentifierOrRegionCode(0));
    EXPECT_FALSE(lf_decodeIdentifierOrRegionCode(0xFFFFFFFF));
}

TEST(BglReader, BrokenFilesGiveWhatIsSoundAndNoMore) {
    const std::map<std::string, std::set<std::string>> expected = {
        {"2 airports", {"both"}},
        {"1 airports",
         {"helipadbehind", "seven", "eight", "badvalues", "recordsizezero", "recordsizeanywhere",
          "subrecordsizezero", "subrecordsizefour", "namewithoutend"}},
        {"1 airports and a fault", {"millionsofsections"}},
        {"0 airports",
         {"longsubsections", "listedoften", "noairports", "headersize", "recordsanywhere", "threeletters"}},
        {"0 airports and a fault", {"truncated", "subsectionanywhere", "toomanyparkings"}},
    };
    std::map<std::string, std::set<std::string>> found;
    for (const scenery::NamedFile& named : scenery::featuresAndDefects()) {
        const Decoded decoded = decode(scenery::bglBytes(named.file));
        found[fmt::format("{} airports{}", decoded.airports.size(), decoded.failed ? " and a fault" : "")]
            .insert(named.name);
    }
    EXPECT_EQ(found, expected);
    EXPECT_THAT(decode("").airports, IsEmpty());
}

// Airports of a few words each, whose parking lists all claim the rest of the file: to the letter that would
// be billions of parkings.
TEST(BglReader, OverlappingRecordsEndInBoundedTime) {
    Airport airport;
    airport.parkingCount = 65535;
    File file;
    file.airports.assign(20000, airport);
    EXPECT_TRUE(decode(scenery::bglBytes(file)).failed);
}

TEST(BglReader, TheHeadTellsWhetherThereAreAirports) {
    const test::TempFolder folder;
    static constexpr std::size_t table = 56 + 3 * 20;
    const auto file = [](auto change) {
        File made;
        made.airports = {Airport{}};
        change(made);
        return scenery::bglBytes(made);
    };
    const std::string plain = file([](File&) {});
    const struct {
        const char* name;
        std::string content;
        bool has;
    } cases[] = {
        {"airports", plain, true},
        {"airports behind many sections", file([](File& f) { f.otherSections = 1000; }), true},
        {"long subsections", file([](File& f) { f.longSubsections = true; }), true},
        {"nothing behind the table", file([](File& f) { f.keepBytes = table; }), false},
        {"one byte behind the table", file([](File& f) { f.keepBytes = table + 1; }), true},
        {"more sections than the file can hold", file([](File& f) {
             f.otherSections = 1000;
             f.sectionCount = 5000000;
         }),
         false},
        {"no airports", scenery::bglBytes(scenery::plainFile(1000)), false},
        {"short", std::string(14, '\1'), false},
        {"header cut", plain.substr(0, 30), false},
        {"empty", "", false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(lf_bglHasAirports(folder.write("a.bgl", row.content)), row.has) << row.name;
    }
    EXPECT_FALSE(lf_bglHasAirports(folder.path() / "absent.bgl"));
}

} // namespace
} // namespace kst
