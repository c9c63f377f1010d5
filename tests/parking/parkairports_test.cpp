// The park airports: the user's list of them, and which one is loaded as the user flies.

#include "parking/parkairports.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/tables.h"
#include "parking/learning.h"
#include "parking/parkairportchoice.h"
#include "parking/parkingworld.h"
#include "parking/stands.h"
#include "parking/staticparking.h"
#include "scanner/airportdirectory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using testing::HasSubstr;

constexpr std::string_view listFile = "airports/my_park_airports.txt";
constexpr LatLon east{47.0, 8.5}; ///< of BBBB; AAAA lies 20.5 nm west of it

std::string utf16(std::string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char c : text) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

class ParkAirports : public testing::Test, protected ParkingWorld {
protected:
    ParkAirports() {
        folder.write("airports/airports_p3d.xml",
                     R"(<airports><airport code="AAAA" alt="1000" lat="47" lon="8" iata=""/>)"
                     R"(<airport code="BBBB" alt="1000" lat="47" lon="8.5" iata=""/>)"
                     R"(<airport code="CCCC" alt="1000" lat="50" lon="8" iata=""/></airports>)");
        lf_readAirports();
        setParkAirport(std::nullopt);
    }
    ~ParkAirports() override {
        lf_closeAirport();
        resetParkAirports();
        resetParkAirportChoice();
        resetEngine(false);
    }

    void addAirport(std::string_view code, LatLon place) {
        folder.write(
            fmt::format("airports/my_thirdparty/{}.xml", code),
            airportXml(R"(<parameter name="altitude" value="1000"/>)",
                       standXml("S1", place.lat, place.lon) + standXml("S2", place.lat + 0.01, place.lon)));
    }
    static std::string entries() {
        std::vector<std::string> texts;
        for (const ParkAirport& airport : parkAirports) {
            texts.push_back(airport.code + "/" + airport.standId);
        }
        return fmt::format("{}", fmt::join(texts, " "));
    }
    static void user(double lat, double lon, double heightFt, bool onGround = false) {
        userData.latitude = lat;
        userData.longitude = lon;
        userData.heightAglFt = heightFt;
        userOnGround = onGround;
        userGroundKnown = true;
    }
    /// Two checks, as a choice and its load take. The airport that is loaded then.
    static std::string check() {
        gf_checkForParkAirportUpdates(false);
        gf_checkForParkAirportUpdates(false);
        const auto airport = parkAirport();
        return airport && airportLoaded() ? airport->code : "";
    }
};

