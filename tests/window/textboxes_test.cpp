// What Enter in a text box does.

#include "core/parkairport.h"
#include "platform/paths.h"
#include "window/commands.h"
#include "window/commandworld.h"
#include "window/numberinput.h"

#include <array>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

class TextBoxes : public test::CommandWorld {};

// --- whole numbers ---

TEST_F(TextBoxes, WholeNumbers) {
    struct Case {
        IntParameter& parameter;
        int before;
        std::string text;
        int after;
        std::string message;
    };
    const std::array cases{
        Case{LATERAL_RANGE, 40, "150", 100, "The new LATERAL_RANGE is 100"},
        Case{LATERAL_RANGE, 100, "150", 100, "The new LATERAL_RANGE is 100"},
        Case{LATERAL_RANGE, 40, "-7", 2, "The new LATERAL_RANGE is 2"},
        Case{AIRPORT_RANGE, 12, "", 20, "The new AIRPORT_RANGE is 20"},
        Case{AIRPORT_RANGE, 20, "12x", 12, "The new AIRPORT_RANGE is 12"},
        Case{AIRPORT_RANGE, 20, " \t15", 15, "The new AIRPORT_RANGE is 15"},
        Case{AIRPORT_RANGE, 20, "+15", 15, "The new AIRPORT_RANGE is 15"},
        Case{AIRPORT_RANGE, 20, "15.9", 15, "The new AIRPORT_RANGE is 15"},
        Case{AIRPORT_RANGE, 20, "abc", 20, "invalid input: abc"},
        Case{AIRPORT_RANGE, 20, "+-15", 20, "invalid input: +-15"},
        Case{AIRPORT_RANGE, 20, "   ", 20, "invalid input:    "},
        Case{AIRPORT_RANGE, 20, "\U0001F6EC", 20, "invalid input: \U0001F6EC"},
        Case{AIRPORT_RANGE, 20, "20", 20, "Same AIRPORT_RANGE value 20, no changes made"},
        Case{AIRPORT_RANGE, 20, "99999999999", 20, ""},
        Case{AIRPORT_RANGE, 20, "2147483647", 30, "The new AIRPORT_RANGE is 30"},
        Case{AIRPORT_HEIGHT, 18000, "5000", 5000, "The new AIRPORT_HEIGHT is 5000"},
        Case{AUTO_RANGE_ABOVE_HEIGHT, 49000, "1", 18000, "The new AUTO_RANGE_ABOVE_HEIGHT is 18000"},
        Case{CUSTOM_MAX_PARK, -1, "501", 500, "The new CUSTOM_MAX_PARK is 500"},
        Case{MAX_LIVE, 30, "", -1, "The new MAX_LIVE is -1"},
    };
    for (const Case& each : cases) {
        each.parameter.set(each.before);
        sink.shown.clear();
        lf_enterTextBox(each.parameter.controlId(), each.text);
        EXPECT_EQ(each.parameter, each.after) << each.text;
        EXPECT_EQ(message(), each.message) << each.text;
        EXPECT_TRUE(sink.hasShown(each.parameter)) << "the box must show what holds after " << each.text;
        if (each.message.starts_with("The new")) {
            EXPECT_EQ(stored(each.parameter), std::to_string(each.after)) << each.text;
        }
    }
}

TEST_F(TextBoxes, RefusedNumbersAreLogged) {
    lf_enterTextBox(control::AirportRange, "abc");
    lf_enterTextBox(control::AirportRange, "99999999999");
    lf_enterTextBox(control::AirportRange, "20");
    lf_enterTextBox(control::AirportRange, "12");
    EXPECT_TRUE(logged("invalid input: abc"));
    EXPECT_TRUE(logged("===> lf_processTbInt: number out of range, h=99999999999 "));
    EXPECT_TRUE(logged("Same AIRPORT_RANGE value 20, no changes made"));
    EXPECT_FALSE(logged("The new AIRPORT_RANGE"));
}

TEST_F(TextBoxes, TextOfTenThousandCharactersIsCutToWhatABoxHolds) {
    lf_enterTextBox(control::AirportRange, std::string(10000, 'W'));
    EXPECT_EQ(message(), "invalid input: " + std::string(511, 'W'));
    lf_enterTextBox(control::AirportRange, std::string(600, ' ') + "12");
    EXPECT_EQ(AIRPORT_RANGE, 20);
}

