// What a click on a check box or push button does.

#include "core/parkairport.h"
#include "window/commands.h"
#include "window/commandworld.h"
#include "window/layout.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

namespace kst {
namespace {

class Clicks : public test::CommandWorld {};

TEST_F(Clicks, EachCheckBoxTogglesItsParameterAndSavesIt) {
    for (Parameter* parameter : allParameters()) {
        auto* const flag = dynamic_cast<BoolParameter*>(parameter);
        if (flag == nullptr || flag->controlId() == control::none) {
            continue;
        }
        const bool before = *flag;
        EXPECT_TRUE(lf_HandleWMCOMMAND(flag->controlId())) << flag->name();
        EXPECT_NE(flag->get(), before) << flag->name();
        EXPECT_EQ(stored(*flag), flag->text()) << flag->name();
        EXPECT_TRUE(sink.hasShown(*flag)) << flag->name();
        EXPECT_TRUE(lf_HandleWMCOMMAND(flag->controlId())) << flag->name();
        EXPECT_EQ(flag->get(), before) << flag->name();
        EXPECT_EQ(stored(*flag), flag->text()) << flag->name();
    }
}

TEST_F(Clicks, OtherNumbersAreNotOurs) {
    for (const int id : {0, -1, 1, 100, 32768, control::MaxLive, control::AllInstallPath}) {
        EXPECT_FALSE(lf_HandleWMCOMMAND(id)) << id;
    }
}

TEST_F(Clicks, StormOfClicksEndsWhereItBegan) {
    for (int click = 0; click < 1000; ++click) {
        ASSERT_TRUE(lf_HandleWMCOMMAND(control::FlushStatic));
    }
    EXPECT_EQ(message(), "All static parked aircraft will be removed ...");
    // Each of these replaces the file and waits for the disk.
    for (int click = 0; click < 50; ++click) {
        ASSERT_TRUE(lf_HandleWMCOMMAND(control::Log));
    }
    EXPECT_TRUE(LOG.get());
    EXPECT_EQ(stored(LOG), "1");
    lf_HandleWMCOMMAND(control::Log);
    EXPECT_EQ(stored(LOG), "0");
}

TEST_F(Clicks, MessagesOfTheCheckBoxes) {
    struct Case {
        BoolParameter& parameter;
        bool newState;
        const char* message;
    };
    const std::array cases{
        Case{LIG_AUTOMATIC, false, "The liveries defined by your lfolder parameters will be scanned"},
        Case{AFG_AUTOMATIC, false, "The airports defined by your afolder parameters will be scanned"},
        Case{LIG_PRIORITIZE, true, "Liveries in lower lfolders that are already available will be skipped"},
        Case{SUPPRESS_STUB, true, "Exclude FSLTL-liveries titles ending with _STUB from scan"},
        Case{INITIAL_LOAD_ONLY, true,
             "Initial Load Only: static parked aircraft are generated once, no renewal every 20 minutes"},
        Case{COLLISION_LIVE_PARKED_GND, false,
             "Be aware, no collision avoidance with live aircraft vs parked static on the ground"},
        Case{COLLISION_USER_GND, false, "Be aware, no collision avoidance with user aircraft on the ground"},
        Case{COLLISION_USER_AIR, false, "Be aware, no collision avoidance with user aircraft in the air"},
        Case{ALWAYS_ON_TOP, true, "Kestrane_P3D's window will remain visible"},
        Case{AEROWINX, true, "Note: This mode is for Aerowinx PSX users only, please re-start Kestrane_P3D"},
        Case{GUID_CHANGES, false,
             "Be aware, no more livery updates: you miss correct data for Learn, LittleNavMap, etc.."}};
    for (const Case& each : cases) {
        each.parameter.set(!each.newState);
        lf_HandleWMCOMMAND(each.parameter.controlId());
        EXPECT_EQ(message(), each.message);
        EXPECT_FALSE(logged(each.message)) << "shown without logging";
        lf_HandleWMCOMMAND(each.parameter.controlId());
        EXPECT_EQ(message(), "") << each.message;
    }
}

TEST_F(Clicks, CheckBoxesWithoutAWordLeaveTheMessageAlone) {
    showMessage("Waiting", false);
    for (const int id :
         {control::Log, control::LightAircraft, control::Helicopters, control::HighPerfAircraft,
          control::StraightPbsOnly, control::NavLightsWhileParked, control::LearnSoft}) {
        lf_HandleWMCOMMAND(id);
        EXPECT_EQ(message(), "Waiting") << id;
    }
}

TEST_F(Clicks, StayOnTopReachesTheWindowBothWays) {
    lf_HandleWMCOMMAND(control::AlwaysOnTop);
    EXPECT_EQ(sink.alwaysOnTopApplied, 1);
    lf_HandleWMCOMMAND(control::AlwaysOnTop);
    EXPECT_EQ(sink.alwaysOnTopApplied, 2);
}

// --- scans ---

TEST_F(Clicks, ScanWaitsForTheNextStartOnceRealTrafficIsThere) {
    waitingForRealTraffic = false;
    SCAN_LIVERIES.set(false);
    SCAN_AIRPORTS.set(false);
    lf_HandleWMCOMMAND(control::ScanLiveries);
    EXPECT_EQ(message(),
              "Your liveries will be scanned at the next start of Kestrane_P3D, recommended after you "
              "have add/removed AI aircraft models/liveries");
    lf_HandleWMCOMMAND(control::ScanAirports);
    EXPECT_EQ(message(),
              "Your airports will be scanned at the next start of Kestrane_P3D, recommended after you "
              "have add/removed airports");
    EXPECT_FALSE(exitSeconds);
    lf_HandleWMCOMMAND(control::ScanAirports);
    EXPECT_EQ(message(), "");
}

TEST_F(Clicks, ScanRestartsAtOnceWhileRealTrafficIsAwaited) {
    SCAN_LIVERIES.set(false);
    lf_HandleWMCOMMAND(control::ScanLiveries);
    EXPECT_EQ(message(), "Your liveries will be scanned");
    EXPECT_TRUE(logged("Your liveries will be scanned"));
    EXPECT_EQ(exitSeconds, 2);
    EXPECT_EQ(exitReason.load(), ExitReason::RestartInstallPath);
    EXPECT_EQ(stored(SCAN_LIVERIES), "1");
}

TEST_F(Clicks, AirportScanRestartsAtOnceWhileRealTrafficIsAwaited) {
    SCAN_AIRPORTS.set(false);
    lf_HandleWMCOMMAND(control::ScanAirports);
    EXPECT_EQ(message(), "Your airports will be scanned");
    EXPECT_EQ(exitSeconds, 2);
    EXPECT_EQ(exitReason.load(), ExitReason::RestartInstallPath);
}

// --- what goes to the worker ---

TEST_F(Clicks, NavLightsAreSentByTheWorker) {
    lf_HandleWMCOMMAND(control::NavLightsWhileParked);
    const auto requests = workerRequests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::NavLights);
}

TEST_F(Clicks, AutoRangeGivesTheOperatorsRangeBack) {
    AUTO_RANGE.set(false);
    LATERAL_RANGE.set(65);
    lf_HandleWMCOMMAND(control::AutoRange);
    EXPECT_TRUE(AUTO_RANGE.get());
    EXPECT_FALSE(controlEnabled(control::LateralRange));
    EXPECT_TRUE(controlEnabled(control::AutoRangeAboveHeight));
    EXPECT_TRUE(parametersChanged);
    const auto requests = workerRequests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::AutoRange);

