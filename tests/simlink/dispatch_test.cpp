// What the program makes of each message of the simulator.

#include "core/display.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "core/timeofweek.h"
#include "core/workerinbox.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"
#include "simlink/simscene.h"
#include "support/thrown.h"

#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr std::string_view v5Name = "Lockheed Martin(R) Prepar3D(R) v5";

class Dispatch : public testing::Test {
protected:
    Dispatch() { scene.open(); }

    /// The kinds of request that wait for the worker.
    static std::vector<WorkerRequest> asked() {
        std::vector<WorkerRequest> requests;
        takeWorkerRequests(requests);
        return requests;
    }
    bool askedFor(WorkerRequest::Kind kind) const {
        const auto requests = asked();
        return std::any_of(requests.begin(), requests.end(), [&](const auto& r) { return r.kind == kind; });
    }
    /// Forgets that an exit was asked for, as the next run does.
    static void newRun() {
        exitRequested = false;
        exitReason = ExitReason::NotYetSet;
    }

    SimScene scene;
};

// ---- OPEN ----

TEST_F(Dispatch, TheSimulatorsNameAndVersionAreShown) {
    showMessage("Waiting for Prepar3Dv5 ...", false);
    EXPECT_TRUE(scene.tell(openMessage(v5Name)));
    EXPECT_TRUE(statusValues().simConnected);
    EXPECT_EQ(statusValues().simText, "Lockheed MartinR Prepar3DR v5 (5.3.17.28160)");
    EXPECT_TRUE(scene.logged("Lockheed MartinR Prepar3DR v5 (5.3.17.28160) connected\n"));
    EXPECT_EQ(messageLine().message, "") << "nothing is waited for any more";
}

TEST_F(Dispatch, AnotherVersionThanTheInstalledOneIsAnError) {
    struct Case {
        std::string_view name;
        std::string_view installPath;
        int version;
        bool accepted;
    };
    const Case cases[] = {
        {"Prepar3D v5", "", 5, true},
        {"Prepar3D v6", "", 5, false},
        {"Prepar3D v6", "", 6, true},
        {"Prepar3D v6", "C:\\Games\\Prepar3D v6", 5, true},
        {"Prepar3D v6", "C:\\Games\\P3DV6", 5, true},
        {"Prepar3D v5", "C:\\Games\\Prepar3D v6", 6, false},
        {"Prepar3D", "C:\\Games\\Prepar3D v5", 5, false},
    };
    for (const Case& c : cases) {
        SIM_INSTALL_PATH.set(c.installPath);
        lf_resetSimTables(c.version);
        enableControl(control::AllInstallPath, false);
        if (c.accepted) {
            EXPECT_TRUE(scene.tell(openMessage(c.name))) << c.name << c.installPath;
            continue;
        }
        EXPECT_EQ(thrown<UserErrorException>([&] { scene.tell(openMessage(c.name)); }),
                  "78: wrong P3D version \"" + std::string(c.name) + " (5.3.17.28160)\" connects ... ?");
        EXPECT_TRUE(controlEnabled(control::AllInstallPath)) << "the user can correct the path";
    }
}

TEST_F(Dispatch, AnotherSimulatorIsAnError) {
    for (const std::string name : {"KittyHawk", "SunRise"}) {
        EXPECT_EQ(thrown<UserErrorException>([&] { scene.tell(openMessage(name)); }),
                  "78: " + name + ", (MSFS) not being P3D connects ... ?");
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
        {"New file loaded\n",
         RecvMessage(6).u32(0xFFFFFFFFU).u32(206).u32(0).text("a.fxml", 260).u32(0).bytes(), true},
    };
    for (const Case& c : cases) {
        newRun();
        asked();
        EXPECT_TRUE(scene.tell(c.message));
        EXPECT_TRUE(scene.logged(c.log)) << c.log;
        EXPECT_EQ(exitReason, ExitReason::Restart) << c.log;
        EXPECT_EQ(scene.exitSeconds, 30) << c.log;
        EXPECT_EQ(askedFor(WorkerRequest::Kind::StoreUserStand), c.standStored) << c.log;
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
        {19, "SIMCON EXCEP 19\n", ""},
        {23, "Simconnect Exception: load flight plan failed\n", ""},
        {24, "SIMCON EXCEP 24\n", ""},
        {7, "SIMCON EXCEP 7\n", ""},
        {4000000000U, "SIMCON EXCEP 4000000000\n", ""},
    };
    scene.knowUser();
    for (const Case& c : cases) {
        clearMessage();
        const std::string before = scene.log();
        EXPECT_TRUE(scene.tell(exceptionMessage(c.exception)));
        EXPECT_EQ(scene.log().substr(before.size()), c.log);
        EXPECT_EQ(messageLine().message, c.shown);
    }
    EXPECT_EQ(exitReason, ExitReason::NotYetSet) << "none of them ends the run";
}

