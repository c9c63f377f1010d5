// The client and the session against the stand-in simulator: in memory, over TCP and over the pipe.

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
#include "standins/simulator/session.h"
#include "standins/simulator/world.h"
#include "support/userregistry.h"

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <thread>

#include <asio/post.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using standin::Aircraft;
using standin::World;

constexpr double frameSeconds = 1.0 / 50.0;

CreateRequest airborneRequest(std::string_view tail, std::uint32_t hexid) {
    return {{47.5, 8.6, 6000.0, 0.0, 0.0, 90.0, 0, 0}, std::string(tail), "Some Airliner", hexid};
}

/// The program and a world in one thread.
class InMemory : public testing::Test {
protected:
    InMemory() {
        world.placeUser(47.458, 8.548, 1416.0, true);
        scene.connection.onPacket([this](std::span<const std::byte> packet) {
            simulator->receive({reinterpret_cast<const std::uint8_t*>(packet.data()), packet.size()});
        });
        simulator.emplace(world);
        scene.open();
    }

    /// Frames of the simulator, each dispatched by the program. What the last pump returned.
    bool run(int frames) {
        bool stands = true;
        for (int i = 0; i < frames && stands; ++i) {
            world.frame(frameSeconds);
            if (++framesSoFar % 50 == 0) {
                world.second();
            }
            for (standin::Bytes packet; simulator->take(packet);) {
                scene.say({reinterpret_cast<const std::byte*>(packet.data()),
                           reinterpret_cast<const std::byte*>(packet.data()) + packet.size()});
            }
            stands = lf_pumpSimMessages();
        }
        return stands;
    }
    /// Runs with scans until an answer of this kind has come.
    std::optional<SimCommand> answer(SimCommand::Kind kind) {
        for (int i = 0; i < 200; ++i) {
            lf_requestAircraftInRange(100000.0);
            run(1);
            for (const SimCommand& command : scene.answers()) {
                if (command.kind == kind) {
                    return command;
                }
            }
        }
        return std::nullopt;
    }

    SimScene scene;
    World world;
    std::optional<standin::Session> simulator;
    int framesSoFar = 0;
};

TEST_F(InMemory, TheSessionLearnsWhatTheSimulatorKnows) {
    UserData user;
    ASSERT_TRUE(run(2));
    EXPECT_TRUE(statusValues().simConnected);
    EXPECT_TRUE(simRunning);
    EXPECT_TRUE(lf_requestUserOnGround());
    lf_requestUserInfo();
    lf_requestUserPosition(user);
    run(101);
    EXPECT_TRUE(tickDue);
    EXPECT_TRUE(userGroundStateKnown());
    EXPECT_TRUE(userOnGround);
    lf_requestUserPosition(user);
    EXPECT_NEAR(user.latitude, 47.458, 1e-9);
    EXPECT_NEAR(user.longitude, 8.548, 1e-9);
    EXPECT_EQ(user.zuluYear, 1970.0);
    EXPECT_EQ(user.zuluDayOfYear, 1.0);
    EXPECT_NE(statusValues().userAircraftText, "");
    EXPECT_TRUE(userHalfSpanNm());
    EXPECT_TRUE(simulator->complaints().empty()) << "the simulator understands every packet";
    EXPECT_EQ(simulator->clientName(), "Kestrane_P3D");
}

