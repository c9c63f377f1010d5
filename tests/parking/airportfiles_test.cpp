// Airport parking files: what loading gives, what saving writes, what is said of a bad one.

#include "parking/airportfile.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/runstate.h"
#include "parking/airportsettings.h"
#include "parking/learning.h"
#include "parking/parkingworld.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"
#include "support/environment.h"
#include "support/places.h"
#include "support/thrown.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using testing::HasSubstr;

const std::string local = "airports/my_thirdparty/TEST.xml";
const std::string altitude = R"(<parameter name="altitude" value="1416"/>)";

class AirportFiles : public testing::Test, protected ParkingWorld {
protected:
    std::string load(const std::string& location = local) {
        clearLoadedAirport();
        return gf_readApf(location);
    }

    /// The one file below airports/learned.
    std::string learnedBytes() const {
        return folder.read(lf_learnedApfPath(local, loadedAirport().publisher)).value_or("no learned file");
    }
};

/// Learns something of every kind at the loaded airport.
void learn() {
    static int registrations = 0;
    AirportFile& airport = loadedAirport();
    for (std::size_t i = 0; i < airport.stands.size(); ++i) {
        ParkPos& stand = airport.stands[i];
        for (std::uint32_t k = 0, options = randomBelow(4); k < options; ++k) {
            stand.options.push_back(drawnOption(fmt::format("HB-{}", ++registrations)));
        }
        stand.radius_change = randomBelow(3) == 0;
        if (stand.radius_change) {
            stand.radius = (1 + randomBelow(500)) / 10.0 / metresPerNm;
        }
        stand.cargo_change = randomBelow(3) == 0;
        stand.cargo = stand.cargo != stand.cargo_change;
    }
    ParkPos made = airport.stands.front();
    made.id = fmt::format("nach Größe {}", airport.stands.size());
    made.latitude = 47.0;
    made.radius = 20.0 / metresPerNm;
    made.manual = true;
    airport.stands.push_back(made);
    for (Parameter* const parameter : allParameters()) {
        if (const auto* number = dynamic_cast<IntParameter*>(parameter)) {
            const auto range = static_cast<std::uint32_t>(number->maximum() - number->minimum());
            parameter->setFromText(std::to_string(number->minimum() + static_cast<int>(randomBelow(range))));
        } else if (dynamic_cast<BoolParameter*>(parameter) != nullptr) {
            parameter->setFromText(randomBelow(2) == 0 ? "1" : "0");
        }
    }
}

TEST_F(AirportFiles, SavedLoadedAndSavedAgainIsTheSameFile) {
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_TRUE(gf_saveApf(drawnAirport(seed), local, ApfMode::Archive));
        const std::string archived = folder.read(local).value();
        ASSERT_EQ(load(), "");
        ASSERT_TRUE(gf_saveApf(loadedAirport(), local, ApfMode::Archive));
        ASSERT_EQ(folder.read(local), archived);

        for (const bool handmade : {false, true}) {
            learn();
            loadedAirport().handmade = handmade;
            lf_saveLearned();
            const std::string learned = learnedBytes();
            for (Parameter* const parameter : allParameters()) {
                parameter->setDefault();
            }
            ASSERT_EQ(load(), "");
            EXPECT_EQ(loadedAirport().handmade, handmade);
            lf_saveLearned();
            ASSERT_EQ(learnedBytes(), learned);
        }
        std::filesystem::remove(lf_learnedApfPath(local, loadedAirport().publisher));
    }
}

