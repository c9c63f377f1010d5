// How the simulator is reached: which ways are tried in which order, over real sockets and pipes, and what
// becomes of a connection that ends.

#include "core/runstate.h"
#include "platform/pipe.h"
#include "simlink/simconnect.h"
#include "simlink/simscene.h"
#include "support/tempfolder.h"
#include "support/userregistry.h"

#include <cstring>
#include <future>
#include <thread>

#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using asio::ip::tcp;

TEST(Connecting, TheChainTriesWhatTheConfigurationAllows) {
    const TempFolder folder;
    struct Case {
        std::string_view name;
        std::string_view config;
        std::string_view registry;
        std::vector<std::string> attempts;
    };
    constexpr std::string_view ports = "[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n"
                                       "SimConnect_Port_IPv4=500\nSimConnect_Port_IPv6=600\n";
    const std::vector<std::string> allWays = {"1  ", "23 ::1 600", "2 127.0.0.1 500", "1 . "};
    const Case cases[] = {
        {"no file, ports registered", "", ports, allWays},
        {"no file, nothing registered", "", "", {"1  ", "1 . "}},
        {"auto is the same", "Protocol=Auto\n", ports, allWays},
        {"a pipe of this machine",
         "Protocol=Pipe\nAddress=.\nPort=Mine\n",
         ports,
         {"1 . Mine", "23 ::1 600", "2 127.0.0.1 500", "1 . "}},
        {"a pipe of another machine", "Protocol=Pipe\nAddress=SIMPC\n", ports, {"1 SIMPC "}},
        {"v4 with address and port", "Protocol=IPv4\nAddress=sim.lan\nPort=501\n", ports, {"2 sim.lan 501"}},
        {"v4 with an address and no port anywhere", "Protocol=IPv4\nAddress=sim.lan\n", ports, {}},
        {"v4 on this machine",
         "Protocol=IPv4\nAddress=127.0.0.1\nPort=501\n",
         ports,
         {"2 127.0.0.1 501", "1 . "}},
        {"v6 on this machine",
         "Protocol=IPv6\nAddress=::1\nPort=601\n",
         ports,
         {"23 ::1 601", "2 127.0.0.1 500", "1 . "}},
        {"v6 elsewhere", "Protocol=IPv6\nAddress=fe80::1\nPort=601\n", ports, {"23 fe80::1 601"}},
        {"v6 without an address", "Protocol=IPv6\nPort=601\n", ports, {"23  601"}},
    };
    for (const Case& c : cases) {
        folder.write("SimConnect.cfg", fmt::format("[SimConnect]\n{}", c.config));
        writeRegistry(folder, c.registry);
        std::vector<std::string> attempts;
        setTransportForTest([&](const TransportTarget& target) -> std::shared_ptr<SimTransport> {
            attempts.push_back(fmt::format("{} {} {}", static_cast<std::uint32_t>(target.protocol),
                                           target.address, target.port));
            return nullptr;
        });
        SimHandle handle = 77;
        EXPECT_EQ(static_cast<std::uint32_t>(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0)),
                  0x80004005U);
        EXPECT_EQ(handle, noSimHandle);
        EXPECT_EQ(attempts, c.attempts) << c.name;
    }
    setTransportForTest({});
}

