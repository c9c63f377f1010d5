// The stand-in as a service, with real sockets on free ports: the test plays the traffic program.

#include "standins/realtraffic/feedservice.h"
#include "standins/realtraffic/options.h"
#include "support/tempfolder.h"
#include "support/thrown.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace kst::standin {
namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;
using asio::ip::udp;

/// A source with one target that reports every 0.1 s, `nm` north of the equator at longitude 0.
class OneTarget : public TrafficSource {
public:
    explicit OneTarget(double nm) : lat_(nm / 60.0) {}
    void takeDue(double seconds, std::vector<TrafficReport>& reports) override {
        for (; next_ <= seconds; next_ += 0.1) {
            TrafficReport report;
            report.at = next_;
            report.hexid = 20000;
            report.callsign = "ABC1";
            report.position = {lat_, 0.0};
            reports.push_back(report);
        }
    }
    bool hasMore() const override { return true; }

private:
    double lat_;
    double next_ = 0.0;
};

const std::string atTheEquator = "Qs121=0;0;0.000000;10000000;0;0.000000;0.000000\r\n";

class FeedServiceTest : public testing::Test {
protected:
    FeedServiceTest()
        : listener_(context_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)),
          traffic_(context_, udp::endpoint(asio::ip::address_v4::loopback(), 0)),
          weather_(context_, udp::endpoint(asio::ip::address_v4::loopback(), 0)), link_(context_) {
        options_.linkPort = listener_.local_endpoint().port();
        options_.trafficPort = traffic_.local_endpoint().port();
        options_.weatherPort = weather_.local_endpoint().port();
        receive(traffic_, trafficBuffer_, trafficLines_);
        receive(weather_, weatherBuffer_, weatherLines_);
    }

    void start(double targetNm, SentLog* sent = nullptr) {
        service_ = std::make_unique<FeedService>(
            context_, options_, [targetNm](LatLon) { return std::make_unique<OneTarget>(targetNm); }, sent);
        service_->start();
    }

    /// Runs the sockets until `done` holds; false when that takes absurdly long.
    template <typename Condition>
    bool runUntil(Condition done) {
        const auto giveUp = asio::steady_timer::clock_type::now() + 30s;
        while (!done() && asio::steady_timer::clock_type::now() < giveUp) {
            context_.run_one_for(100ms);
        }
        return done();
    }

    bool acceptLink() {
        bool accepted = false;
        link_ = tcp::socket(context_);
        listener_.async_accept(link_, [&](const asio::error_code& error) { accepted = !error; });
        return runUntil([&] { return accepted; });
    }

    void tell(const std::string& text) { asio::write(link_, asio::buffer(text)); }

    /// The service with a target at that distance, linked, and knowing that the user is at the equator.
    void startLinked(double targetNm, SentLog* sent = nullptr) {
        start(targetNm, sent);
        ASSERT_TRUE(acceptLink());
        tell(atTheEquator);
    }

    void receive(udp::socket& socket, std::array<char, 4096>& buffer, std::vector<std::string>& lines) {
        socket.async_receive(asio::buffer(buffer), [&](const asio::error_code& error, std::size_t size) {
            if (!error) {
                lines.emplace_back(buffer.data(), size);
                receive(socket, buffer, lines);
            }
        });
    }

    asio::io_context context_;
    tcp::acceptor listener_;
    udp::socket traffic_;
    udp::socket weather_;
    tcp::socket link_;
    std::array<char, 4096> trafficBuffer_{};
    std::array<char, 4096> weatherBuffer_{};
    std::vector<std::string> trafficLines_;
    std::vector<std::string> weatherLines_;
    ServiceOptions options_;
    std::unique_ptr<FeedService> service_;
};

TEST_F(FeedServiceTest, AnswersTheVersionAndSendsTrafficInTheSimulatorsTime) {
    options_.qnhHpa = 1009;
    start(50.0);
    ASSERT_TRUE(acceptLink());
    tell("Qs999=version\r\n");
    std::array<char, 256> reply{};
    std::size_t size = 0;
    link_.async_read_some(asio::buffer(reply), [&](const asio::error_code&, std::size_t n) { size = n; });
    ASSERT_TRUE(runUntil([&] { return size > 0; }));
    EXPECT_EQ(nlohmann::json::parse(std::string(reply.data(), size)).at("level"), 2);
    EXPECT_TRUE(trafficLines_.empty()) << "nothing is known of the user yet";

    tell("Qs123=1000000000000\r\n" + atTheEquator);
    ASSERT_TRUE(runUntil([&] { return trafficLines_.size() >= 3 && !weatherLines_.empty(); }));
    EXPECT_TRUE(trafficLines_[0].starts_with("TRAFFIC,20000,0.833333,0.000000,"));
    EXPECT_NE(trafficLines_[0].find(",10000000"), std::string::npos) << "time stamp: " << trafficLines_[0];
    EXPECT_EQ(nlohmann::json::parse(weatherLines_[0]).at("QNH"), 1009);
}