TEST_F(Dispatch, AnUnrecognizedIdBeforeTheFirstPositionIsNotLogged) {
    const std::string before = scene.log();
    scene.tell(exceptionMessage(3));
    scene.tell(
        userMessage({.latitude = 0.0009, .longitude = 0.05})); // the position before a flight is loaded
    scene.tell(exceptionMessage(3));
    EXPECT_EQ(scene.log(), before);
}

TEST_F(Dispatch, AVersionMismatchIsAnError) {
    EXPECT_EQ(thrown<UserErrorException>([&] { scene.tell(exceptionMessage(5, 1, 42)); }),
              "95: Simconnect Version Mismatch, dwindex: 42 ");
}

// ---- the user ----

TEST_F(Dispatch, TheSnapshotOfTheUserIsHandedOut) {
    EXPECT_FALSE(userGroundStateKnown());
    EXPECT_EQ(userObjectId(), 2U) << "until the first snapshot";
    scene.tell(userMessage({.latitude = 47.1, .longitude = 8.2, .altitudeFt = -12.0, .objectId = 5}));
    UserData user;
    lf_requestUserPosition(user);
    EXPECT_EQ(user.position(), (LatLon{47.1, 8.2}));
    EXPECT_EQ(user.pitch, 0.01);
    EXPECT_EQ(user.bank, 0.02);
    EXPECT_EQ(user.heading, 1.5);
    EXPECT_EQ(user.altitudeFt, 0.0) << "not below the sea";
    EXPECT_EQ(user.heightAglFt, 12.0);
    EXPECT_EQ(user.groundSpeedKt, 3.5);
    EXPECT_EQ(user.zuluSeconds, 36000.0);
    EXPECT_EQ(user.zuluDayOfYear, 64.0);
    EXPECT_EQ(user.zuluYear, 2024.0);
    EXPECT_EQ(user.lightStates, 17.0);
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
        bool known;
    };
    const Case cases[] = {
        {false, 1, false, false}, {true, 1, true, true}, {true, 0, false, true}, {true, -1, true, true}};
    for (const Case& c : cases) {
        if (c.positionKnown) {
            scene.knowUser();
        }
        tickDue = false;
        scene.tell(dataMessage(108, 1).i64(c.value).bytes());
        EXPECT_TRUE(tickDue) << "in every case";
        EXPECT_EQ(userOnGround, c.onGround);
        EXPECT_EQ(userGroundKnown, c.known);
        EXPECT_EQ(userGroundStateKnown(), c.known);
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
    const Case cases[] = {
        {2024, 60, 36000, 1709200800},  // 29 February 2024 10:00
        {2024, 366, 86399, 1735689599}, // the last second of the year
    };
    scene.tell(userMessage({}));
    EXPECT_EQ(simEpochSeconds, 0) << "only while time following is on";
    timeFollowing = true;
    for (const Case& c : cases) {
        scene.tell(userMessage({.zuluSeconds = c.seconds, .zuluDay = c.day, .zuluYear = c.year}));
        EXPECT_EQ(simEpochSeconds, c.epoch) << c.year << " day " << c.day;
    }
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    for (const auto& [year, day, seconds] : {std::array{most, std::int64_t{1}, std::int64_t{0}},
                                             std::array{std::int64_t{2024}, most, std::int64_t{0}},
                                             std::array{std::int64_t{2024}, std::int64_t{1}, -most}}) {
        scene.tell(userMessage({.zuluSeconds = seconds, .zuluDay = day, .zuluYear = year}));
        EXPECT_EQ(simEpochSeconds, 1735689599) << "no time that can be is not taken";
    }
}

TEST_F(Dispatch, APositionThatCannotBeIsNotTaken) {
    scene.knowUser();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const UserAnswer& answer :
         {UserAnswer{.latitude = nan}, UserAnswer{.longitude = nan}, UserAnswer{.latitude = 91.0},
          UserAnswer{.longitude = -1e300}, UserAnswer{.altitudeFt = nan}}) {
        scene.tell(userMessage(answer));
        UserData user;
        lf_requestUserPosition(user);
        EXPECT_EQ(user.position(), (LatLon{47.458, 8.548}));
        EXPECT_EQ(user.altitudeFt, 1400.0);
    }
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
}

// ---- objects ----

TEST_F(Dispatch, ARemovedAircraftIsReportedAndOtherObjectsAreNot) {
    scene.tell(addRemoveMessage(203, 77));
    scene.tell(addRemoveMessage(203, 78, 5)); // a ground vehicle
    const auto answers = scene.answers();
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].kind, SimCommand::Kind::Removed);
    EXPECT_EQ(answers[0].objectId, 77U);
}

TEST_F(Dispatch, SizesAreReported) {
    scene.tell(dataMessage(102, 77).f64(9.5).f64(-0.02).bytes());
    const auto answers = scene.answers();
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].kind, SimCommand::Kind::Sizes);
    EXPECT_EQ(answers[0].objectId, 77U);
    EXPECT_EQ(answers[0].value1, 9.5);
    EXPECT_EQ(answers[0].value2, -0.02);
}

