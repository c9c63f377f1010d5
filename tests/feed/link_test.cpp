// The link that RealTraffic connects to, over a real connection.

#include "feedtest.h"

#include "core/clock.h"
#include "core/exceptions.h"
#include "core/parameters.h"
#include "feed/realtrafficlink.h"
#include "model/units.h"
#include "support/thrown.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using namespace kst;
using namespace kst::test;
using asio::ip::tcp;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

/// What RealTraffic does at its end of the link. Every read ends after ten seconds.
class Client {
public:
    explicit Client(int port) {
        stream_.expires_after(std::chrono::seconds{10});
        stream_.connect(tcp::endpoint(asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port)));
        EXPECT_TRUE(stream_) << stream_.error().message();
    }
    /// One command without its line end, empty when the link is closed.
    std::string command() {
        std::string line;
        std::getline(stream_, line);
        EXPECT_TRUE(line.empty() || line.back() == '\r') << line;
        return line.substr(0, line.empty() ? 0 : line.size() - 1);
    }
    void say(std::string_view text) { stream_ << text << std::flush; }
    void leave() { stream_.close(); }

private:
    tcp::iostream stream_;
};

class Link : public FeedTest {
protected:
    Link() {
        PORT_NUMBER.set("0");
        userData = {};
        userData.latitude = 47.45;
        userData.longitude = 8.55;
        setLinkLostHandler([this] { ++lost_; });
    }
    ~Link() override {
        lf_closeRealTraffic();
        setLinkLostHandler(nullptr);
        PORT_NUMBER.setDefault();
        userData = {};
    }

    /// Connects and answers the version question.
    Client connected(std::string_view reply = R"({"version":"10.1","level":2})") {
        lf_openRealTraffic();
        Client client(realTrafficPort());
        client.say(reply);
        lf_waitForRealTraffic();
        EXPECT_EQ(client.command(), "Qs999=version");
        EXPECT_TRUE(realTrafficConnected());
        return client;
    }
    /// The other end has gone: sends until the link notices.
    template <typename Send>
    static void untilLost(Send send) {
        EXPECT_TRUE(waitUntil([&] {
            send();
            return !realTrafficConnected();
        }));
    }

    int lost_ = 0;
};

TEST_F(Link, PositionCommandToTheLetter) {
    userData.pitch = -0.0512345;
    userData.bank = 0.1;
    userData.heading = 3.1415926535;
    userData.altitudeFt = 1416.25;
    userData.latitude = 45.0;
    userData.longitude = -90.0;
    for (const auto& [knots, text] : {std::pair(12.5, "12500"), {0.1234567, "123.4567"}, {0.0, "0"}}) {
        userData.groundSpeedKt = knots;
        EXPECT_EQ(userPositionCommand(),
                  fmt::format("Qs121=-5123;10000;3.141593;1416250;{};0.785398;-1.570796\r\n", text));
    }
}

