// The client and the session against the stand-in simulator, over TCP and over the pipe.

#include "core/clock.h"
#include "core/display.h"
#include "model/simconnect.h"
#include "platform/pipe.h"
#include "simlink/flightplans.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"
#include "simlink/simconnect.h"
#include "simlink/simscene.h"
#include "standins/simulator/server.h"
#include "standins/simulator/world.h"
#include "support/userregistry.h"

#include <chrono>
#include <functional>
#include <set>
#include <thread>

#include <asio/post.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using standin::World;

/// The stand-in simulator behind its sockets, on a thread of its own.
class ServedSimulator {
public:
    explicit ServedSimulator(const TempFolder& folder, bool overPipe) {
        world_.placeUser(47.458, 8.548, 1416.0, true);
        if (overPipe) {
            server_.listenPipe("\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
        } else {
            writeRegistry(folder, fmt::format("[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n"
                                              "SimConnect_Port_IPv4={}\n",
                                              server_.listenTcp(0)));
        }
        server_.start();
        thread_ = std::jthread([this] { context_.run(); });
    }
    ~ServedSimulator() { quit(); }

    void onItsThread(std::function<void(World&)> action) {
        asio::post(context_, [this, action] { action(world_); });
    }
    void quit() {
        if (thread_.joinable()) {
            asio::post(context_, [this] { server_.quit(); });
            thread_.join();
        }
    }

private:
    asio::io_context context_;
    World world_;
    standin::SimulatorServer server_{context_, world_, 100.0};
    std::jthread thread_;
};

/// Asks again at the pace of the worker, not faster: asking takes the session's lock, which the frame handler
/// only tries for, and a scan has an answer for every aircraft, so that the simulator's backlog fills and it
/// hangs up. False when the session that once stood is lost, since then nothing more will come.
template <typename Condition>
bool waitFor(Condition condition) {
    constexpr std::chrono::milliseconds pass{10};
    bool stood = false;
    while (!condition()) {
        const bool stands = simSessionStands();
        if (stood && !stands) {
            return false;
        }
        stood = stands;
        sleepFor(pass);
    }
    return true;
}

class OverTheWire : public testing::TestWithParam<bool> {
protected:
    OverTheWire() {
        setTransportForTest({}); // real ones, in real time
        setTimeSource(nullptr);
        client = std::jthread([](std::stop_token token) { lf_simClient(token); });
    }
    ~OverTheWire() override { setTimeSource(&scene.time); }

    /// Waits for answers of this kind about `count` objects.
    std::set<std::uint32_t> answered(SimCommand::Kind kind, std::size_t count) {
        std::set<std::uint32_t> objects;
        std::vector<SimCommand> answers;
        EXPECT_TRUE(waitFor([&] {
            lf_requestAircraftInRange(100000.0);
            takeSimCommands(answers);
            for (const SimCommand& command : answers) {
                if (command.kind == kind) {
                    objects.insert(command.objectId);
                }
            }
            return objects.size() == count;
        }));
        return objects;
    }

    SimScene scene;
    ServedSimulator simulator{scene.folder, GetParam()};
    std::jthread client;
};

TEST_P(OverTheWire, AWholeSessionFromOpenToQuit) {
    ASSERT_TRUE(waitFor([] { return simRunning.load(); }));
    EXPECT_TRUE(lf_requestUserOnGround());
    lf_requestUserInfo();
    UserData user;
    ASSERT_TRUE(waitFor([&] {
        lf_requestUserPosition(user);
        return userGroundStateKnown() && userHalfSpanNm();
    }));
    EXPECT_TRUE(userOnGround);
    EXPECT_EQ(user.position(), (LatLon{47.458, 8.548}));
    EXPECT_NE(statusValues().userAircraftText, "");

    constexpr std::uint32_t aircraft = 40;
    for (std::uint32_t i = 0; i < aircraft; ++i) {
        lf_createFromQueue(
            {{47.5, 8.6, 6000.0, 0.0, 0.0, 90.0, 0, 0}, fmt::format("SWR{}", i), "Some Airliner", 20001 + i});
    }
    const std::set<std::uint32_t> objects = answered(SimCommand::Kind::LiveCreated, aircraft);
    lf_prepareFlightPlanFolder();
    for (const std::uint32_t object : objects) {
        gf_updateAircraft({{47.6, 8.7, 0.0, 0.0, 1.0, 7000.0, 0.0, 250.0}, object});
        lf_setLights(object, {true, true, false, false, true, false, false});
        lf_queueEvent({object, simconnect::GearSet, 0});
        lf_requestSizes(object);
        LiveAc ac;
        ac.origin = "LSZH";
        ac.destination = "EGLL";
        ac.objectId = object;
        lf_setFlightPlan(ac);
    }
    lf_swapPositionBuffers();
    EXPECT_EQ(answered(SimCommand::Kind::Sizes, aircraft), objects);
    for (const std::uint32_t object : objects) {
        lf_queueRemoval(object);
    }
    EXPECT_EQ(answered(SimCommand::Kind::Removed, aircraft), objects);
    simulator.quit();
    client.join();
    EXPECT_EQ(exitReason, ExitReason::SimClosed);
    EXPECT_FALSE(scene.logged("fail"));
    EXPECT_FALSE(scene.logged("EXCEP")) << "the simulator understands every packet";
}

TEST_P(OverTheWire, AConnectionThatBreaksEndsTheRun) {
    ASSERT_TRUE(waitFor([] { return simRunning.load(); }));
    simulator.onItsThread([](World& world) { world.dropConnections(); });
    client.join();
    EXPECT_EQ(exitReason, ExitReason::SimClosed);
    EXPECT_FALSE(simRunning);
}

INSTANTIATE_TEST_SUITE_P(Wires, OverTheWire, testing::Values(false, true),
                         [](const auto& wire) { return wire.param ? "Pipe" : "Tcp"; });

} // namespace
} // namespace kst::test