TEST_F(Dispatch, AScanReportsHeightsBelow2500Feet) {
    struct Case {
        std::string_view name;
        std::uint32_t objectId;
        double height;
        std::string_view atcId;
        bool reported;
    };
    const Case cases[] = {
        {"low", 77, 100.0, "SWR1", true},
        {"at the ceiling", 77, 2500.0, "SWR1", true},
        {"above", 77, 2500.5, "SWR1", false},
        {"static", 77, 0.0, "SWR1*", false},
        {"no tail number", 77, 100.0, "", true},
        {"the user", 1, 100.0, "SWR1", false},
        {"no number", 77, std::nan(""), "SWR1", false},
    };
    scene.knowUser();
    for (const Case& c : cases) {
        scene.tell(scanMessage(c.objectId, c.height, 1400.0, true, c.atcId));
        const auto answers = scene.answers();
        ASSERT_EQ(answers.size(), c.reported ? 1U : 0U) << c.name;
        if (c.reported) {
            EXPECT_EQ(answers[0].kind, SimCommand::Kind::HeightReport);
            EXPECT_EQ(answers[0].id, 1U);
            EXPECT_EQ(answers[0].value1, 1400.0);
            EXPECT_EQ(answers[0].value2, c.height);
        }
    }
}

TEST_F(Dispatch, BeforeTheFirstSnapshotTheUsersOwnAircraftIsAKnownObject) {
    scene.tell(addRemoveMessage(202, 2)); // not above the id that stands for the user until then
    scene.tell(scanMessage(3, 0.0, 1400.0, true, "N172SP"));
    const auto answers = scene.answers();
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].kind, SimCommand::Kind::HeightReport);
    EXPECT_EQ(messageLine().message, "");
}

TEST_F(Dispatch, AScanIsOnlyTakenForItsOwnRequest) {
    scene.tell(dataMessage(99, 77, 9).f64(0).f64(0).i64(1).text("SWR1", 32).bytes());
    EXPECT_TRUE(scene.answers().empty());
}

// ---- messages that are not what they should be ----

TEST_F(Dispatch, AMessageShorterThanItsLayoutIsLoggedAndIgnored) {
    scene.knowUser();
    struct Case {
        std::string_view name;
        Packet message;
        std::size_t shortest; ///< that is taken
    };
    const Case cases[] = {
        {"exception", exceptionMessage(7), 24},
        {"open", openMessage(v5Name), 308},
        {"event", eventMessage(205, 0), 24},
        {"add remove", addRemoveMessage(203, 9), 28},
        {"filename", RecvMessage(6).u32(0).u32(206).u32(0).text("a", 260).u32(0).bytes(), 288},
        {"frame", frameMessage(60.0F), 32},
        {"sizes", dataMessage(102, 9).f64(9.0).f64(0.0).bytes(), 56},
        {"model", dataMessage(107, 1).text("A320", 32).bytes(), 72},
        {"on ground", dataMessage(108, 1).i64(1).bytes(), 48},
        {"user", userMessage({.latitude = 10.0}), 136},
        {"scan", scanMessage(9, 10.0, 0.0, true, "X"), 96},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(c.message.size(), c.shortest) << c.name;
        for (std::size_t size = 12; size < c.message.size(); ++size) {
            Packet cut(c.message.begin(), c.message.begin() + static_cast<std::ptrdiff_t>(size));
            cut[0] = static_cast<std::byte>(size & 0xFF);
            cut[1] = static_cast<std::byte>(size >> 8);
            scene.time.advance(std::chrono::seconds(1)); // so that the log keeps every line
            const std::size_t before = scene.log().size();
            EXPECT_TRUE(scene.tell(cut)) << c.name;
            const std::string added = scene.log().substr(before);
            const bool ignoredBefore = c.name == "scan" && size < 20; // no object id: not ours to judge
            EXPECT_TRUE(ignoredBefore ||
                        added.find(" too short, " + std::to_string(size) + " bytes") != std::string::npos)
                << c.name << " of " << size << " bytes: " << added;
        }
    }
    EXPECT_TRUE(scene.answers().empty());
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    UserData user;
    lf_requestUserPosition(user);
    EXPECT_EQ(user.latitude, 47.458);
}

TEST_F(Dispatch, AnUnknownKindIsLoggedAndTheIgnoredOnesAreNot) {
    const std::string before = scene.log();
    scene.tell(RecvMessage(12).u32(104).u32(77).bytes());
    scene.tell(dataMessage(5, 5, 16).bytes());
    EXPECT_EQ(scene.log(), before);
    scene.tell(RecvMessage(15).bytes());
    EXPECT_EQ(scene.log(), before + "! Unknown Dispatch dwID 15\n");
}

} // namespace
} // namespace kst::test