TEST_F(TextBoxes, ParkingPercentageIsNeverSaved) {
    loadParkAirport();
    const auto before = std::filesystem::last_write_time(parametersFile());
    const std::string storedBefore = stored(parking_percentage);
    lf_enterTextBox(control::ParkingPercentage, "");
    EXPECT_EQ(parking_percentage, 0);
    EXPECT_TRUE(parkRenewalDue);
    lf_enterTextBox(control::ParkingPercentage, "55");
    EXPECT_EQ(parking_percentage, 55);
    EXPECT_EQ(stored(parking_percentage), storedBefore);
    EXPECT_EQ(std::filesystem::last_write_time(parametersFile()), before);
}

TEST_F(TextBoxes, ParkNumbersScheduleARenewalOnlyWhenTheyChange) {
    loadParkAirport();
    for (const auto& [id, same, other] :
         {std::tuple(control::CustomMaxPark, "-1", "50"), {control::ParkingPercentage, "30", "50"}}) {
        parkRenewalDue = false;
        lf_enterTextBox(id, same);
        EXPECT_FALSE(parkRenewalDue) << id;
        lf_enterTextBox(id, "what?");
        EXPECT_FALSE(parkRenewalDue) << id;
        lf_enterTextBox(id, other);
        EXPECT_TRUE(parkRenewalDue) << id;
        EXPECT_EQ(message(), "Kestrane_P3D will respond in 15 seconds ...") << id;
    }
}

TEST_F(TextBoxes, RangeReachesTheFeedAndTheSimulatorAtOnce) {
    lf_enterTextBox(control::LateralRange, "150");
    EXPECT_EQ(workingRangeNm.load(), 100.0);
    EXPECT_EQ(requestRangeM.load(), 185200.0);
    EXPECT_TRUE(parametersChanged);
    EXPECT_EQ(stored(LATERAL_RANGE), "100");
}

TEST_F(TextBoxes, LiveLimitIsAppliedByTheWorker) {
    lf_enterTextBox(control::MaxLive, "50");
    EXPECT_EQ(MAX_LIVE, 50);
    EXPECT_FALSE(parametersChanged);
    auto requests = workerRequests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::ApplyLiveLimit);

    loadParkAirport();
    lf_enterTextBox(control::MaxLive, "20");
    EXPECT_EQ(MAX_LIVE, 20);
    EXPECT_TRUE(parametersChanged);
    EXPECT_EQ(workerRequests().size(), 1U);

    lf_enterTextBox(control::MaxLive, "20");
    EXPECT_TRUE(workerRequests().empty());
}

TEST_F(TextBoxes, DeeperMatchingTriesFailedTargetsAgain) {
    MATCHING_DEPTH.set(3);
    lf_enterTextBox(control::MatchingDepth, "2");
    EXPECT_FALSE(clearUnmatchedDue);
    lf_enterTextBox(control::MatchingDepth, "3");
    EXPECT_TRUE(clearUnmatchedDue);
    clearUnmatchedDue = false;
    lf_enterTextBox(control::MatchingDepth, "");
    EXPECT_EQ(MATCHING_DEPTH, 4);
    EXPECT_TRUE(clearUnmatchedDue);
    clearUnmatchedDue = false;
    lf_enterTextBox(control::MatchingDepth, "9");
    EXPECT_EQ(MATCHING_DEPTH, 4);
    EXPECT_FALSE(clearUnmatchedDue);
}

// --- hours ---

TEST_F(TextBoxes, HoursMoveToTheNearestHalfHour) {
    struct Case {
        std::string text;
        float hours;
        int halfHours;
    };
    for (const Case& each :
         {Case{"3.2", 3.0F, 5}, Case{"3.3", 3.5F, 6}, Case{"0.1", 0.5F, 0}, Case{"-4", 0.5F, 0},
          Case{"23.9", 24.0F, 47}, Case{"1e1", 10.0F, 19}, Case{"4.5h", 4.5F, 8}, Case{"3e38", 24.0F, 47}}) {
        MAX_FIT_FL.set(12.0F);
        MAX_FIT.set(23);
        EXPECT_TRUE(lf_processTbFloat(MAX_FIT_FL, each.text)) << each.text;
        EXPECT_EQ(MAX_FIT_FL.get(), each.hours) << each.text;
        EXPECT_EQ(MAX_FIT, each.halfHours) << each.text;
        EXPECT_EQ(stored(MAX_FIT), std::to_string(each.halfHours)) << each.text;
        EXPECT_EQ(message(), fmt::format("The new MAX_FIT_FL is {:.1F}", each.hours)) << each.text;
    }
}

