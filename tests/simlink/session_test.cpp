// The life of a session: what is declared, how it ends, and requests that fail.

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/workerinbox.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"
#include "simlink/simscene.h"
#include "support/userregistry.h"
#include "tests/simulator/vocabulary.h"

#include <algorithm>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

std::uint64_t waitingRequests(WorkerRequest::Kind kind) {
    std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
    return static_cast<std::uint64_t>(
        std::count_if(requests.begin(), requests.end(), [&](const auto& r) { return r.kind == kind; }));
}

TEST(SessionSetup, DeclaresEventsAndDataInOrder) {
    SimScene scene;
    scene.open(true);
    ASSERT_FALSE(scene.sent.empty());
    EXPECT_EQ(operationOf(scene.sent.front()), 0x01U);
    std::vector<std::string> declared;
    for (std::size_t i = 1; i < scene.sent.size(); ++i) {
        const Packet& packet = scene.sent[i];
        const std::uint32_t operation = operationOf(packet);
        const std::uint32_t id = fieldOf(packet, 16);
        if (operation == 0x0C) {
            declared.push_back(fmt::format("{} {} {}|{}|{}", operation, id, textOf(packet, 20),
                                           textOf(packet, 276), fieldOf(packet, 532)));
            EXPECT_EQ(fieldOf(packet, 536), 0U) << "epsilon";
            EXPECT_EQ(fieldOf(packet, 540), 0xFFFFFFFFU) << "datum id";
        } else if (operation == 0x07) {
            declared.push_back(fmt::format("{} {} {}", operation, id, fieldOf(packet, 20)));
            EXPECT_EQ(fieldOf(packet, 24), 1U) << "maskable";
        } else if (operation == 0x09) {
            declared.push_back(fmt::format("{} {} {}", operation, id, fieldOf(packet, 20)));
        } else {
            declared.push_back(fmt::format("{} {} {}||0", operation, id, textOf(packet, 20)));
        }
    }
    std::vector<std::string> expected;
    for (const Declaration& each : vocabulary) {
        expected.push_back(
            fmt::format("{} {} {}|{}|{}", each.operation, each.id, each.name, each.unit, each.type));
    }
    for (const std::uint32_t event : groupEvents) {
        expected.push_back(fmt::format("{} 301 {}", 0x07, event));
    }
    expected.push_back(fmt::format("{} 301 1", 0x09)); // the highest priority
    EXPECT_EQ(declared, expected);
}

TEST(SessionEnd, QuitAndABrokenConnectionEndItInTheSameWay) {
    for (const bool quits : {true, false}) {
        SimScene scene;
        scene.open();
        scene.tell(openMessage("Prepar3D v5"));
        scene.tell(eventMessage(201, 1));
        ASSERT_TRUE(simRunning);
        EXPECT_TRUE(simSessionStands());
        scene.sent.clear();
        if (quits) {
            EXPECT_FALSE(scene.tell(RecvMessage(3).bytes()));
        } else {
            scene.connection.transport()->breakConnection();
            EXPECT_FALSE(lf_pumpSimMessages());
        }
        EXPECT_FALSE(simRunning);
        EXPECT_FALSE(simSessionStands());
        EXPECT_FALSE(statusValues().simConnected);
        EXPECT_FALSE(statusValues().simRunningShown);
        EXPECT_EQ(exitReason, ExitReason::SimClosed);
        EXPECT_EQ(scene.exitSeconds, 0);
        EXPECT_TRUE(scene.logged(timeOfDay() +
                                 " Flight Simulator no longer connected, Kestrane_P3D will stop ...\n"));
        EXPECT_FALSE(scene.logged("SimConnect close failed!"));
        if (quits) {
            std::vector<std::uint32_t> cleared;
            for (const Packet& packet : scene.sentOf(0x0D)) {
                cleared.push_back(fieldOf(packet, 16));
            }
            EXPECT_EQ(cleared, (std::vector<std::uint32_t>{407, 408, 409, 402, 403, 401, 404, 405}));
            EXPECT_EQ(scene.sentOf(0x18).size(), 6U);
        }
        const std::string before = scene.log();
        EXPECT_FALSE(lf_pumpSimMessages()) << "and it ends once";
        EXPECT_EQ(scene.log(), before);
    }
}

TEST(SessionEnd, DuringAnExitNoFurtherOneIsAskedFor) {
    SimScene scene;
    scene.open();
    gf_requestExit(ExitReason::UserClosed, 0);
    EXPECT_FALSE(scene.tell(RecvMessage(3).bytes()));
    EXPECT_EQ(exitReason, ExitReason::UserClosed);
    EXPECT_FALSE(scene.logged("no longer connected"));
}

TEST(SessionEnd, WhatArrivedBeforeTheEndIsStillApplied) {
    SimScene scene;
    scene.open();
    scene.say(addRemoveMessage(203, 77));
    scene.connection.transport()->breakConnection();
    EXPECT_FALSE(lf_pumpSimMessages());
    EXPECT_EQ(scene.answers().size(), 1U);
}

TEST(SessionEnd, RequestsOnAConnectionThatIsGoneAreNoErrors) {
    SimScene scene;
    scene.open();
    scene.connection.transport()->breakConnection();
    UserData user;
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(lf_requestUserOnGround());
        lf_requestUserInfo();
        lf_requestUserPosition(user);
        lf_requestAircraftInRange(1000.0);
        lf_requestSizes(77);
        lf_queueEvent({77, 220, 1});
        lf_createFromQueue({{}, "SWR1", "Title", 20001});
        lf_queueRemoval(77);
        lf_onFrame();
    }
    EXPECT_FALSE(latchedSimError);
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    EXPECT_FALSE(scene.logged("fail"));
    EXPECT_EQ(messageLine().message, "");
}

