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

#include <gtest/gtest.h>

namespace kst::test {
namespace {

TEST(SessionSetup, DeclaresEventsAndDataInOrder) {
    SimScene scene;
    scene.open(true);
    std::vector<Packet> expected;
    const auto expect = [&](std::uint32_t operation, PacketFields body) {
        const auto sendId = static_cast<std::uint32_t>(expected.size()) + 2;
        expected.push_back(PacketFields{0, 35, 0xF0000000U + operation, sendId}.append(body).bytes());
    };
    for (const Declaration& each : vocabulary) {
        PacketFields body{each.id};
        body.text(each.name, 256);
        if (each.operation == 0x0C) {
            body.text(each.unit, 256).u32(each.type).u32(0).u32(0xFFFFFFFFU);
        }
        expect(each.operation, body);
    }
    for (const std::uint32_t event : groupEvents) {
        expect(0x07, {301, event, 1});
    }
    expect(0x09, {301, 1}); // the highest priority
    ASSERT_EQ(scene.sent.size(), expected.size() + 1);
    EXPECT_EQ(operationOf(scene.sent[0]), 0x01U);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(scene.sent[i + 1], expected[i]) << "packet " << i << " " << textOf(expected[i], 20);
    }
}

TEST(SessionEnd, QuitAndABrokenConnectionEndItInTheSameWay) {
    for (const bool quits : {true, false}) {
        SimScene scene;
        scene.open();
        scene.tell(openMessage("Prepar3D v5"));
        scene.tell(eventMessage(201, 1));
        EXPECT_TRUE(simRunning && simSessionStands());
        scene.sent.clear();
        scene.say(addRemoveMessage(203, 77));
        if (quits) {
            scene.say(quitMessage());
        } else {
            scene.connection.transport()->breakConnection();
        }
        EXPECT_FALSE(lf_pumpSimMessages());
        EXPECT_EQ(scene.answers(), Texts{"Removed 77 0 0 0 0"})
            << "what came before the end is still applied";
        EXPECT_FALSE(simRunning || simSessionStands());
        EXPECT_FALSE(statusValues().simConnected || statusValues().simRunningShown);
        EXPECT_EQ(exitReason, ExitReason::SimClosed);
        EXPECT_EQ(scene.exitSeconds, 0);
        EXPECT_TRUE(scene.logged(timeOfDay() +
                                 " Flight Simulator no longer connected, Kestrane_P3D will stop ...\n"));
        EXPECT_FALSE(scene.logged("SimConnect close failed!"));
        if (quits) {
            Fields cleared;
            for (const std::uint32_t id : {407, 408, 409, 402, 403, 401, 404, 405}) {
                cleared.push_back({0x0D, id});
            }
            const Fields sent = scene.sentFields(1);
            EXPECT_TRUE(std::search(sent.begin(), sent.end(), cleared.begin(), cleared.end()) != sent.end());
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
    EXPECT_FALSE(scene.tell(quitMessage()));
    EXPECT_EQ(exitReason, ExitReason::UserClosed);
    EXPECT_FALSE(scene.logged("no longer connected"));
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
    EXPECT_EQ(scene.sentFields(4), (Fields{{0x0E, 108, 409, 0, 4},
                                           {0x0E, 106, 407, 0, 1},
                                           {0x0E, 107, 408, 0, 1},
                                           {0x0E, 109, 403, 0, 1},
                                           {0x0F, 101, 404, 74080, 2},
                                           {0x0E, 102, 405, 77, 1}}));
}

TEST(SessionRequests, TheThirdErrorLatchesAndRestarts) {
    SimScene scene;
    scene.open();
    for (int error = 1; error <= 3; ++error) {
        EXPECT_EQ(exitReason, ExitReason::NotYetSet);
        lf_simRequestError();
        EXPECT_EQ(latchedSimError, error == 3);
    }
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
    const SimScene scene;
    writeRegistry(scene.folder, "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v6]\n"
                                "SetupPath=D:\\Prepar3D v6\\\n");
    EXPECT_FALSE(lf_simInstalled(5));
    EXPECT_TRUE(lf_simInstalled(6));
    EXPECT_EQ(lf_simInstallPath(5), "");
    EXPECT_EQ(lf_simInstallPath(6), "D:\\Prepar3D v6\\");
}

// ---- the thread ----

class SimClient : public testing::Test {
protected:
    void start() {
        client = std::jthread([](std::stop_token token) { lf_simClient(token); });
    }
    template <typename Condition>
    static void await(Condition condition) {
        while (!condition()) {
            std::this_thread::yield();
        }
    }

    SimScene scene;
    std::jthread client;
};

TEST_F(SimClient, WaitsForTheSimulatorAndLeavesAtOnceWhenStopped) {
    scene.connection.refuse(true);
    setTimeSource(nullptr); // the wait is a real one
    P3D_VERSION.set(6);
    start();
    await([] { return !messageLine().message.empty(); });
    EXPECT_EQ(messageLine().message, "Waiting for Prepar3Dv6 ...");
    client.request_stop();
    client.join();
    std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
    ASSERT_EQ(requests.size(), 1U) << "on leaving by any route";
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::StoreUserStand);
    setTimeSource(&scene.time);
}

TEST_F(SimClient, AStopLeavesTheSessionOpenAndTheNextReplacesIt) {
    setTimeSource(nullptr);
    start();
    await(simSessionStands);
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

TEST_F(SimClient, AnErrorOfTheUserStandsAndEndsNothing) {
    start();
    await(simSessionStands);
    scene.say(openMessage("KittyHawk"));
    client.join(); // by itself
    EXPECT_EQ(messageLine().error, "78: KittyHawk, (MSFS) not being P3D connects ... ?");
    EXPECT_EQ(exitReason, ExitReason::NotYetSet);
    EXPECT_TRUE(simSessionStands());
}

} // namespace
} // namespace kst::test