TEST_F(TextBoxes, EmptyHoursGoBackToTheDefault) {
    loadParkAirport();
    lf_enterTextBox(control::MaxFitFl, "3");
    lf_enterTextBox(control::MaxFitFl, "");
    EXPECT_EQ(MAX_FIT_FL.get(), 24.0F);
    EXPECT_EQ(MAX_FIT, 47);
    EXPECT_EQ(stored(MAX_FIT), "47");
    EXPECT_TRUE(parkRenewalDue);
}

TEST_F(TextBoxes, HoursThatAreNoNumberChangeNothing) {
    loadParkAirport();
    MAX_FIT_FL.set(3.0F);
    MAX_FIT.set(5);
    for (const std::string text : {"abc", "nan", "inf", "-inf", "1e99", "\U0001F6EC", "."}) {
        lf_enterTextBox(control::MaxFitFl, text);
        EXPECT_EQ(MAX_FIT_FL.get(), 3.0F) << text;
        EXPECT_EQ(MAX_FIT, 5) << text;
        EXPECT_EQ(message(), "") << text;
        EXPECT_TRUE(logged("===> lf_processTbFloat: ")) << text;
        EXPECT_TRUE(logged(", h=" + text + " ")) << text;
    }
    lf_enterTextBox(control::MaxFitFl, "3.0");
    EXPECT_EQ(message(), "Same MAX_FIT_FL value 3, no changes made");
    EXPECT_FALSE(parkRenewalDue);
}

TEST_F(TextBoxes, HoursWithoutAnAirportOnlyClearTheMessage) {
    showMessage("Waiting", false);
    lf_enterTextBox(control::MaxFitFl, "3");
    EXPECT_EQ(message(), "");
    EXPECT_EQ(MAX_FIT_FL.get(), 24.0F);
    EXPECT_FALSE(sink.hasShown(MAX_FIT_FL));
}

// --- callsign ---

TEST_F(TextBoxes, Callsigns) {
    struct Case {
        std::string text;
        std::string stored;
        std::string message;
    };
    lf_setBlockCallsign("SWR1");
    for (const Case& each :
         {Case{"ab1", "SWR1", "callsign \"ab1\" is not valid"},
          Case{"abcd12345", "SWR1", "callsign \"abcd12345\" is not valid"},
          Case{"swr1", "SWR1", "callsign \"SWR1\" was already set ..."},
          Case{"abcd123", "ABCD123", "live aircraft with callsign \"ABCD123\" will be blocked"},
          Case{"abcd1234", "ABCD1234", "live aircraft with callsign \"ABCD1234\" will be blocked"},
          Case{"abcd", "ABCD", "live aircraft with callsign \"ABCD\" will be blocked"}}) {
        sink.shown.clear();
        blockCallsignDue = false;
        lf_enterTextBox(control::BlockCallsign, each.text);
        EXPECT_EQ(BLOCK_CALLSIGN.get(), each.stored) << each.text;
        EXPECT_EQ(stored(BLOCK_CALLSIGN), each.stored) << each.text;
        EXPECT_EQ(message(), each.message);
        EXPECT_TRUE(logged(each.message));
        EXPECT_TRUE(sink.hasShown(BLOCK_CALLSIGN)) << each.text;
        EXPECT_EQ(blockCallsignDue, each.message.ends_with("will be blocked")) << each.text;
        EXPECT_TRUE(controlEnabled(control::Unblock)) << each.text;
    }
}

TEST_F(TextBoxes, EmptyCallsignUnblocks) {
    lf_setBlockCallsign("SWR1");
    lf_enterTextBox(control::BlockCallsign, "");
    EXPECT_EQ(BLOCK_CALLSIGN.get(), "");
    EXPECT_EQ(message(), "no more blocking of live aircraft \"SWR1\"");
    lf_enterTextBox(control::BlockCallsign, "");
    EXPECT_EQ(message(), "");
}

// --- destination ---

