// The airports of the world: by code, and the one at a position.

#include "scanner/airportdirectory.h"

#include "core/exceptions.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "support/environment.h"
#include "support/places.h"
#include "support/tempfolder.h"
#include "support/thrown.h"

#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using testing::HasSubstr;

const std::filesystem::path directoryFile = "airports/airports_p3d.xml";

std::string airport(std::string_view code, double latitude, double longitude) {
    return fmt::format(R"(<airport code="{}" alt="1416.5" lat="{}" lon="{}" iata="X"/>)", code, latitude,
                       longitude);
}

/// What reading this file reports.
std::string failureOf(const TempFolder& folder, std::string_view content) {
    folder.write(directoryFile, content);
    return withSlashes(thrown<UserErrorException>(lf_readAirports));
}

/// One test, since a directory that was read stays for the process.
TEST(AirportDirectory, IsReadOnceAndKnowsTheAirportAtAPosition) {
    const TempFolder folder;
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", "file:///nowhere/downloads/");
    openLog();
    const auto log = [&] { return withSlashes(folder.read("Log.txt").value_or("")); };
    EXPECT_THROW(lf_readAirports(), UserErrorException);
    EXPECT_THAT(failureOf(folder, "<airports>"), HasSubstr("88: airports/airports_p3d.xml not loaded Start"));
    EXPECT_EQ(failureOf(folder, "<other/>"), "88: airports/airports_p3d.xml not found");
    EXPECT_EQ(failureOf(folder, R"(<airports><airport code="A" alt="high" lat="1" lon="2"/></airports>)"),
              "88: airport A: alt \"high\" is no number");
    EXPECT_EQ(failureOf(folder, R"(<airports><airport code="A" alt="1" lat="1"/></airports>)"),
              "88: airport A: lon \"\" is no number");
    // PAIR2 is met after PAIR1 and is closer to the north, so it pushes PAIR1 out; AFTER never does.
    EXPECT_EQ(failureOf(folder, "<airports>" + airport("PAIR2", 10.05, 0) + airport("PAIR1", 10, 0) +
                                    airport("AFTER", 20.03, 0) + airport("AAAA", 20, 0) +
                                    airport("LONE", 47, 8) + "</airports>"),
              "nothing was thrown");
    folder.write(directoryFile, "<broken");
    EXPECT_TRUE(lf_readAirports()) << "read a second time";
    EXPECT_THAT(log(), HasSubstr("\n5 airports read from \"airports/airports_p3d.xml\"\n"));

    ASSERT_NE(gf_airportByCode("LONE"), nullptr);
    EXPECT_EQ(gf_airportByCode("LONE")->alt, 1416.5);
    EXPECT_EQ(gf_airportByCode("lone"), nullptr);

    const auto codeAt = [](double latitude, double longitude) {
        const AirportEntry* const found = gf_closestAirport({latitude, longitude});
        return found != nullptr ? found->code : "";
    };
    constexpr double nm = 1.0 / 60.0;
    EXPECT_EQ(codeAt(47 + 4.99 * nm, 8), "LONE");
    EXPECT_EQ(codeAt(47 + 5.1 * nm, 8), "");
    EXPECT_EQ(codeAt(20.01, 0), "AAAA") << "a farther airport later in the directory is no neighbour";
    EXPECT_EQ(log().find("neighbour"), std::string::npos);

    EXPECT_EQ(codeAt(10.04, 0), "PAIR2") << "without files the closest one stays";
    EXPECT_THAT(log(), HasSubstr("\nAirport PAIR2 is closest, neighbour is PAIR1\n"));
    const auto stands = [&](std::string_view code, double latitude) {
        folder.write(fmt::format("airports/my_ORBX/{}.xml", code),
                     fmt::format(R"(<parkpositions><parkpos id="{}7" latitude="{}"/></parkpositions>)", code,
                                 latitude));
    };
    stands("PAIR1", 10.04 + 100.0 / metresPerNm * nm);
    stands("PAIR2", 10.04 + 100.0 / metresPerNm * nm);
    EXPECT_EQ(codeAt(10.04, 0), "PAIR2") << "as near";
    stands("PAIR2", 10.05);
    EXPECT_EQ(codeAt(10.04, 0), "PAIR1");
    EXPECT_THAT(log(),
                HasSubstr("\nAirport PAIR2 is closest, but stand PAIR17 at neighbouring airport PAIR1 is "
                          "closest at 100 meters ...\n"));
    closeLog();
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
}

/// The look through all airports as its rule is told, without leaving any out.
AirportsNear plainPass(const std::vector<AirportEntry>& directory, LatLon position) {
    AirportsNear near;
    double bestNm = 100.0;
    for (const AirportEntry& entry : directory) {
        const double distance = gf_distanceNm(position, entry.position());
        if (distance <= 5.0 && distance < bestNm) {
            near.second = near.best;
            near.best = &entry;
            bestNm = distance;
        }
    }
    return near;
}

TEST(AirportDirectory, LeavesOutOnlyAirportsThatDoNotCount) {
    std::mt19937 random(4711);
    const auto draw = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    // Crowds at both poles, on the date line and elsewhere, with positions among them.
    const LatLon centres[] = {{90, 0}, {-90, 0}, {0, 180}, {70, -180}, {47, 8}, {0, 0}, {-89.9, 120}};
    std::vector<AirportEntry> directory;
    std::vector<LatLon> positions;
    for (int i = 0; i < 4000; ++i) {
        const LatLon centre = centres[random() % std::size(centres)];
        const bool polar = std::abs(centre.lat) > 89.0;
        const LatLon place{std::clamp(centre.lat + draw(-0.3, 0.3), -90.0, 90.0),
                           polar ? draw(-180, 180) : wrapLongitude(centre.lon + draw(-0.3, 0.3))};
        if (i % 2 == 0) {
            directory.push_back({std::to_string(i), "", place.lat, place.lon, 0.0});
        } else {
            positions.push_back(place);
        }
    }
    int found = 0;
    int neighbours = 0;
    for (const LatLon position : positions) {
        const AirportsNear near = lf_airportsNear(directory, position);
        const AirportsNear expected = plainPass(directory, position);
        ASSERT_EQ(near.best, expected.best) << position.lat << " " << position.lon;
        ASSERT_EQ(near.second, expected.second) << position.lat << " " << position.lon;
        found += near.best != nullptr ? 1 : 0;
        neighbours += near.second != nullptr ? 1 : 0;
    }
    EXPECT_GT(found, 1000);
    EXPECT_GT(neighbours, 500);
}

} // namespace
} // namespace kst::test
