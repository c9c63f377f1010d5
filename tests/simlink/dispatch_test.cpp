// What the program makes of each message of the simulator.

#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "core/workerinbox.h"
#include "simlink/session.h"
#include "simlink/simscene.h"
#include "support/thrown.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class Dispatch : public testing::Test {
protected:
    Dispatch() { scene.open(); }

    static std::vector<WorkerRequest> asked() {
        std::vector<WorkerRequest> requests;
        takeWorkerRequests(requests);
        return requests;
    }
    /// Forgets that an exit was asked for, as the next run does.
    static void newRun() {
        exitRequested = false;
        exitReason = ExitReason::NotYetSet;
    }
    static UserData user() {
        UserData data;
        lf_requestUserPosition(data);
        return data;
    }

    SimScene scene;
};

// ---- OPEN ----

TEST_F(Dispatch, TheSimulatorsNameAndVersionAreShown) {
    showMessage("Waiting for Prepar3Dv5 ...", false);
    EXPECT_TRUE(scene.tell(openMessage("Lockheed Martin(R) Prepar3D(R) v5")));
    EXPECT_TRUE(statusValues().simConnected);
    EXPECT_EQ(statusValues().simText, "Lockheed MartinR Prepar3DR v5 (5.3.17.28160)");
    EXPECT_TRUE(scene.logged("Lockheed MartinR Prepar3DR v5 (5.3.17.28160) connected\n"));
    EXPECT_EQ(messageLine().message, "") << "nothing is waited for any more";
}

TEST_F(Dispatch, AnotherSimulatorThanTheInstalledOneIsAnError) {
    struct Case {
        std::string_view name;
        std::string_view installPath;
        int version;
        std::string_view error;
    };
    constexpr std::string_view none = "nothing was thrown";
    const Case cases[] = {
        {"Prepar3D v5", "", 5, none},
        {"Prepar3D v6", "", 5, "78: wrong P3D version \"Prepar3D v6 (5.3.17.28160)\" connects ... ?"},
        {"Prepar3D v6", "", 6, none},
        {"Prepar3D v6", "C:\\Games\\Prepar3D v6", 5, none},
        {"Prepar3D v6", "C:\\Games\\P3DV6", 5, none},
        {"Prepar3D v5", "C:\\Prepar3D v6", 6,
         "78: wrong P3D version \"Prepar3D v5 (5.3.17.28160)\" connects ... ?"},
        {"Prepar3D", "C:\\Prepar3D v5", 5,
         "78: wrong P3D version \"Prepar3D (5.3.17.28160)\" connects ... ?"},
        {"KittyHawk", "", 5, "78: KittyHawk, (MSFS) not being P3D connects ... ?"},
        {"SunRise", "", 5, "78: SunRise, (MSFS) not being P3D connects ... ?"},
    };
    for (const Case& c : cases) {
        SIM_INSTALL_PATH.set(c.installPath);
        lf_resetSimTables(c.version);
        enableControl(control::AllInstallPath, false);
        EXPECT_EQ(thrown<UserErrorException>([&] { scene.tell(openMessage(c.name)); }), c.error);
        EXPECT_EQ(controlEnabled(control::AllInstallPath), c.error.starts_with("78: wrong"))
            << c.name << ": the user can correct the path";
    }
}

TEST_F(Dispatch, AnEmptyNameIsLoggedAndNothingElse) {
    EXPECT_TRUE(scene.tell(openMessage("")));
    EXPECT_TRUE(scene.logged("! Simulator name empty?\n"));
    EXPECT_FALSE(statusValues().simConnected);
}

// ---- events ----

TEST_F(Dispatch, TheSimEventSaysWhetherAFlightRuns) {
    for (const std::uint32_t data : {1U, 0U, 1U, 2U}) {
        EXPECT_TRUE(scene.tell(eventMessage(201, data)));
        EXPECT_EQ(simRunning, data == 1);
        EXPECT_EQ(statusValues().simRunningShown, data == 1);
    }
}