TEST(Connecting, ThePipesNameFollowsServerAndPort) {
    EXPECT_EQ(pipeName({}), "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
    EXPECT_EQ(pipeName({SimProtocol::Pipe, "SIMPC", ""}),
              "\\\\SIMPC\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
    EXPECT_EQ(pipeName({SimProtocol::Pipe, ".", "A\\B"}), "\\\\.\\pipe\\A\\B");
}

/// Takes one client, reads its Open packet, answers with `answer` in pieces of 7 bytes, then either ends the
/// connection or waits for the client to end it.
template <typename Stream>
std::string serve(Stream stream, const Packet& answer, bool endIt) {
    asio::error_code error;
    Packet open(296);
    asio::read(stream, asio::buffer(open), error);
    if (error) {
        return "no Open packet: " + error.message();
    }
    for (std::size_t at = 0; at < answer.size(); at += 7) {
        asio::write(stream, asio::buffer(answer.data() + at, std::min<std::size_t>(7, answer.size() - at)),
                    error);
    }
    if (!endIt) {
        Packet rest(1);
        asio::read(stream, asio::buffer(rest), error);
        if (error != asio::error::eof && error != asio::error::broken_pipe) {
            return "the client did not close";
        }
    }
    return textOf(open, 16);
}

struct Heard {
    std::vector<std::uint32_t> ids;
};

void hear(const void* message, std::uint32_t, void* context) {
    std::uint32_t id = 0;
    std::memcpy(&id, static_cast<const std::byte*>(message) + 8, sizeof id);
    static_cast<Heard*>(context)->ids.push_back(id);
}

/// Dispatches until `count` messages have come or the connection is gone.
SimResult dispatchUntil(SimHandle handle, Heard& heard, std::size_t count) {
    SimResult result = simOk;
    while (heard.ids.size() < count && result == simOk) {
        result = SimConnect_CallDispatch(handle, hear, &heard);
        std::this_thread::yield();
    }
    return result;
}

Packet twoMessages() {
    Packet both = eventMessage(201, 1);
    const Packet second = frameMessage(60.0F);
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

class RealConnection : public testing::Test {
protected:
    RealConnection() { resetRunState(); }
    TempFolder folder;
    Heard heard;
    SimHandle handle = noSimHandle;

    SimResult open() { return SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0); }
};

TEST_F(RealConnection, WithoutAPipeTheRegisteredPortIsReached) {
    const std::pair<const char*, const char*> families[] = {{"127.0.0.1", "SimConnect_Port_IPv4"},
                                                            {"::1", "SimConnect_Port_IPv6"}};
    for (const auto& [address, key] : families) {
        SCOPED_TRACE(key);
        heard.ids.clear();
        asio::io_context context;
        tcp::acceptor acceptor(context, tcp::endpoint(asio::ip::make_address(address), 0));
        writeRegistry(folder,
                      fmt::format("[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n{}={}\n", key,
                                  acceptor.local_endpoint().port()));
        auto served =
            std::async(std::launch::async, [&] { return serve(acceptor.accept(), twoMessages(), false); });
        ASSERT_EQ(open(), simOk);
        EXPECT_EQ(dispatchUntil(handle, heard, 2), simOk);
        EXPECT_EQ(heard.ids, (std::vector<std::uint32_t>{4, 7}));
        EXPECT_EQ(SimConnect_Close(handle), simOk);
        EXPECT_EQ(served.get(), "Kestrane_P3D");
        EXPECT_EQ(SimTransport::count(), 0) << "nothing is left of the connection";
    }
}

TEST_F(RealConnection, ThePipeIsReachedAndTheNextClientToo) {
    asio::io_context context;
    platform::PipeListener listener(context, "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
    for (int client = 0; client < 2; ++client) {
        heard.ids.clear();
        std::promise<std::string> served;
        listener.asyncAccept([&](asio::error_code error, platform::PipeStream stream) {
            served.set_value(error ? error.message() : serve(std::move(stream), twoMessages(), false));
        });
        std::jthread server([&] {
            context.restart();
            context.run();
        });
        ASSERT_EQ(open(), simOk);
        EXPECT_EQ(dispatchUntil(handle, heard, 2), simOk);
        EXPECT_EQ(heard.ids, (std::vector<std::uint32_t>{4, 7}));
        EXPECT_EQ(SimConnect_Close(handle), simOk);
        EXPECT_EQ(served.get_future().get(), "Kestrane_P3D");
    }
}

TEST_F(RealConnection, AnAcceptThatWaitsCanBeEnded) {
    asio::io_context context;
    platform::PipeListener listener(context, "\\\\.\\pipe\\A\\B");
    asio::error_code ended;
    listener.asyncAccept([&](asio::error_code error, platform::PipeStream) { ended = error; });
    asio::post(context, [&] { listener.cancel(); });
    context.run();
    EXPECT_EQ(ended, asio::error::operation_aborted);
}

TEST_F(RealConnection, AnEndedConnectionGivesItsErrorToEveryCall) {
    asio::io_context context;
    tcp::acceptor acceptor(context, tcp::endpoint(asio::ip::make_address("127.0.0.1"), 0));
    folder.write("SimConnect.cfg",
                 fmt::format("[SimConnect]\nProtocol=IPv4\nAddress=localhost\nPort={}\nDisableNagle=1\n",
                             acceptor.local_endpoint().port()));
    auto served =
        std::async(std::launch::async, [&] { return serve(acceptor.accept(), twoMessages(), true); });
    ASSERT_EQ(open(), simOk);
    EXPECT_EQ(dispatchUntil(handle, heard, 99), static_cast<SimResult>(0xC000013EU));
    EXPECT_EQ(heard.ids, (std::vector<std::uint32_t>{4, 7}))
        << "what came before the end is still dispatched";
    EXPECT_EQ(SimConnect_AIRemoveObject(handle, 9, 105), static_cast<SimResult>(0xC000013EU));
    EXPECT_EQ(SimConnect_CallDispatch(handle, hear, &heard), static_cast<SimResult>(0xC000013EU));
    EXPECT_TRUE(simConnectionLost(handle));
    EXPECT_EQ(SimConnect_Close(handle), simOk);
    EXPECT_EQ(SimConnect_AIRemoveObject(handle, 9, 105), simBadArgument) << "a closed handle is unknown";
    EXPECT_EQ(SimConnect_Close(handle), simBadArgument);
    EXPECT_EQ(served.get(), "Kestrane_P3D");
}

TEST_F(RealConnection, APacketAboveTheLimitEndsTheConnection) {
    asio::io_context context;
    tcp::acceptor acceptor(context, tcp::endpoint(asio::ip::make_address("127.0.0.1"), 0));
    folder.write("SimConnect.cfg", fmt::format("[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort={}\n",
                                               acceptor.local_endpoint().port()));
    Packet answer = twoMessages();
    const std::uint32_t tooLong = 41089;
    const auto* size = reinterpret_cast<const std::byte*>(&tooLong);
    answer.insert(answer.end(), size, size + 4);
    auto served = std::async(std::launch::async, [&] { return serve(acceptor.accept(), answer, false); });
    ASSERT_EQ(open(), simOk);
    EXPECT_EQ(dispatchUntil(handle, heard, 99), static_cast<SimResult>(0x80004004U));
    EXPECT_EQ(heard.ids.size(), 2U);
    SimConnect_Close(handle);
    EXPECT_EQ(served.get(), "Kestrane_P3D");
}

TEST_F(RealConnection, AnExitEndsAWaitForAHostThatDoesNotAnswer) {
    // A listening queue that is full lets a further client wait.
    asio::io_context context;
    tcp::acceptor acceptor(context, tcp::v4());
    acceptor.bind(tcp::endpoint(asio::ip::make_address("127.0.0.1"), 0));
    acceptor.listen(0);
    std::vector<tcp::socket> fill;
    for (int i = 0; i < 3; ++i) {
        fill.emplace_back(context).async_connect(acceptor.local_endpoint(), [](const asio::error_code&) {});
    }
    context.poll();
    exitRequested = false;
    int asked = 0;
    const TransportTarget target{SimProtocol::IPv4, "127.0.0.1",
                                 fmt::format("{}", acceptor.local_endpoint().port()), 41088};
    const auto transport = connectTransport(target, [&] { return ++asked > 5; });
    EXPECT_EQ(transport, nullptr);
    EXPECT_GT(asked, 5) << "the wait was ended, not refused";
}

TEST_F(RealConnection, NothingIsTriedOnceAnExitIsAskedFor) {
    int attempts = 0;
    setTransportForTest([&](const TransportTarget&) -> std::shared_ptr<SimTransport> {
        ++attempts;
        exitRequested = true; // while the first attempt is under way
        return nullptr;
    });
    writeRegistry(folder, "[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n"
                          "SimConnect_Port_IPv4=500\nSimConnect_Port_IPv6=600\n");
    EXPECT_EQ(open(), simFailed);
    EXPECT_EQ(attempts, 1);
    exitRequested = false;
    setTransportForTest({});
}

TEST(Closing, EmptiesTheListsOfALostConnection) {
    SimScene scene;
    SimHandle handle = noSimHandle;
    ASSERT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
    const std::shared_ptr<SimTransport> transport = scene.connection.transport()->shared_from_this();
    scene.say(eventMessage(201, 1));
    scene.connection.transport()->breakConnection();
    EXPECT_EQ(SimConnect_Close(handle), simOk);
    PacketFifo left;
    EXPECT_FALSE(transport->takeReceived(left));
}

TEST(Closing, LetsWhatWasSentLeaveAndTakesAThirdOfASecond) {
    SimScene scene;
    SimHandle first = noSimHandle;
    SimHandle second = noSimHandle;
    ASSERT_EQ(SimConnect_Open(first, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
    ASSERT_EQ(SimConnect_Open(second, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
    EXPECT_NE(first, second);
    const auto before = scene.time.monotonic();
    EXPECT_EQ(SimConnect_Close(first), simOk);
    EXPECT_EQ(scene.time.monotonic() - before, std::chrono::milliseconds(350));
    EXPECT_EQ(SimConnect_AIRemoveObject(second, 9, 105), simOk) << "the other session is untouched";
    SimConnect_Close(second);
}

TEST(Dispatching, GoesOnBehindAMessageWhoseHandlerThrew) {
    SimScene scene;
    SimHandle handle = noSimHandle;
    ASSERT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
    for (std::uint32_t event = 1; event <= 3; ++event) {
        scene.say(eventMessage(event, 0));
    }
    std::vector<std::uint32_t> seen;
    const auto throwAtSecond = [](const void* message, std::uint32_t, void* context) {
        auto& events = *static_cast<std::vector<std::uint32_t>*>(context);
        Packet copy(24);
        std::copy_n(static_cast<const std::byte*>(message), 24, copy.begin());
        events.push_back(fieldOf(copy, 16));
        if (events.size() == 2) {
            throw std::runtime_error("handler");
        }
    };
    EXPECT_THROW(SimConnect_CallDispatch(handle, throwAtSecond, &seen), std::runtime_error);
    EXPECT_EQ(SimConnect_CallDispatch(handle, throwAtSecond, &seen), simOk);
    EXPECT_EQ(seen, (std::vector<std::uint32_t>{1, 2, 3}));
    SimConnect_Close(handle);
}

TEST(Dispatching, AMessageWithoutAWholeHeadIsNotHandedOut) {
    SimScene scene;
    SimHandle handle = noSimHandle;
    ASSERT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
    Packet eleven(11);
    eleven[0] = std::byte{11};
    scene.say(eleven);
    scene.say(eventMessage(201, 1));
    Heard heard;
    EXPECT_EQ(SimConnect_CallDispatch(handle, hear, &heard), simOk);
    EXPECT_EQ(heard.ids, (std::vector<std::uint32_t>{4}));
    SimConnect_Close(handle);
}

} // namespace
} // namespace kst::test