TEST_F(AirportFiles, ALoadedAirportIsShownAndHasWhatTheFileSays) {
    folder.write(
        local,
        airportXml(altitude + R"(<parameter name="airport_name" value="Zurich"/>
                     <parameter name="publisher" value="stock"/><parameter name="Qf_real" value="44"/>
                     <parameter name="Qf_soft" value="7"/><parameter name="RT_traffic_week" value="21"/>)",
                   standXml("A", 47.0, 8.0,
                            R"(<opt reg="HB-JCA" airl="SWR" type="BCS3" day="3" hh="0,47" cs="SWR1:SWR2"/>
                                        <opt reg="" soft="yes" hh="" cs="A:B:C"/>
                                        <opt reg="D" day="7" hh="4, 5,48,6"/><opt reg="D" hh="7,x,8"/>)") +
                       // 54 m apart overlap at 30 m each, 55 m apart do not.
                       standXml("B", 47.0 + 54.0 / metresPerNm / 60.0, 8.0) +
                       standXml("C", 47.0 - 55.0 / metresPerNm / 60.0, 8.0) +
                       R"(<parkpos id="H" heli="Ture" cargo="true" ramp="0"/>)"));
    parametersChanged = true;
    ASSERT_EQ(load(), "");

    const std::vector<ParkPos>& stands = parkPositions();
    ASSERT_EQ(stands.size(), 4U);
    EXPECT_THAT(stands[0].neighbours, testing::ElementsAre(2U));
    EXPECT_THAT(stands[1].neighbours, testing::ElementsAre(1U));
    EXPECT_TRUE(stands[2].neighbours.empty());
    EXPECT_TRUE(stands[3].heli);
    EXPECT_NEAR(stands[0].heading, pi / 2, 1e-12);
    EXPECT_NEAR(stands[0].radius * metresPerNm, 30.0, 1e-9);
    std::string options;
    for (const ParkOption& option : stands[0].options) {
        EXPECT_TRUE(option.fromArchive);
        options +=
            fmt::format("{}: day {} at {} cs {}/{}{}\n", option.seq, option.day,
                        lf_bitset2hours(option.hours), option.cs, option.cs2, option.real ? "" : " soft");
    }
    EXPECT_EQ(options, "1: day 3 at 0,47 cs SWR1/SWR2\n2: day 0 at  cs A/ soft\n3: day 7 at 4,5 cs /\n"
                       "4: day 0 at 7 cs /\n");

    EXPECT_TRUE(airportLoaded() && controlEnabled(control::FlushStatic) && !parametersChanged);
    EXPECT_EQ(parkAirport()->elevationFt, 1416.0);
    const StatusValues status = statusValues();
    EXPECT_EQ(status.standsShown, 4U);
    EXPECT_EQ(status.qualityText, "44/ 7");
    EXPECT_EQ(status.airportName + status.publisherText, "Zurichstock");
    EXPECT_EQ(status.trafficWeek, 21);
    EXPECT_EQ(parking_percentage, 30);
    for (const char* const line :
         {"\nexception 48 is no half hour in lf_hours2bitset\n", "\nparking_percentage      : 30%\n",
          "\nAirport file read from \"airports/my_thirdparty/TEST.xml\" for Zurich\n"
          "          publisher               : stock\n"
          "          altitude                : 1416 ft\n"
          "          num_parkpos             : 4\n"
          "          quality factor          : 44/ 7\n"
          "          RT traffic week         : 21\n"}) {
        EXPECT_THAT(log(), HasSubstr(line));
    }
}

TEST_F(AirportFiles, QualityShowsTheSoftFactorOnlyWhileLittleIsKnown) {
    EXPECT_EQ(gf_qualityText({-1, -1}), "  ");
    EXPECT_EQ(gf_qualityText({0, 5}), " 0/ 5");
    EXPECT_EQ(gf_qualityText({44, 30}), "44/30");
    EXPECT_EQ(gf_qualityText({45, 30}), "45");
    EXPECT_EQ(gf_qualityText({100, -1}), "100");
}

TEST_F(AirportFiles, ALargeFileKeepsItsOrderAndIsRefusedAsAWhole) {
    constexpr int count = 400;
    std::string options;
    for (int i = 0; i < 20; ++i) {
        options += fmt::format(R"(<opt reg="HB-{}" airl="SWR" type="A320" day="1" hh="0,47"/>)", i);
    }
    std::string stands;
    for (int i = 0; i < count; ++i) {
        stands += standXml(fmt::format("S{}", i), 47.0, 8.0 + i * 0.01, options);
    }
    folder.write(local, airportXml(altitude, stands));
    ASSERT_EQ(load(), "");
    ASSERT_EQ(parkPositions().size(), count);
    for (int i = 0; i < count; ++i) {
        const ParkPos& stand = parkPositions()[static_cast<std::size_t>(i)];
        ASSERT_EQ(stand.id, fmt::format("S{}", i));
        ASSERT_EQ(stand.options.size(), 20U);
        ASSERT_EQ(stand.options.back().reg, "HB-19");
    }
    folder.write(local, airportXml(altitude, stands + "<parkpos id='Z'>&lt;<opt></parkpos>"));
    EXPECT_EQ(load(), local + " could not be loaded: Start-end tags mismatch");
    EXPECT_TRUE(parkPositions().empty());
}

TEST_F(AirportFiles, ABadFileIsToldAsWhatItIs) {
    EXPECT_EQ(load(""), "gf_readApf xml is empty...");
    EXPECT_EQ(load("archive/stock/TEST.xml"),
              "failed to download: \"file:///nowhere/downloads/P3D/archive/stock/TEST.xml\"");
    EXPECT_THAT(load("airports/none.xml"), testing::StartsWith("airports/none.xml could not be loaded: "));
    const struct {
        std::string content, said;
    } cases[] = {
        {"<meta/><parameters>", local + " could not be loaded: Start-end tags mismatch"},
        {"", local + " could not be loaded: No document element found"},
        {airportXml("", standXml("A", 47, 8)), "Parameter altitude not found"},
        {airportXml(altitude, standXml("A", 47, 8) + standXml("B", 47, 8) + standXml("A", 46, 8)),
         "Parking position A appears more than once?"},
        {airportXml(altitude, ""), "no stands found"},
    };
    for (const auto& entry : cases) {
        folder.write(local, entry.content);
        std::string result;
        const std::string error = thrown<UserErrorException>([&] { result = load(); });
        EXPECT_EQ(result.empty() ? error : result, entry.said) << entry.content;
    }
    EXPECT_EQ(statusValues().qualityText, "  ") << "an airport without stands is shown all the same";
    setParkAirport(std::nullopt);
    EXPECT_EQ(load(), "gf_readApf no park airport set");
}