TEST_F(TextBoxes, DestinationsThatAreRefusedLeaveTheStoredOne) {
    DESTINATION.set("LSZH");
    for (const auto& [text, words] : {std::pair("LSZ", "destination \"LSZ\" is not valid"),
                                      {"LSZHX", "destination \"LSZHX\" is not valid"},
                                      {"lszh", "destination \"LSZH\" was already set ..."},
                                      {"qqqq", "destination \"QQQQ\" is unknown ..."}}) {
        sink.shown.clear();
        lf_enterTextBox(control::Destination, text);
        EXPECT_EQ(DESTINATION.get(), "LSZH");
        EXPECT_EQ(message(), words);
        EXPECT_TRUE(logged(words));
        EXPECT_TRUE(sink.hasShown(DESTINATION)) << text;
    }
    EXPECT_TRUE(workerRequests().empty());
}

TEST_F(TextBoxes, EmptyDestinationIsForgottenInMemoryOnly) {
    DESTINATION.set("LSZH");
    saveParameter(DESTINATION);
    enableControl(control::ReRead, false);
    lf_enterTextBox(control::Destination, "");
    EXPECT_EQ(DESTINATION.get(), "");
    EXPECT_EQ(stored(DESTINATION), "LSZH");
    EXPECT_TRUE(controlEnabled(control::ReRead));
    EXPECT_EQ(message(), "destination set to empty");
    EXPECT_TRUE(logged("destination set to empty"));
}

// --- install path ---

TEST_F(TextBoxes, InstallPathThatExistsRestarts) {
    showError("No P3D install path detected");
    const std::string path = platform::utf8FromPath(
        folder.write(platform::pathFromUtf8("Prepar3D v5 \u00e9\u6771/readme"), "").parent_path());
    lf_enterTextBox(control::AllInstallPath, path);
    EXPECT_EQ(SIM_INSTALL_PATH.get(), path);
    EXPECT_EQ(stored(SIM_INSTALL_PATH), path);
    EXPECT_EQ(messageLine().error, "");
    EXPECT_EQ(message(), "Install path exists, Kestrane_P3D will restart");
    EXPECT_TRUE(logged("Install path exists, Kestrane_P3D will restart"));
    EXPECT_EQ(exitSeconds, 3);
    EXPECT_EQ(exitReason.load(), ExitReason::RestartInstallPath);
}

TEST_F(TextBoxes, InstallPathThatDoesNotExistIsRefused) {
    for (const std::string& path : {std::string("/no/such/path"), std::string("bad\0path", 8),
                                    std::string("\xff\xfe"), std::string(10000, 'x')}) {
        lf_enterTextBox(control::AllInstallPath, path);
        EXPECT_EQ(SIM_INSTALL_PATH.get(), "");
        EXPECT_EQ(message(), "This install path does not exist: " + path.substr(0, 2047));
    }
    EXPECT_FALSE(exitSeconds);
}

TEST_F(TextBoxes, EmptyInstallPathIsForgotten) {
    SIM_INSTALL_PATH.set("/somewhere");
    saveParameter(SIM_INSTALL_PATH);
    lf_enterTextBox(control::AllInstallPath, "");
    EXPECT_EQ(SIM_INSTALL_PATH.get(), "");
    EXPECT_EQ(stored(SIM_INSTALL_PATH), "");
    EXPECT_FALSE(exitSeconds);
}

TEST_F(TextBoxes, EveryBoxClearsTheMessageFirst) {
    for (const int id : {control::AirportHeight, control::MaxFitFl, control::AllInstallPath}) {
        showMessage("Waiting", false);
        lf_enterTextBox(id, id == control::AirportHeight ? "99999999999" : "");
        EXPECT_EQ(message(), "") << id;
    }
}

// --- text as a box counts it ---

TEST(NumberInput, CountsAndCutsAsATextBoxDoes) {
    EXPECT_EQ(codeUnits("abc"), 3U);
    EXPECT_EQ(codeUnits("\u00e4\u6771"), 2U);
    EXPECT_EQ(codeUnits("\U0001F6EC"), 2U);
    EXPECT_EQ(firstCodeUnits("a\U0001F6ECb", 2), "a");
    EXPECT_EQ(firstCodeUnits("a\U0001F6ECb", 3), "a\U0001F6EC");
    EXPECT_EQ(firstCodeUnits("\u00e4\u00f6", 1), "\u00e4");
    EXPECT_EQ(firstCodeUnits("abc", 3), "abc");
}

} // namespace
} // namespace kst
