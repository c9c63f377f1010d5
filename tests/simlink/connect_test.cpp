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
        std::string_view attempts; ///< protocol, address and port of each
        std::string_view registry = "[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n"
                                    "SimConnect_Port_IPv4=500\nSimConnect_Port_IPv6=600\n";
    };
    constexpr std::string_view allWays = "1  , 23 ::1 600, 2 127.0.0.1 500, 1 . , ";
    const Case cases[] = {
        {"no file, ports registered", "", allWays},
        {"no file, nothing registered", "", "1  , 1 . , ", ""},
        {"auto is the same", "Protocol=Auto\n", allWays},
        {"a pipe of this machine", "Protocol=Pipe\nAddress=.\nPort=Mine\n",
         "1 . Mine, 23 ::1 600, 2 127.0.0.1 500, 1 . , "},
        {"a pipe of another machine", "Protocol=Pipe\nAddress=SIMPC\n", "1 SIMPC , "},
        {"v4 with address and port", "Protocol=IPv4\nAddress=sim.lan\nPort=501\n", "2 sim.lan 501, "},
        {"v4 with an address and no port anywhere", "Protocol=IPv4\nAddress=sim.lan\n", ""},
        {"v4 on this machine", "Protocol=IPv4\nAddress=127.0.0.1\nPort=501\n", "2 127.0.0.1 501, 1 . , "},
        {"v6 on this machine", "Protocol=IPv6\nAddress=::1\nPort=601\n",
         "23 ::1 601, 2 127.0.0.1 500, 1 . , "},
        {"v6 elsewhere", "Protocol=IPv6\nAddress=fe80::1\nPort=601\n", "23 fe80::1 601, "},
        {"v6 without an address", "Protocol=IPv6\nPort=601\n", "23  601, "},
    };
    for (const Case& c : cases) {
        folder.write("SimConnect.cfg", fmt::format("[SimConnect]\n{}", c.config));
        writeRegistry(folder, c.registry);
        std::string attempts;
        setTransportForTest([&](const TransportTarget& target) -> std::shared_ptr<SimTransport> {
            attempts += fmt::format("{} {} {}, ", static_cast<std::uint32_t>(target.protocol), target.address,
                                    target.port);
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
std::string serve(tcp::socket stream, const Packet& answer, bool endIt) {
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

/// Ids of messages in the order of their dispatch.
using Heard = std::vector<std::uint32_t>;

void hear(const void* message, std::uint32_t, void* context) {
    std::uint32_t id = 0;
    std::memcpy(&id, static_cast<const std::byte*>(message) + 8, sizeof id);
    static_cast<Heard*>(context)->push_back(id);
}

class RealConnection : public testing::Test {
protected:
    RealConnection() { resetRunState(); }

    /// A simulator at the address that says two messages and what is added; dispatched until it is gone.
    SimResult resultOfSession(const char* address, const Packet& added, bool simulatorEnds) {
        asio::io_context context;
        tcp::acceptor acceptor(context, tcp::endpoint(asio::ip::make_address(address), 0));
        const bool v6 = acceptor.local_endpoint().protocol() == tcp::v6();
        folder.write("SimConnect.cfg",
                     fmt::format("[SimConnect]\nProtocol={}\nAddress={}\nPort={}\nDisableNagle=1\n",
                                 v6 ? "IPv6" : "IPv4", address, acceptor.local_endpoint().port()));
        Packet answer = eventMessage(201, 1);
        for (const Packet& more : {frameMessage(60.0F), added}) {
            answer.insert(answer.end(), more.begin(), more.end());
        }
        auto served =
            std::async(std::launch::async, [&] { return serve(acceptor.accept(), answer, simulatorEnds); });
        EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk);
        SimResult result = simOk;
        while (result == simOk) {
            result = SimConnect_CallDispatch(handle, hear, &heard);
            std::this_thread::yield();
        }
        EXPECT_EQ(heard, (Heard{4, 7})) << "what came before the end is still dispatched";
        EXPECT_TRUE(simConnectionLost(handle));
        EXPECT_EQ(SimConnect_AIRemoveObject(handle, 9, 105), result) << "every call gives the error";
        EXPECT_EQ(SimConnect_Close(handle), simOk);
        EXPECT_EQ(SimConnect_Close(handle), simBadArgument) << "a closed handle is unknown";
        EXPECT_EQ(SimConnect_AIRemoveObject(handle, 9, 105), simBadArgument);
        EXPECT_EQ(SimTransport::count(), 0) << "nothing is left of the connection";
        EXPECT_EQ(served.get(), "Kestrane_P3D");
        return result;
    }

    TempFolder folder;
    Heard heard;
    SimHandle handle = noSimHandle;
};

TEST_F(RealConnection, AnEndedConnectionGivesItsErrorToEveryCall) {
    EXPECT_EQ(resultOfSession("::1", {}, true), static_cast<SimResult>(0xC000013EU));
}

TEST_F(RealConnection, APacketAboveTheLimitEndsTheConnection) {
    const Packet tooLong = {std::byte{0x81}, std::byte{0xA0}, std::byte{0}, std::byte{0}}; // 41089 bytes
    EXPECT_EQ(resultOfSession("127.0.0.1", tooLong, false), static_cast<SimResult>(0x80004004U));
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
    EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simFailed);
    EXPECT_EQ(attempts, 1);
    exitRequested = false;
    setTransportForTest({});
}

class MemoryClient : public testing::Test {
protected:
    MemoryClient() { EXPECT_EQ(open(handle), simOk); }
    ~MemoryClient() override { SimConnect_Close(handle); }
    static SimResult open(SimHandle& opened) {
        return SimConnect_Open(opened, "Kestrane_P3D", nullptr, 0, nullptr, 0);
    }

    SimScene scene;
    SimHandle handle = noSimHandle;
};

TEST_F(MemoryClient, ClosingEmptiesTheListsOfALostConnection) {
    const std::shared_ptr<SimTransport> transport = scene.connection.transport()->shared_from_this();
    scene.say(eventMessage(201, 1));
    scene.connection.transport()->breakConnection();
    EXPECT_EQ(SimConnect_Close(handle), simOk);
    PacketFifo left;
    EXPECT_FALSE(transport->takeReceived(left));
}

TEST_F(MemoryClient, ClosingLetsWhatWasSentLeaveAndTakesAThirdOfASecond) {
    SimHandle other = noSimHandle;
    ASSERT_EQ(open(other), simOk);
    EXPECT_NE(handle, other);
    const auto before = scene.time.monotonic();
    EXPECT_EQ(SimConnect_Close(other), simOk);
    EXPECT_EQ(scene.time.monotonic() - before, std::chrono::milliseconds(350));
    EXPECT_EQ(SimConnect_AIRemoveObject(handle, 9, 105), simOk) << "this session is untouched";
}

TEST_F(MemoryClient, DispatchingGoesOnBehindAMessageWhoseHandlerThrew) {
    for (std::uint32_t event = 1; event <= 3; ++event) {
        scene.say(eventMessage(event, 0));
    }
    Heard seen;
    const auto throwAtSecond = [](const void* message, std::uint32_t, void* context) {
        Packet copy(24);
        std::copy_n(static_cast<const std::byte*>(message), 24, copy.begin());
        auto& events = *static_cast<Heard*>(context);
        events.push_back(fieldOf(copy, 16));
        if (events.size() == 2) {
            throw std::runtime_error("handler");
        }
    };
    EXPECT_THROW(SimConnect_CallDispatch(handle, throwAtSecond, &seen), std::runtime_error);
    EXPECT_EQ(SimConnect_CallDispatch(handle, throwAtSecond, &seen), simOk);
    EXPECT_EQ(seen, (Heard{1, 2, 3}));
}

TEST_F(MemoryClient, AMessageWithoutAWholeHeadIsNotHandedOut) {
    Packet eleven(11);
    eleven[0] = std::byte{11};
    scene.say(eleven);
    scene.say(eventMessage(201, 1));
    Heard heard;
    EXPECT_EQ(SimConnect_CallDispatch(handle, hear, &heard), simOk);
    EXPECT_EQ(heard, Heard{4});
}

} // namespace
} // namespace kst::test