TEST_F(Dispatch, EverythingThatChangesTheWorldRestartsTheRun) {
    struct Case {
        std::string_view log;
        Packet message;
        bool standStored;
    };
    const Case cases[] = {
        {"User ac position changed\n", eventMessage(205, 0), false},
        {"Flight loaded\n", eventMessage(206, 0), true},
        {"New file loaded\n", fileMessage(), true},
    };
    for (const Case& c : cases) {
        newRun();
        EXPECT_TRUE(scene.tell(c.message));
        EXPECT_TRUE(scene.logged(c.log)) << c.log;
        EXPECT_EQ(exitReason, ExitReason::Restart) << c.log;
        EXPECT_EQ(scene.exitSeconds, 30) << c.log;
        const auto requests = asked();
        ASSERT_EQ(requests.size(), c.standStored ? 1U : 0U) << c.log;
        EXPECT_TRUE(!c.standStored || requests[0].kind == WorkerRequest::Kind::StoreUserStand);
    }
}

TEST_F(Dispatch, TheFrameRateIsTakenEveryThirtyFrames) {
    for (int frame = 1; frame <= 60; ++frame) {
        scene.tell(frameMessage(static_cast<float>(frame)));
        EXPECT_EQ(simFrameRate(), frame < 30 ? 0.0F : frame < 60 ? 30.0F : 60.0F) << frame;
    }
}

// ---- exceptions ----

TEST_F(Dispatch, ExceptionsAreReportedAsTheTableSays) {
    struct Case {
        std::uint32_t exception;
        std::string_view log;
        std::string_view shown;
    };
    const Case cases[] = {
        {3, "SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID\n", ""},
        {11, "SimConnect: too many objects (max 1000)\n", "SimConnect: too many objects (max 1000)"},
        {23, "Simconnect Exception: load flight plan failed\n", ""},
        {24, "SIMCON EXCEP 24\n", ""},
        {4000000000U, "SIMCON EXCEP 4000000000\n", ""},
    };
    scene.tell(userMessage());
    for (const Case& c : cases) {
        clearMessage();
        const std::string before = scene.log();
        EXPECT_TRUE(scene.tell(exceptionMessage(c.exception)));
        EXPECT_EQ(scene.log().substr(before.size()), c.log);
        EXPECT_EQ(messageLine().message, c.shown);
    }
    EXPECT_EQ(exitReason, ExitReason::NotYetSet) << "none of them ends the run";
    EXPECT_EQ(thrown<UserErrorException>([&] { scene.tell(exceptionMessage(5, 1, 42)); }),
              "95: Simconnect Version Mismatch, dwindex: 42 ");
}

TEST_F(Dispatch, AnUnrecognizedIdBeforeTheFirstPositionIsNotLogged) {
    const std::string before = scene.log();
    scene.tell(exceptionMessage(3));
    scene.tell(userMessage({.latitude = 0.0009, .longitude = 0.05})); // before a flight is loaded
    scene.tell(exceptionMessage(3));
    EXPECT_EQ(scene.log(), before);
}

// ---- the user ----

TEST_F(Dispatch, TheSnapshotOfTheUserIsHandedOut) {
    EXPECT_FALSE(userGroundStateKnown());
    EXPECT_EQ(userObjectId(), 2U) << "until the first snapshot";
    scene.tell(userMessage({.latitude = 47.1, .longitude = 8.2, .altitudeFt = -12.0, .objectId = 5}));
    const UserData u = user();
    EXPECT_EQ((std::vector{u.latitude, u.longitude, u.pitch, u.bank, u.heading, u.altitudeFt, u.heightAglFt,
                           u.groundSpeedKt, u.zuluSeconds, u.zuluDayOfYear, u.zuluYear, u.lightStates}),
              (std::vector{47.1, 8.2, 0.01, 0.02, 1.5, 0.0, 12.0, 3.5, 36000.0, 64.0, 2024.0, 17.0}))
        << "the altitude not below the sea";
    EXPECT_EQ(userObjectId(), 5U);
    const auto requests = asked();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::UserMoved) << "the worker looks for the stand";
    EXPECT_EQ(requests[0].position, (LatLon{47.1, 8.2}));
}