TEST_F(ParkAirports, TheGoodLinesOfTheListCount) {
    const struct {
        const char* name;
        std::optional<std::string> content;
        bool good;
        std::string entries, said;
    } cases[] = {
        {"no file", std::nullopt, true, "", "my_park_airports.txt not found\n"},
        {"blanks", " \t\r\n  BBBB ,\tS 2 \r\n\nAAAA\r\n", true, "BBBB/S 2 AAAA/",
         "2 park airports read from \"my_park_airports.txt\"\n"},
        {"too many fields", "AAAA,S1,x\nBBBB,S2", true, "BBBB/S2",
         "my_park_airports.txt:AAAA,S1,x wrong syntax, skipped\n"},
        {"unknown code", "XXXX,S1\nBBBB,S2\naaaa\n", false, "BBBB/S2", "airport XXXX is unknown\n"},
        {"double", "BBBB,S2\nAAAA\nBBBB,S1\n", true, "BBBB/S2 AAAA/",
         "my_park_airports.txt:BBBB double, skipped\n"},
        {"one", "CCCC", true, "CCCC/", "1 park airport read from \"my_park_airports.txt\"\n"},
        {"UTF-16", utf16("AAAA,S1\r\nBBBB\r\n"), true, "AAAA/S1 BBBB/", "2 park airports read"},
        {"UTF-8 with mark",
         "\xEF\xBB\xBF"
         "AAAA,S1\n",
         true, "AAAA/S1", "1 park airport read"},
        {"broken UTF-16", std::string("\xFF\xFE\x00\xDC\x41\x00", 6), false, "", "utf16"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        std::filesystem::remove(listFile);
        if (entry.content) {
            folder.write(listFile, *entry.content);
        }
        const std::size_t before = log().size();
        EXPECT_EQ(lf_readMyParkAirports(), entry.good);
        EXPECT_EQ(entries(), entry.entries);
        EXPECT_THAT(log().substr(before), HasSubstr(entry.said));
    }
}

TEST_F(ParkAirports, AddOnAirportsAreParkAirportsUnlessTheListNamesThem) {
    addAirport("AAAA", {47.0, 8.0});
    addAirport("BBBB", east);
    addAirport("ZZZZ", east);
    folder.write(listFile, "BBBB,S2\n");
    EXPECT_TRUE(lf_readMyParkAirports());
    EXPECT_EQ(entries(), "BBBB/S2 AAAA/");
    EXPECT_THAT(log(), HasSubstr("1 park airport added from my_thirdparty folder(-s) \n"));
}

TEST_F(ParkAirports, RewritingTheListLosesNothing) {
    const struct {
        const char* name;
        std::optional<std::string> before;
        std::string after, said;
    } cases[] = {
        {"no file", std::nullopt, "AAAA,S1\n", "my_park_airports.txt created with AAAA,S1\n"},
        {"new entry", "XXXX\nBBBB,S2\n", "AAAA,S1\nBBBB,S2\nXXXX\n",
         "my_park_airports.txt:AAAA,S1 new entry\n"},
        {"other stand", "a,b,c\r\n AAAA , S2\r\nAAAA,S3\r\n", "AAAA,S1\nAAAA,S3\na,b,c\n",
         "my_park_airports.txt:AAAA,S1 updated stand\n"},
        {"UTF-16", utf16("CCCC\r\nBBBB,S2\r\n"), "AAAA,S1\nBBBB,S2\nCCCC\n", "AAAA,S1 new entry\n"},
        {"broken UTF-16", std::string("\xFF\xFE\x00\xDC\x41\x00", 6),
         std::string("\xFF\xFE\x00\xDC\x41\x00", 6), "utf16"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        std::filesystem::remove(listFile);
        if (entry.before) {
            folder.write(listFile, *entry.before);
        }
        const std::size_t before = log().size();
        lf_readMyParkAirports();
        noteUserStand("AAAA", {47.0, 8.0}, "S1");
        lf_saveParkAirports();
        EXPECT_EQ(folder.read(listFile), entry.after);
        EXPECT_TRUE(entries().starts_with("AAAA/S1")) << entries();
        EXPECT_THAT(log().substr(before), HasSubstr(entry.said));
    }
}

TEST_F(ParkAirports, AReadOnlyListKeepsItsLines) {
    namespace fs = std::filesystem;
    folder.write(listFile, "BBBB,S2\n");
    fs::permissions(listFile, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    lf_readMyParkAirports();
    noteUserStand("AAAA", {47.0, 8.0}, "S1");
    fs::permissions(listFile, fs::perms::owner_write, fs::perm_options::add);
    const std::string after = folder.read(listFile).value_or("");
    EXPECT_THAT(after, HasSubstr("BBBB,S2\n"));
    EXPECT_TRUE(after.starts_with("AAAA,S1\n") ||
                messageLine().message.starts_with("could not save to \"airports"))
        << after;
    EXPECT_EQ(entries(), "AAAA/S1 BBBB/S2");
}

TEST_F(ParkAirports, TheLoadedAirportFollowsTheUser) {
    addAirport("AAAA", {47.0, 8.0});
    addAirport("BBBB", east);
    lf_readMyParkAirports();
    AIRPORT_RANGE.set(20);
    AIRPORT_HEIGHT.set(5000);
    const struct {
        const char* name;
        double lon, heightFt;
        bool onGround;
        const char* destination;
        const char* loaded;
    } steps[] = {
        {"far from both", 7.0, 3000, false, "", ""},
        {"above the height", 7.8, 5100, false, "", ""},
        {"below it", 7.8, 4900, false, "", "AAAA"},
        {"climb out of sight", 7.8, 5100, false, "", ""},
        {"nearer the first", 8.2, 3000, false, "", "AAAA"},
        {"still nearer it", 8.24, 3000, false, "", "AAAA"},
        {"nearer the second", 8.26, 3000, false, "", ""},
        {"which comes at the next check", 8.26, 3000, false, "", "BBBB"},
        {"the first is the destination, but farther", 8.4, 3000, false, "AAAA", "BBBB"},
        {"as far as each other", 8.25, 3000, false, "AAAA", ""},
        {"the destination though the other is as near", 8.25, 3000, false, "AAAA", "AAAA"},
        {"out of its sight, the other passed over", 8.53, 3000, false, "AAAA", ""},
        {"still, right above it", 8.5, 1000, false, "AAAA", ""},
        {"landed there", 8.5, 0, true, "AAAA", "BBBB"},
        {"on the ground it stays, how far it be", 7.0, 0, true, "", "BBBB"},
        {"until the user is in the air", 7.0, 1000, false, "", ""},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        DESTINATION.set(step.destination);
        user(47.0, step.lon, step.heightFt, step.onGround);
        EXPECT_EQ(check(), step.loaded);
        EXPECT_EQ(parkPositions().size(), *step.loaded != '\0' ? 2U : 0U);
    }
}

TEST_F(ParkAirports, TheAirportThatIsLeftIsSavedAndEmptied) {
    addAirport("AAAA", {47.0, 8.0});
    lf_readMyParkAirports();
    user(47.0, 8.0, 0, true);
    ASSERT_EQ(check(), "AAAA");
    EXPECT_EQ(statusValues().reservedStand, "S1");
    parkPositions()[1].options.push_back(drawnOption("HB-ABC"));
    noteStandChange();
    const auto learned = lf_learnedApfPath("airports/my_thirdparty/AAAA.xml", loadedAirport().publisher);
    StaticAc parked;
    parked.state = AcState::Live;
    parked.objectId = 5;
    parked.sid = 2;
    staticAcs.push_back(parked);

    user(47.0, 6.0, 3000);
    EXPECT_EQ(check(), "");
    EXPECT_THAT(folder.read(learned).value_or("nothing saved"), HasSubstr("HB-ABC"));
    EXPECT_TRUE(parkPositions().empty());
    EXPECT_EQ(staticAcs.front().state, AcState::Removing);
    EXPECT_EQ(statusValues().airportCode, "");
    EXPECT_THAT(log(), HasSubstr("AAAA is out of sight ("));
}

TEST_F(ParkAirports, TheListIsNotReadAnewWhileADestinationHeadsIt) {
    user(47.0, 7.0, 3000);
    for (const auto& [destination, enabled] : {std::pair("AAAA", false), {"", true}}) {
        DESTINATION.set(destination);
        parkingRunning = true;
        enableParkingControls(false);
        EXPECT_FALSE(controlEnabled(control::ReRead));
        EXPECT_FALSE(controlEnabled(control::Week));
        gf_checkForParkAirportUpdates(false); // the population is at its end
        EXPECT_EQ(controlEnabled(control::ReRead), enabled) << destination;
        EXPECT_TRUE(controlEnabled(control::Week)) << destination;
    }
}

TEST_F(ParkAirports, ReReadPutsAnotherReservedStandToUse) {
    addAirport("AAAA", {47.0, 8.0});
    folder.write(listFile, "AAAA,S2\n");
    lf_readMyParkAirports();
    user(47.0, 8.02, 0, true); // on no stand
    ASSERT_EQ(check(), "AAAA");
    parkingRunning = false;
    const struct {
        const char* line;
        double lon;
        const char* message;
        bool exists;
    } cases[] = {
        {"AAAA,S2", 8.02, "park airports and stands are okay", true},
        {"AAAA,S1", 8.0, "park airports and stands are okay", true}, // the user is on a stand
        {"AAAA,S1", 8.02, "reserved stand changed from \"S2\" to \"S1\"", true},
        {"AAAA,S9", 8.02, "reserved stand changed from \"S1\" to \"S9\"", false},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.line);
        folder.write(listFile, entry.line);
        user(47.0, entry.lon, 0, true);
        std::string message;
        EXPECT_TRUE(lf_reReadParkAirports(true, message));
        EXPECT_EQ(message, entry.message);
        EXPECT_EQ(statusValues().reservedStandOk, entry.exists);
    }
    EXPECT_FALSE(parkPositions()[1].reserved);
}

} // namespace
} // namespace kst::test
