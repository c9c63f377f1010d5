// Both readers as threads behind real UDP sockets.

#include "feedtest.h"

#include "core/clock.h"

#include <chrono>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

namespace {

using namespace kst;
using namespace kst::test;
using asio::ip::udp;

class Readers : public FeedTest {
protected:
    static void startTraffic() {
        startTrafficReader(0);
        ASSERT_NE(trafficReader.port(), 0);
    }
    void sendTraffic(const std::string& bytes) { send(trafficReader.port(), bytes); }
    void sendWeather(const std::string& bytes) { send(qnhReader.port(), bytes); }

    /// Of the weather's reader and the traffic's.
    static std::pair<int, int> status() {
        return {statusValues().weatherStatus, statusValues().trafficStatus};
    }
    /// Waits for as many records and gives their identities.
    static std::vector<std::uint32_t> hexids(std::size_t count) {
        std::vector<std::uint32_t> all;
        std::vector<FeedMessage> some;
        waitUntil([&] {
            takeFeedMessages(some, count);
            for (const FeedMessage& record : some) {
                all.push_back(record.hexid);
            }
            return all.size() >= count;
        });
        EXPECT_EQ(all.size(), count);
        return all;
    }

private:
    void send(int port, const std::string& bytes) {
        const udp::endpoint endpoint(asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port));
        ASSERT_EQ(socket_.send_to(asio::buffer(bytes), endpoint), bytes.size());
    }

    asio::io_context context_;
    udp::socket socket_{context_, udp::v4()};
};

TEST_F(Readers, DatagramsBecomeRecordsAndPressure) {
    startQnhReader(0);
    EXPECT_EQ(status(), std::pair(1, 3));
    startTraffic();
    EXPECT_EQ(status(), std::pair(1, 1));
    EXPECT_EQ(newLog(), "QNH Reader connected\nTraffic Reader connected\n");
    sendTraffic(trafficLine());
    sendTraffic(trafficLine({{1, "20001"}}));
    EXPECT_EQ(hexids(2), (std::vector<std::uint32_t>{4921863, 20001}));
    sendWeather(R"({"QNH":"1002"})");
    EXPECT_TRUE(waitUntil([] { return qnh == 1002; }));
    stopReaders();
    EXPECT_EQ(status(), std::pair(3, 3));
    EXPECT_EQ(newLog(), "QNH Reader has stopped\nTraffic Reader has stopped\n");
    EXPECT_FALSE(readerError);
}

TEST_F(Readers, SilentReaderStopsAtOnceAndStartsAnew) {
    for (int run = 0; run < 20; ++run) {
        startTraffic();
        startQnhReader(0);
        const auto begin = monotonicNow();
        stopReaders();
        EXPECT_LT(monotonicNow() - begin, std::chrono::seconds{5});
        EXPECT_EQ(trafficReader.port(), 0);
    }
    startTraffic();
    const int port = trafficReader.port();
    startTrafficReader(port); // replaces the one that runs
    EXPECT_EQ(trafficReader.port(), port);
    EXPECT_FALSE(readerError);
    EXPECT_EQ(trafficReader.received, 0U);
    sendTraffic(trafficLine());
    hexids(1);
    EXPECT_EQ(trafficReader.received, 1U);
}

TEST_F(Readers, TakenPortIsReportedAndEndsTheReader) {
    asio::io_context context;
    const udp::socket taken(context, udp::endpoint(asio::ip::address_v4::loopback(), 0));
    startTrafficReader(taken.local_endpoint().port());
    EXPECT_TRUE(readerError);
    const std::string text =
        "The TrafficReader  has stopped with an error: sys error 32: bind to stream socket failed "
        "with error: 10048 Address already in use";
    EXPECT_EQ(messageLine().message, text);
    EXPECT_EQ(newLog(), "Traffic Reader disconnected\n" + text + "\n");
    readerError = false;
    startQnhReader(taken.local_endpoint().port());
    EXPECT_TRUE(readerError);
    EXPECT_NE(messageLine().message.find("The WeatherReader has stopped with an error: sys error 32"),
              std::string::npos);
}