TEST_F(Dispatch, AnOnGroundAnswerIsTheHeartbeat) {
    struct Case {
        bool positionKnown;
        std::int64_t value;
        bool onGround;
    };
    for (const Case& c :
         {Case{false, 1, false}, Case{true, 1, true}, Case{true, 0, false}, Case{true, -1, true}}) {
        if (c.positionKnown) {
            scene.tell(userMessage());
        }
        tickDue = false;
        scene.tell(dataMessage(108, 1).i64(c.value).bytes());
        EXPECT_TRUE(tickDue) << "in every case";
        EXPECT_EQ(userOnGround, c.onGround);
        EXPECT_EQ(userGroundStateKnown(), c.positionKnown);
    }
}

TEST_F(Dispatch, AJumpOfTenMilesIsATeleport) {
    struct Case {
        std::string_view name;
        LatLon from;
        LatLon to;
        bool teleport;
    };
    const Case cases[] = {
        {"100 ft", {47.0, 8.0}, {47.0 + 100.0 / 6076.11549 / 60.0, 8.0}, false},
        {"9.9 nm", {47.0, 8.0}, {47.0 + 9.9 / 60.0, 8.0}, false},
        {"11 nm", {47.0, 8.0}, {47.0 + 11.0 / 60.0, 8.0}, true},
        {"from the unknown position", {0.0, 0.0}, {47.0, 8.0}, false},
        {"over the date line", {10.0, 179.99}, {10.0, -179.99}, false},
    };
    for (const Case& c : cases) {
        newRun();
        resetSimSession();
        scene.open();
        scene.tell(userMessage({.latitude = c.from.lat, .longitude = c.from.lon}));
        EXPECT_EQ(exitReason, ExitReason::NotYetSet) << c.name;
        scene.tell(userMessage({.latitude = c.to.lat, .longitude = c.to.lon}));
        EXPECT_EQ(exitReason == ExitReason::Restart, c.teleport) << c.name;
    }
    EXPECT_TRUE(scene.logged("Teleport\n"));
    EXPECT_EQ(scene.exitSeconds, 30);
}

TEST_F(Dispatch, TheSimulatorsTimeIsTakenWhileTrafficFollowsIt) {
    struct Case {
        std::int64_t year, day, seconds;
        std::int64_t epoch;
    };
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const Case cases[] = {
        {2024, 59, 36000, 1709114400},  {2024, 60, 36000, 1709200800}, // 29 February
        {2024, 366, 86399, 1735689599}, {most, 1, 0, 1735689599},      // no time that can be is not taken
        {2024, most, 0, 1735689599},    {2024, 1, -most, 1735689599},
    };
    scene.tell(userMessage());
    EXPECT_EQ(simEpochSeconds, 0) << "only while time following is on";
    timeFollowing = true;
    for (const Case& c : cases) {
        scene.tell(userMessage({.zuluSeconds = c.seconds, .zuluDay = c.day, .zuluYear = c.year}));
        EXPECT_EQ(simEpochSeconds, c.epoch) << c.year << " day " << c.day;
    }
}

TEST_F(Dispatch, APositionThatCannotBeIsNotTaken) {
    scene.tell(userMessage());
    for (const UserAnswer& answer :
         {UserAnswer{.latitude = nan}, UserAnswer{.longitude = nan}, UserAnswer{.latitude = 91.0},
          UserAnswer{.longitude = -1e300}, UserAnswer{.altitudeFt = nan}}) {
        scene.tell(userMessage(answer));
        EXPECT_EQ(user().position(), (LatLon{47.458, 8.548}));
        EXPECT_EQ(user().altitudeFt, 1400.0);
    }
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
}

// ---- objects ----

TEST_F(Dispatch, RemovedAircraftAndSizesAreReported) {
    scene.tell(addRemoveMessage(203, 77));
    scene.tell(addRemoveMessage(203, 78, 5)); // a ground vehicle
    scene.tell(dataMessage(102, 77).f64(9.5).f64(-0.02).bytes());
    EXPECT_EQ(scene.answers(), (Texts{"Removed 77 0 0 0 0", "Sizes 77 0 0 9.5 -0.02"}));
}