    // The automatic range at work.
    LATERAL_RANGE.set(10);
    workingRangeNm = 10.0;
    requestRangeM = 18520.0;
    closeAirportMode = true;

    lf_HandleWMCOMMAND(control::AutoRange);
    EXPECT_EQ(LATERAL_RANGE, 65);
    EXPECT_EQ(workingRangeNm.load(), 65.0);
    EXPECT_EQ(requestRangeM.load(), 65.0 * 1852.0);
    EXPECT_FALSE(closeAirportMode);
    EXPECT_TRUE(sink.hasShown(LATERAL_RANGE));
    EXPECT_TRUE(controlEnabled(control::LateralRange));
    EXPECT_FALSE(controlEnabled(control::AutoRangeAboveHeight));
    EXPECT_TRUE(workerRequests().empty());
}

// --- park settings ---

TEST_F(Clicks, ParkSettingWithoutAnAirportIsOnlySaved) {
    for (const int id : {control::Week, control::ParkSoft, control::ParkFake}) {
        lf_HandleWMCOMMAND(id);
    }
    EXPECT_EQ(stored(WEEK), "1");
    EXPECT_FALSE(parkRenewalDue);
    EXPECT_FALSE(parametersChanged);
    EXPECT_EQ(message(), "");
}

TEST_F(Clicks, ParkSettingTellsTheSecondsToItsRenewal) {
    loadParkAirport();
    for (const auto& [tick, words] : {std::pair(44U, "Kestrane_P3D will respond in 1 second ..."),
                                      {45U, "Kestrane_P3D will respond in 15 seconds ..."},
                                      {0U, "Kestrane_P3D will respond in 15 seconds ..."},
                                      {59U, "Kestrane_P3D will respond in 1 second ..."},
                                      {46U, "Kestrane_P3D will respond in 14 seconds ..."}}) {
        tickCount = tick;
        parkRenewalDue = false;
        lf_HandleWMCOMMAND(control::Week);
        EXPECT_EQ(message(), words) << tick;
        EXPECT_TRUE(parkRenewalDue) << tick;
        EXPECT_FALSE(logged(words)) << tick;
    }
    EXPECT_TRUE(parametersChanged);
}