TEST(SessionRequests, AreWhatTheSimulatorExpects) {
    SimScene scene;
    scene.open();
    UserData user;
    EXPECT_TRUE(lf_requestUserOnGround());
    lf_requestUserInfo();
    lf_requestUserPosition(user);
    lf_requestAircraftInRange(74080.9);
    lf_requestSizes(77);
    std::vector<std::vector<std::uint32_t>> fields;
    for (const Packet& packet : scene.sent) {
        fields.push_back({operationOf(packet), fieldOf(packet, 16), fieldOf(packet, 20), fieldOf(packet, 24),
                          fieldOf(packet, 28)});
    }
    const std::vector<std::vector<std::uint32_t>> expected = {
        {0x0E, 108, 409, 0, 4}, {0x0E, 106, 407, 0, 1},     {0x0E, 107, 408, 0, 1},
        {0x0E, 109, 403, 0, 1}, {0x0F, 101, 404, 74080, 2}, {0x0E, 102, 405, 77, 1},
    };
    EXPECT_EQ(fields, expected);
}

TEST(SessionRequests, TheThirdErrorLatchesAndRestarts) {
    SimScene scene;
    scene.open();
    lf_simRequestError();
    lf_simRequestError();
    EXPECT_FALSE(latchedSimError);
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    lf_simRequestError();
    EXPECT_TRUE(latchedSimError);
    EXPECT_EQ(exitReason, ExitReason::Restart);
    EXPECT_EQ(scene.exitSeconds, 10);
    EXPECT_EQ(messageLine().message, "SimConnect request error 3, see Log.txt");

    scene.sent.clear();
    UserData user;
    lf_requestUserPosition(user);
    lf_requestAircraftInRange(1000.0);
    EXPECT_TRUE(scene.sent.empty()) << "no further requests";
    resetSimSession();
    lf_resetSimTables(5);
    EXPECT_FALSE(latchedSimError);
    lf_simRequestError();
    EXPECT_FALSE(latchedSimError) << "the next run counts anew";
}

TEST(SessionVersion, IsThatOfTheInstallPathElseOfTheParameter) {
    SimScene scene;
    struct Case {
        std::string_view path;
        int parameter;
        std::string_view digit;
    };
    const Case cases[] = {
        {"C:\\P3D v5", 6, "5"}, {"C:\\P3DV5", 6, "5"}, {"D:\\v6", 5, "6"},  {"D:\\V6", 5, "6"},
        {"D:\\v6\\v5", 6, "5"}, {"", 6, "6"},          {"C:\\Sim", 5, "5"},
    };
    for (const Case& c : cases) {
        SIM_INSTALL_PATH.set(c.path);
        P3D_VERSION.set(c.parameter);
        EXPECT_EQ(gf_simVersionDigit(), c.digit) << c.path;
    }
}

TEST(SessionVersion, InstalledOnesAreReadFromTheRegistry) {
    SimScene scene;
    writeRegistry(scene.folder, "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v6]\n"
                                "SetupPath=D:\\Prepar3D v6\\\n");
    EXPECT_FALSE(lf_simInstalled(5));
    EXPECT_TRUE(lf_simInstalled(6));
    EXPECT_EQ(lf_simInstallPath(5), "");
    EXPECT_EQ(lf_simInstallPath(6), "D:\\Prepar3D v6\\");
}

// ---- the thread ----

TEST(SimClient, WaitsForTheSimulatorAndLeavesAtOnceWhenStopped) {
    SimScene scene;
    scene.connection.refuse(true);
    setTimeSource(nullptr); // the wait is a real one
    P3D_VERSION.set(6);
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    while (messageLine().message.empty()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(messageLine().message, "Waiting for Prepar3Dv6 ...");
    client.request_stop();
    client.join();
    EXPECT_EQ(waitingRequests(WorkerRequest::Kind::StoreUserStand), 1U) << "on leaving by any route";
    setTimeSource(&scene.time);
}

TEST(SimClient, AStopLeavesTheSessionOpenAndTheNextReplacesIt) {
    SimScene scene;
    setTimeSource(nullptr);
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    while (!simSessionStands()) {
        std::this_thread::yield();
    }
    client.request_stop();
    client.join();
    setTimeSource(&scene.time);
    EXPECT_TRUE(simSessionStands());
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    const std::shared_ptr<SimTransport> left = scene.connection.transport()->shared_from_this();
    scene.open();
    EXPECT_EQ(left->state(), SimTransport::State::Closed) << "the simulator sees the old session end";
    EXPECT_TRUE(simSessionStands());
}

TEST(SimClient, EndsTheRunWhenTheSimulatorQuits) {
    SimScene scene;
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    while (!simSessionStands()) {
        std::this_thread::yield();
    }
    scene.say(RecvMessage(3).bytes());
    client.join(); // by itself
    EXPECT_EQ(exitReason, ExitReason::SimClosed);
}

TEST(SimClient, AnErrorOfTheUserStandsAndEndsNothing) {
    SimScene scene;
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    while (!simSessionStands()) {
        std::this_thread::yield();
    }
    scene.say(openMessage("KittyHawk"));
    client.join(); // by itself
    EXPECT_EQ(messageLine().error, "78: KittyHawk, (MSFS) not being P3D connects ... ?");
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    EXPECT_TRUE(simSessionStands());
}

} // namespace
} // namespace kst::test