TEST_F(Dispatch, AScanReportsHeightsBelow2500Feet) {
    struct Case {
        std::string_view name;
        Packet message;
        Texts answers;
    };
    const Case cases[] = {
        {"low", scanMessage(77, 100.0, "SWR1"), {"HeightReport 77 1 0 1400.6 100"}},
        {"in the air", scanMessage(77, 100.0, "SWR1", false), {"HeightReport 77 0 0 1400.6 100"}},
        {"at the ceiling", scanMessage(77, 2500.0, "SWR1"), {"HeightReport 77 1 0 1400.6 2500"}},
        {"above", scanMessage(77, 2500.5, "SWR1"), {}},
        {"static", scanMessage(77, 0.0, "SWR1*"), {}},
        {"no tail number", scanMessage(77, 100.0, ""), {"HeightReport 77 1 0 1400.6 100"}},
        {"the user", scanMessage(1, 100.0, "SWR1"), {}},
        {"no number", scanMessage(77, nan, "SWR1"), {}},
        {"another request", dataMessage(99, 77, 9).f64(0).f64(0).i64(1).text("SWR1", 32).bytes(), {}},
    };
    scene.tell(userMessage());
    for (const Case& c : cases) {
        scene.tell(c.message);
        EXPECT_EQ(scene.answers(), c.answers) << c.name;
    }
}

TEST_F(Dispatch, BeforeTheFirstSnapshotTheUsersOwnAircraftIsAKnownObject) {
    scene.tell(addRemoveMessage(202, 2)); // not above the id that stands for the user until then
    scene.tell(scanMessage(3, 0.0, "N172SP"));
    EXPECT_EQ(scene.answers(), Texts{"HeightReport 3 1 0 1400.6 0"});
    EXPECT_EQ(messageLine().message, "");
}

// ---- messages that are not what they should be ----

TEST_F(Dispatch, AMessageShorterThanItsLayoutIsLoggedAndIgnored) {
    scene.tell(userMessage());
    const Packet shortest[] = {exceptionMessage(7),
                               openMessage("Prepar3D v5"),
                               eventMessage(205, 0),
                               addRemoveMessage(203, 9),
                               fileMessage(),
                               frameMessage(60.0F),
                               dataMessage(102, 9).f64(9.0).f64(0.0).bytes(),
                               dataMessage(107, 1).text("A320", 32).bytes(),
                               dataMessage(108, 1).i64(1).bytes(),
                               userMessage({.latitude = 10.0}),
                               scanMessage(9, 10.0, "X")};
    for (const Packet& message : shortest) {
        const std::uint32_t kind = fieldOf(message, 8);
        constexpr std::uint32_t scan = 9; // without its object id it is not ours to judge
        for (std::size_t size = kind == scan ? 20 : 12; size < message.size(); ++size) {
            Packet cut(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
            cut[0] = static_cast<std::byte>(size & 0xFF);
            cut[1] = static_cast<std::byte>(size >> 8);
            scene.time.advance(std::chrono::seconds(1)); // so that the log keeps every line
            const std::size_t before = scene.log().size();
            EXPECT_TRUE(scene.tell(cut)) << kind;
            EXPECT_NE(scene.log().find(" too short, " + std::to_string(size) + " bytes", before),
                      std::string::npos)
                << "kind " << kind << " of " << size << " bytes";
        }
    }
    EXPECT_EQ(scene.answers(), Texts{});
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    EXPECT_EQ(user().latitude, 47.458);
}

TEST_F(Dispatch, AnUnknownKindIsLoggedAndTheIgnoredOnesAreNot) {
    const std::string before = scene.log();
    scene.tell(recvMessage(12).u32(104).u32(77).bytes());
    scene.tell(dataMessage(5, 5, 16).bytes());
    scene.tell(recvMessage(15).bytes());
    EXPECT_EQ(scene.log(), before + "! Unknown Dispatch dwID 15\n");
}

} // namespace
} // namespace kst::test