TEST_F(InMemory, AnAircraftIsCreatedMovedDressedAndRemoved) {
    UserData user;
    lf_requestUserPosition(user);
    run(2);
    lf_createFromQueue(airborneRequest("SWR100", 20001));
    const auto created = answer(SimCommand::Kind::LiveCreated);
    ASSERT_TRUE(created);
    EXPECT_EQ(created->id, 20001U);
    run(2);
    const Aircraft* object = world.findTail("SWR100");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->id, created->objectId);

    lf_requestSizes(created->objectId);
    const auto sizes = answer(SimCommand::Kind::Sizes);
    ASSERT_TRUE(sizes);
    EXPECT_GT(sizes->value1, 0.0);

    gf_updateAircraft({{47.6, 8.7, -0.05, 0.1, 1.0, 7000.0, 5.0, 250.0}, created->objectId});
    lf_swapPositionBuffers();
    lf_setLights(created->objectId, {true, true, false, false, true, false, false});
    lf_queueEvent({created->objectId, simconnect::GearSet, 0});
    run(1); // the frame that sends
    const Aircraft moved = *world.find(created->objectId);
    EXPECT_EQ(moved.place.lat, 47.6);
    EXPECT_EQ(moved.place.lon, 8.7);
    EXPECT_EQ(moved.place.altFt, 7000.0);
    EXPECT_EQ(moved.lights &
                  (standin::LightNav | standin::LightBeacon | standin::LightLanding | standin::LightStrobe),
              standin::LightNav | standin::LightBeacon | standin::LightStrobe);
    EXPECT_FALSE(moved.gearDown);
    EXPECT_TRUE(moved.released && moved.frozen());
    run(100);
    EXPECT_EQ(world.find(created->objectId)->place.lat, 47.6) << "it moves only where it is put";
    EXPECT_EQ(world.find(created->objectId)->place.altFt, 7000.0);

    lf_prepareFlightPlanFolder();
    LiveAc ac;
    ac.origin = "LSZH";
    ac.destination = "EGLL";
    ac.objectId = created->objectId;
    lf_setFlightPlan(ac);
    EXPECT_TRUE(ac.flightPlanLoaded);
    run(2);
    EXPECT_FALSE(scene.logged("load flight plan failed"));
    EXPECT_NE(world.find(created->objectId)->flightPlan, "");

    lf_queueRemoval(created->objectId);
    const auto removed = answer(SimCommand::Kind::Removed);
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->objectId, created->objectId);
    EXPECT_EQ(world.find(created->objectId), nullptr);
    EXPECT_TRUE(simulator->complaints().empty());
}

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

class OverTheWire : public testing::TestWithParam<bool> {};

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

TEST_P(OverTheWire, AWholeSessionFromOpenToQuit) {
    SimScene scene;
    setTransportForTest({}); // real ones
    setTimeSource(nullptr);
    ServedSimulator simulator(scene.folder, GetParam());
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    ASSERT_TRUE(waitFor([] { return simRunning.load(); }));
    EXPECT_TRUE(lf_requestUserOnGround());
    UserData user;
    ASSERT_TRUE(waitFor([&] {
        lf_requestUserPosition(user);
        return userGroundStateKnown();
    }));
    EXPECT_TRUE(userOnGround);

    constexpr std::uint32_t aircraft = 40;
    for (std::uint32_t i = 0; i < aircraft; ++i) {
        lf_createFromQueue(airborneRequest(fmt::format("SWR{}", i), 20001 + i));
    }
    std::vector<SimCommand> answers;
    std::set<std::uint32_t> objects;
    ASSERT_TRUE(waitFor([&] {
        lf_requestAircraftInRange(100000.0);
        takeSimCommands(answers);
        for (const SimCommand& command : answers) {
            if (command.kind == SimCommand::Kind::LiveCreated) {
                objects.insert(command.objectId);
            }
        }
        return objects.size() == aircraft;
    }));
    for (const std::uint32_t object : objects) {
        gf_updateAircraft({{47.6, 8.7, 0.0, 0.0, 1.0, 7000.0, 0.0, 250.0}, object});
    }
    lf_swapPositionBuffers();
    for (const std::uint32_t object : objects) {
        lf_queueRemoval(object);
    }
    ASSERT_TRUE(waitFor([&] {
        takeSimCommands(answers);
        for (const SimCommand& command : answers) {
            if (command.kind == SimCommand::Kind::Removed) {
                objects.erase(command.objectId);
            }
        }
        return objects.empty();
    }));
    simulator.quit();
    client.join();
    EXPECT_EQ(exitReason, ExitReason::SimClosed);
    EXPECT_FALSE(scene.logged("fail"));
    setTimeSource(&scene.time);
}

TEST_P(OverTheWire, AConnectionThatBreaksEndsTheRun) {
    SimScene scene;
    setTransportForTest({});
    setTimeSource(nullptr);
    ServedSimulator simulator(scene.folder, GetParam());
    std::jthread client([](std::stop_token token) { lf_simClient(token); });
    ASSERT_TRUE(waitFor([] { return simRunning.load(); }));
    simulator.onItsThread([](World& world) { world.dropConnections(); });
    client.join();
    EXPECT_EQ(exitReason, ExitReason::SimClosed);
    EXPECT_FALSE(simRunning);
    setTimeSource(&scene.time);
}

INSTANTIATE_TEST_SUITE_P(Wires, OverTheWire, testing::Values(false, true),
                         [](const auto& wire) { return wire.param ? "Pipe" : "Tcp"; });

} // namespace
} // namespace kst::test