TEST_F(AirportFiles, TheUsersOwnFilesComeFirstAndLinksBeforeFiles) {
    const struct {
        std::string file, content, location;
    } steps[] = {
        {"server/P3D/archive/stock/TEST.xml", "<x/>", "archive/stock/TEST.xml"},
        {"airports/my_ORBX/TEST.xml", "<x/>", "airports/my_ORBX/TEST.xml"},
        {"airports/my_ORBX/TEST.txt", "archive/simaddon/TEST.xml, done\n", "archive/simaddon/TEST.xml"},
        {local, "<x/>", local},
        {"airports/my_thirdparty/TEST.txt", "\nonly the first line counts.xml\n", local},
        {"airports/my_thirdparty/TEST.txt",
         "\xEF\xBB\xBF"
         "archive/thirdparty/A%20B/TEST.xml\r\n",
         "archive/thirdparty/A%20B/TEST.xml"},
    };
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", fileUrl(folder.path() / "server/"));
    EXPECT_EQ(gf_locateApf("TEST"), "");
    EXPECT_FALSE(gf_apfExists("TEST"));
    for (const auto& step : steps) {
        folder.write(step.file, step.content);
        EXPECT_EQ(withSlashes(gf_locateApf("TEST")), step.location) << "after " << step.file;
        EXPECT_TRUE(gf_apfExists("TEST"));
    }
    EXPECT_FALSE(std::filesystem::exists("TEST.xml")) << "the trial fetch was left behind";
}

TEST_F(AirportFiles, TheNearestStandOfAnotherAirportIsFoundWithoutLoadingIt) {
    std::string stand = "none";
    const LatLon place{47.0, 8.0};
    EXPECT_EQ(gf_readDestApfForClosestStand("FAR", place, stand), 100.0);
    folder.write("airports/my_ORBX/FAR.xml", "<parkpositions>");
    EXPECT_EQ(gf_readDestApfForClosestStand("FAR", place, stand), 100.0);
    EXPECT_EQ(stand, "none");
    folder.write("airports/my_ORBX/FAR.xml",
                 airportXml("", standXml("A", 47.5, 8) + standXml("B", 47.1, 8) + standXml("C", 47.1, 8)));
    EXPECT_NEAR(gf_readDestApfForClosestStand("FAR", place, stand), 6.0, 0.01);
    EXPECT_EQ(stand, "B");
    EXPECT_TRUE(parkPositions().empty());
}

/// A learned file's ranges: what is in use, and what turning the automatic range off brings back.
TEST_F(AirportFiles, RangesOfALearnedFileReplaceTheOperatorsOwn) {
    const struct {
        const char* settings;
        int range;
        int kept;
        bool boxEnabled;
    } cases[] = {
        {R"(<parameter name="LATERAL_RANGE" value="25"/><parameter name="AUTO_RANGE" value="1"/>)", 25, 25,
         false},
        {R"(<parameter name="LATERAL_RANGE" value="25"/><parameter name="AUTO_RANGE" value="0"/>)", 25, 25,
         true},
        {R"(<parameter name="AUTO_RANGE" value="1"/>)", 33, 33, false},
        {R"(<parameter name="AUTO_RANGE" value="0"/>)", 77, 77, true},
        {R"(<parameter name="LATERAL_RANGE" value="900"/><parameter name="AUTO_RANGE" value="0"/>)", 100, 100,
         true},
    };
    for (const auto& entry : cases) {
        LATERAL_RANGE.set(33);
        rememberedRangeNm = 77;
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(airportXml(entry.settings, "").c_str()));
        takeAirportSettings(document);
        EXPECT_EQ(LATERAL_RANGE, entry.range) << entry.settings;
        EXPECT_EQ(rememberedRangeNm, entry.kept) << entry.settings;
        EXPECT_EQ(controlEnabled(control::LateralRange), entry.boxEnabled) << entry.settings;
    }
    EXPECT_EQ(workingRangeNm, 100.0);
    EXPECT_THAT(log(), HasSubstr("\n          LATERAL_RANGE           : 100\n"));
}

TEST_F(AirportFiles, TheStockFilesOfTheInstallFolderLoadAndSayThatTheyAreMadeUp) {
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", fileUrl(buildFolder() / "made/downloads/"));
    const std::pair<const char*, std::size_t> airports[] = {{"LSZH", 276}, {"LFBO", 85}, {"LFPG", 481}};
    for (const auto& [icao, count] : airports) {
        const std::string location = gf_locateApf(icao);
        ASSERT_EQ(location, fmt::format("archive/stock/{}.xml", icao));
        ASSERT_EQ(load(location), "");
        EXPECT_EQ(parkPositions().size(), count);
        std::size_t used = 0;
        for (const ParkPos& stand : parkPositions()) {
            used += stand.options.empty() ? 0 : 1;
        }
        EXPECT_GT(used, count * 2 / 3) << icao;
        EXPECT_GE(loadedAirport().quality.Qf_real, 40) << icao;
        EXPECT_THAT(folder.read("airports/park_airport.xml").value(), HasSubstr("MADE UP"));
    }
}

} // namespace
} // namespace kst::test