TEST_F(FeedServiceTest, TargetsBeyondTheRadiusAreNotSent) {
    startLinked(200.0);
    ASSERT_TRUE(runUntil([&] { return service_->counts().linesLeftOut >= 5; }));
    EXPECT_EQ(service_->counts().lines, 0U);
}

TEST_F(FeedServiceTest, ComesBackAfterTheProgramLeft) {
    start(1.0);
    for (int round = 1; round <= 3; ++round) {
        ASSERT_TRUE(acceptLink()) << "round " << round;
        trafficLines_.clear();
        tell(atTheEquator);
        ASSERT_TRUE(runUntil([&] { return !trafficLines_.empty(); })) << "round " << round;
        if (round == 1) {
            tell("exit\r\n");
        } else {
            link_.close();
        }
    }
}

TEST_F(FeedServiceTest, DropsTheLinkAsPlannedIsSilentAndReturns) {
    options_.dropLinkAfterSeconds = 0.3;
    options_.restoreAfterSeconds = 0.5;
    startLinked(1.0);
    char letter = 0;
    bool ended = false;
    link_.async_read_some(asio::buffer(&letter, 1),
                          [&](const asio::error_code& error, std::size_t) { ended = bool(error); });
    ASSERT_TRUE(runUntil([&] { return ended; }));
    const auto linesAtDrop = service_->counts().lines;
    EXPECT_GE(linesAtDrop, 1U);
    ASSERT_TRUE(runUntil([&] { return service_->counts().linesLeftOut >= 3; }));
    EXPECT_EQ(service_->counts().lines, linesAtDrop) << "sent without a link";
    ASSERT_TRUE(acceptLink());
    ASSERT_TRUE(runUntil([&] { return service_->counts().lines > linesAtDrop; }));
}

TEST_F(FeedServiceTest, GarbageComesAtItsRateAndEnds) {
    options_.garbagePerSecond = 1000;
    options_.garbageFromSeconds = 0.0;
    options_.garbageSeconds = 0.5;
    startLinked(1.0);
    ASSERT_TRUE(runUntil([&] { return service_->counts().lines >= 10; }));
    EXPECT_NEAR(static_cast<double>(service_->counts().garbage), 500.0, 1.0);
}

TEST_F(FeedServiceTest, EveryLineSentStandsInTheRecord) {
    const kst::test::TempFolder folder;
    {
        SentLog log(folder.path() / "sent.csv");
        startLinked(1.0, &log);
        ASSERT_TRUE(runUntil([&] { return service_->counts().lines >= 4; }));
    }
    std::istringstream in(folder.read("sent.csv").value_or(""));
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "time,hexid,callsign,registration,type,lat,lon,alt_ft,gs_kt,track_deg,on_ground");
    std::uint64_t lines = 0;
    for (; std::getline(in, line); ++lines) {
        EXPECT_NE(line.find(",20000,ABC1,,,0.016667,0.000000,0,0.0,,0"), std::string::npos) << line;
    }
    EXPECT_EQ(lines, service_->counts().lines);
}

TEST(Options, WhatMakesNoSenseIsRefusedWithItsName) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "--tracks or --generator"},
        {{"--generator", "5", "--tracks", "x.csv"}, "--tracks or --generator"},
        {{"--generator"}, "--generator takes N"},
        {{"--generator", "5", "--traffic", "70000"}, "--traffic"},
        {{"--generator", "many"}, "--generator takes a number"},
        {{"--generator", "5", "--speed", "nan"}, "--speed"},
        {{"--generator", "5", "--garbage", "10"}, "--garbage"},
        {{"--fly"}, "unknown option --fly"},
    };
    for (const auto& entry : cases) {
        const std::string error = kst::test::thrown<std::runtime_error>([&] { readOptions(entry.first); });
        EXPECT_NE(error.find(entry.second), std::string::npos) << error;
    }
    const Options options =
        readOptions({"--start", "60", "--tracks", "a.csv@600,b.csv", "--tcp", "127.0.0.1:5"});
    EXPECT_EQ(options.service.linkPort, 5);
    const auto& files = options.recorded.files;
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].startSeconds, 600.0);
    EXPECT_EQ(files[1].startSeconds, 60.0) << "for the file without a start of its own";
}

} // namespace
} // namespace kst::standin