TEST_F(Link, ConnectExchangesTheVersionAndStartsTheTraffic) {
    Client client = connected();
    EXPECT_EQ(statusValues().rtEditionText, "RT prof edition: 10.1");
    EXPECT_TRUE(statusValues().rtConnected);
    EXPECT_FALSE(waitingForRealTraffic);
    EXPECT_TRUE(timeFollowing);
    EXPECT_EQ(messageLine().message, "");
    EXPECT_EQ(newLog(), "Waiting for RealTraffic to connect to Kestrane_P3D ...\nRealTraffic connected\n");
    lf_sendSimTime(1'700'000'000);
    lf_sendUserPosition();
    EXPECT_EQ(client.command(), "Qs123=1700000000000");
    EXPECT_EQ(client.command() + "\r\n", userPositionCommand());
    lf_closeRealTraffic();
    EXPECT_EQ(client.command(), "exit");
    EXPECT_EQ(client.command(), "");
    EXPECT_FALSE(realTrafficConnected());
    EXPECT_EQ(realTrafficPort(), 0);
}

TEST_F(Link, OnlyAKnownTimeAndAKnownPositionAreSent) {
    Client client = connected();
    for (const std::int64_t seconds :
         {std::int64_t{0}, std::int64_t{-5}, std::numeric_limits<std::int64_t>::max()}) {
        lf_sendSimTime(seconds);
    }
    const double none = std::numeric_limits<double>::quiet_NaN();
    for (const LatLon position :
         {LatLon{0.0, 0.0}, LatLon{0.0009, 0.05}, LatLon{none, 8.0}, LatLon{1.0, 8.0}}) {
        userData.latitude = position.lat;
        userData.longitude = position.lon;
        lf_sendUserPosition();
    }
    lf_sendSimTime(1);
    EXPECT_EQ(client.command() + "\r\n", userPositionCommand());
    EXPECT_EQ(client.command(), "Qs123=1000");
}

TEST_F(Link, RemoteRealTrafficHasNoLink) {
    realTrafficHere = false;
    lf_openRealTraffic();
    lf_waitForRealTraffic();
    lf_sendUserPosition();
    EXPECT_FALSE(realTrafficConnected());
    EXPECT_EQ(messageLine().message, "");
}

TEST_F(Link, LostLinkTakesTheAircraftOutAndComesBack) {
    Client client = connected();
    newLog();
    EXPECT_EQ(lost_, 0);
    client.leave();
    untilLost(lf_sendUserPosition);
    EXPECT_EQ(lost_, 1);
    EXPECT_FALSE(statusValues().rtConnected);
    EXPECT_THAT(messageLine().message,
                MatchesRegex("..:..:.. RealTraffic gone\\? Wait for RealTraffic to re-connect \\.\\.\\."));
    EXPECT_THAT(newLog(), MatchesRegex("sendDataPacket to RealTraffic failed: 100.. .*\n"
                                       "RealTraffic client socket closed\n"
                                       "..:..:.. RealTraffic gone\\? Wait .*\n"));
    // Commands to nobody are no second loss.
    lf_sendSimTime(1'700'000'000);
    EXPECT_EQ(lost_, 1);

    Client again(realTrafficPort());
    lf_sendUserPosition();
    EXPECT_TRUE(realTrafficConnected());
    EXPECT_TRUE(statusValues().rtConnected);
    EXPECT_THAT(newLog(), MatchesRegex("..:..:.. RealTraffic re-connected\n"));
    EXPECT_EQ(messageLine().message, "");
    lf_sendUserPosition();
    EXPECT_EQ(again.command() + "\r\n", userPositionCommand()) << "the version is not asked again";
}

TEST_F(Link, LossNoticedByTheTimeCommandCountsAsWell) {
    connected().leave();
    untilLost([] { lf_sendSimTime(1'700'000'000); });
    EXPECT_EQ(lost_, 1);
}

TEST_F(Link, ClientThatDoesNotReadDoesNotBlockTheWorker) {
    Client client = connected();
    const std::string much(1 << 20, 'x');
    const auto begin = monotonicNow();
    int sent = 0;
    while (sendDataPacket(much)) {
        ASSERT_LT(++sent, 100) << "the system's buffers are smaller than this";
    }
    EXPECT_LT(monotonicNow() - begin, std::chrono::seconds{30});
    EXPECT_FALSE(realTrafficConnected());
    EXPECT_THAT(newLog(), HasSubstr("sendDataPacket to RealTraffic failed: 10060 Connection timed out\n"));
}

TEST_F(Link, VersionReplies) {
    const struct {
        std::string reply;
        const char* edition;
        bool following;
    } cases[] = {
        {R"({"version":"9.5","level":2})", "prof edition: 9.5", true},
        {R"({"version":"9.5","level":1})", "stnd edition: 9.5", false},
        {R"({"version":"9.5","level":2.0})", "prof edition: 9.5", true},
        {R"({"version":"9.5"})", "prof edition: 9.5", true},
        {R"({"version":"","level":3})", "stnd edition: ?", false},
        {R"({"level":0})", "stnd edition: ?", false},
        {"{}\r\n", "prof edition: ?", true},
        // A wrong type counts as a missing key.
        {R"({"version":95,"level":"1"})", "prof edition: ?", true},
        {R"({"version":["9.5"],"level":null})", "prof edition: ?", true},
        {"[1,2]", "prof edition: ?", true},
        {"17", "prof edition: ?", true},
        {fmt::format(R"({{"version":"{}","level":1}})", std::string(8000, '9')), "stnd edition: ?", false},
    };
    for (const auto& row : cases) {
        timeFollowing = !row.following;
        lf_readRealTrafficVersion(row.reply);
        EXPECT_EQ(statusValues().rtEditionText, std::string("RT ") + row.edition) << row.reply;
        EXPECT_EQ(timeFollowing, row.following) << row.reply;
    }
    lf_readRealTrafficVersion("");
    EXPECT_FALSE(timeFollowing);
    EXPECT_EQ(messageLine().message, "No RealTraffic version received?");
    for (const std::string reply :
         {"version 9.5", "{\"version\":\"\xff\"}", "{\"level\":1e999}", "{\"level\":"}) {
        EXPECT_THROW(lf_readRealTrafficVersion(reply), std::exception) << reply;
    }
    EXPECT_THROW(lf_readRealTrafficVersion(std::string(8192, '[')), std::exception);
}

TEST_F(Link, ClientThatLeavesInsteadOfAnsweringGivesNoTimeFollowing) {
    lf_openRealTraffic();
    timeFollowing = true;
    { Client client(realTrafficPort()); }
    lf_waitForRealTraffic();
    EXPECT_FALSE(timeFollowing);
    EXPECT_THAT(newLog(), HasSubstr("No RealTraffic version received?\n"));
}

TEST_F(Link, ServerIsOpenedAnewForTheNextRun) {
    connected();
    lf_closeRealTraffic();
    Client client = connected(R"({"version":"10.2","level":1})");
    EXPECT_EQ(statusValues().rtEditionText, "RT stnd edition: 10.2");
}

TEST_F(Link, PortsThatCannotBeOpened) {
    const auto failure = [](const std::string& port) {
        PORT_NUMBER.set(port);
        return thrown<SysErrorException>(lf_openRealTraffic);
    };
    asio::io_context context;
    tcp::acceptor taken(context, tcp::endpoint(tcp::v4(), 0));
    const std::string port = std::to_string(taken.local_endpoint().port());
    // Windows may also say that the port is not for sharing.
    const std::string refused = fmt::format("sys error 5: Bind failed at port {} with error ", port);
    EXPECT_THAT(failure(port), testing::AnyOf(refused + "10048 Address already in use",
                                              refused + "10013 Permission denied"));
    for (const char* const name : {"99999", "no such service"}) {
        EXPECT_THAT(failure(name), HasSubstr("sys error 1: getaddrinfo failed with error "));
    }
    EXPECT_EQ(realTrafficPort(), 0);
    EXPECT_EQ(failure("0"), "nothing was thrown");
}

/// Runs `wait` on a thread of its own, as the worker would, and `end` once it blocks for sure or is about to.
template <class Wait, class End>
void expectWaitEnds(Wait wait, End end) {
    std::atomic<bool> ended{false};
    std::thread worker([&] {
        wait();
        ended = true;
    });
    EXPECT_TRUE(waitUntil([&] {
        end();
        return ended.load();
    }));
    worker.join();
}

TEST_F(Link, EveryWaitForAClientCanBeEnded) {
    lf_openRealTraffic();
    expectWaitEnds(lf_waitForRealTraffic, lf_cancelRealTrafficWait);
    EXPECT_FALSE(realTrafficConnected());
    expectWaitEnds(lf_sendUserPosition, lf_cancelRealTrafficWait);
    expectWaitEnds(lf_waitForRealTraffic, [] { exitRequested = true; });
    exitRequested = false;
    expectWaitEnds(lf_sendUserPosition, [] { userClosed = true; });
    userClosed = false;
    expectWaitEnds(lf_waitForRealTraffic, lf_closeRealTraffic);
    EXPECT_EQ(realTrafficPort(), 0);
}

TEST_F(Link, WaitForTheVersionCanBeEnded) {
    lf_openRealTraffic();
    Client mute(realTrafficPort());
    std::string asked;
    expectWaitEnds([] { lf_waitForRealTraffic(); },
                   [&] {
                       asked = asked.empty() ? mute.command() : asked;
                       exitRequested = true;
                   });
    EXPECT_EQ(asked, "Qs999=version");
    EXPECT_TRUE(waitingForRealTraffic);
    lf_closeRealTraffic();
    EXPECT_EQ(mute.command(), "exit");
}

TEST_F(Link, CancelWithoutAWaitDoesNotEndTheNextOne) {
    lf_cancelRealTrafficWait();
    lf_openRealTraffic();
    lf_cancelRealTrafficWait();
    Client client(realTrafficPort());
    client.say("{}");
    lf_waitForRealTraffic();
    EXPECT_TRUE(realTrafficConnected());
}

TEST_F(Link, NoWaitBeginsOnceAnExitHasBegun) {
    lf_openRealTraffic();
    exitReason = ExitReason::SimClosed;
    lf_sendUserPosition();
    EXPECT_FALSE(realTrafficConnected());
}

TEST_F(Link, RealTrafficIsFoundByItsProgramFile) {
    lf_detectRealTraffic();
    EXPECT_FALSE(realTrafficHere);
    EXPECT_EQ(messageLine().message, "RealTraffic not detected at this PC");
    folder().write("user/roaming/InsideSystems/RealTraffic.jar", "");
    lf_detectRealTraffic();
    EXPECT_TRUE(realTrafficHere);
    EXPECT_EQ(newLog(), "RealTraffic not detected at this PC\nRealTraffic detected at this PC\n");
}

} // namespace