TEST_F(Readers, NoReaderStartsOnceAnExitIsUnderWay) {
    exitRequested = true;
    startTrafficReader(0);
    EXPECT_EQ(trafficReader.port(), 0);
    EXPECT_EQ(newLog(), "");
}

TEST_F(Readers, RepeatedDatagramsAreDroppedOnlyFromAnotherPc) {
    const auto send = [&] {
        for (const char* const hexid : {"20001", "20001", "20002", "20001", "20001", "20003"}) {
            sendTraffic(trafficLine({{1, hexid}}));
        }
    };
    startTraffic();
    send();
    EXPECT_EQ(hexids(6), (std::vector<std::uint32_t>{20001, 20001, 20002, 20001, 20001, 20003}));
    stopReaders();
    EXPECT_EQ(reasonTotal(Reason::LineRepeated), 0U);
    realTrafficHere = false;
    startTraffic();
    send();
    EXPECT_EQ(hexids(4), (std::vector<std::uint32_t>{20001, 20002, 20001, 20003}));
    EXPECT_EQ(reasonTotal(Reason::LineRepeated), 2U);
    EXPECT_EQ(trafficReader.received, 6U) << "a repeated datagram is a sign of life";
}

TEST_F(Readers, LongEmptyAndBrokenDatagramsLeaveTheReaderAlive) {
    startTraffic();
    newLog();
    sendTraffic("");
    sendTraffic(std::string(FeedReader::bufferSize, 'A'));
    sendTraffic(std::string(60'000, ','));
    sendTraffic(std::string(FeedReader::bufferSize - 1, ','));
    sendTraffic(std::string("\0, VEH", 6));
    sendTraffic(trafficLine() + std::string(1, '\0') + "rest, VEH");
    EXPECT_EQ(hexids(1), std::vector<std::uint32_t>{4921863});
    EXPECT_EQ(trafficReader.received, 3U);
    EXPECT_EQ(reasonTotal(Reason::LineTooLong), 2U);
    EXPECT_EQ(reasonTotal(Reason::MalformedLine), 2U);
    EXPECT_EQ(happeningTotal(Happening::LinesHeard), 5U);
    EXPECT_EQ(newLog().rfind("buffer overrun: 16384 bytes\nbuffer overrun: 16384 bytes\n", 0), 0U);
}

TEST_F(Readers, SilenceShowsInTheStatusAndEnds) {
    startQnhReader(0);
    startTraffic();
    const auto heard = [](FeedReader& reader, std::uint32_t count) {
        return waitUntil([&] { return reader.received == count; });
    };
    lf_checkReadersAlive();
    EXPECT_EQ(status(), std::pair(1, 1)) << "not checked while RealTraffic is not connected";
    updateStatus(Band::Status, [](StatusValues& values) { values.rtConnected = true; });
    lf_checkReadersAlive();
    EXPECT_EQ(status(), std::pair(2, 2));
    sendTraffic("anything");
    ASSERT_TRUE(heard(trafficReader, 1));
    lf_checkReadersAlive();
    EXPECT_EQ(status(), std::pair(2, 1));
    // A usable pressure shows at once, another datagram at the next check.
    sendWeather(R"({"QNH":1002})");
    EXPECT_TRUE(waitUntil([&] { return status() == std::pair(1, 1); }));
    lf_checkReadersAlive();
    EXPECT_EQ(status(), std::pair(1, 2));
    lf_checkReadersAlive();
    sendWeather("{}");
    ASSERT_TRUE(heard(qnhReader, 2));
    lf_checkReadersAlive();
    EXPECT_EQ(status(), std::pair(1, 2));
}

TEST_F(Readers, ResetGivesTheElevationOfTheParkAirportBack) {
    const std::string low = trafficLine({{4, "1440"}, {8, "100"}});
    setParkAirport(nearAirport());
    setFieldElevation(1400.0);
    EXPECT_FALSE(accepted(low).airborne);
    lf_resetReaders();
    EXPECT_FALSE(accepted(low).airborne) << "the link was lost, the airport is still loaded";
    setParkAirport(std::nullopt);
    lf_resetReaders();
    EXPECT_TRUE(accepted(low).airborne);
}

} // namespace