TEST_F(Clicks, InitialLoadOnlyKeepsAParkSettingFromRenewing) {
    loadParkAirport();
    INITIAL_LOAD_ONLY.set(true);
    showMessage("Waiting", false);
    lf_HandleWMCOMMAND(control::ParkSoft);
    EXPECT_EQ(message(), "");
    EXPECT_FALSE(parkRenewalDue);
    EXPECT_TRUE(parametersChanged);
}

TEST_F(Clicks, LearnedSettingsAreMarkedOnlyAtAnAirport) {
    for (const int id : {control::LearnSoft, control::InitialLoadOnly}) {
        setParkAirport(std::nullopt);
        parametersChanged = false;
        lf_HandleWMCOMMAND(id);
        EXPECT_FALSE(parametersChanged) << id;
        loadParkAirport();
        lf_HandleWMCOMMAND(id);
        EXPECT_TRUE(parametersChanged) << id;
    }
}

// --- push buttons ---

TEST_F(Clicks, UnblockWithNothingBlocked) {
    EXPECT_TRUE(lf_HandleWMCOMMAND(control::Unblock));
    EXPECT_EQ(message(), "Nothing to block or unblock...");
    EXPECT_FALSE(blockCallsignDue);
}

TEST_F(Clicks, UnblockLetsTheCallsignIn) {
    lf_setBlockCallsign("SWR12A");
    blockCallsignDue = false;
    lf_HandleWMCOMMAND(control::Unblock);
    EXPECT_EQ(message(), "no more blocking of live aircraft \"SWR12A\"");
    EXPECT_TRUE(logged("no more blocking of live aircraft \"SWR12A\""));
    EXPECT_EQ(BLOCK_CALLSIGN.get(), "");
    EXPECT_EQ(stored(BLOCK_CALLSIGN), "");
    EXPECT_EQ(sink.blanked, std::vector<const Parameter*>{&BLOCK_CALLSIGN});
    EXPECT_FALSE(controlEnabled(control::Unblock));
    EXPECT_TRUE(blockCallsignDue);
}

TEST_F(Clicks, ReReadLocksItsControlsUntilServed) {
    enableControl(control::ReRead, true);
    enableControl(control::Destination, true);
    EXPECT_TRUE(lf_HandleWMCOMMAND(control::ReRead));
    EXPECT_TRUE(reReadParkDue);
    EXPECT_FALSE(controlEnabled(control::ReRead));
    EXPECT_FALSE(controlEnabled(control::Destination));
}

TEST_F(Clicks, FlushStaticLocksItself) {
    enableControl(control::FlushStatic, true);
    EXPECT_TRUE(lf_HandleWMCOMMAND(control::FlushStatic));
    EXPECT_EQ(message(), "All static parked aircraft will be removed ...");
    EXPECT_TRUE(flushStaticDue);
    EXPECT_FALSE(controlEnabled(control::FlushStatic));
}

TEST_F(Clicks, ErrorStandsWhateverIsClicked) {
    showError("No P3D install path detected");
    lf_HandleWMCOMMAND(control::FlushStatic);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(messageLine().error, "No P3D install path detected");
    EXPECT_TRUE(flushStaticDue);
}

TEST_F(Clicks, ParametersThatCannotBeSavedStillHold) {
    std::filesystem::remove_all(parametersFolder());
    folder.write(std::filesystem::relative(parametersFolder(), folder.path()),
                 "a file in the folder's place");
    EXPECT_TRUE(lf_HandleWMCOMMAND(control::Week));
    EXPECT_TRUE(WEEK.get());
    EXPECT_TRUE(logged("saving xml did not work?"));
}

} // namespace
} // namespace kst
