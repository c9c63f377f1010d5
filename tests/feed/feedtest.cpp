#include "feedtest.h"

#include "core/clock.h"

#include <algorithm>
#include <chrono>

namespace kst::test {

std::string trafficLine(const Changes& changes) {
    std::vector<std::string> fields = {
        "RTTFC",  "4921863", "47.1666", "8.0",  "12000", "-640",         "0",   "271.5",  "310.4",
        "SWR8AB", "A320",    "HB-IJD",  "LSZH", "EGLL",  "1700000000.5", "X2",  "LX8",    "adsb_mlat",
        "0",      "310",     "355",     "0.62", "0",     "-4.5",         "260", "270.25", "0",
        "1013",   "A3",      "0",       "0"};
    for (const auto& [index, text] : changes) {
        fields.at(index) = text;
    }
    std::string line;
    for (const std::string& field : fields) {
        line += field + ",";
    }
    line.pop_back();
    return line;
}

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = monotonicNow() + std::chrono::seconds{10};
    while (!condition()) {
        if (monotonicNow() >= deadline) {
            return false;
        }
        sleepFor(std::chrono::milliseconds{1});
    }
    return true;
}

void giveDatagram(FeedReader& reader, std::string_view bytes) {
    const std::size_t length = std::min(bytes.size(), FeedReader::bufferSize);
    std::copy_n(bytes.data(), length, reader.buffer.data());
    reader.handleDatagram(length);
}

FeedTest::FeedTest() {
    openLog();
    resetRunState();
    resetDisplay();
    resetCounts();
    resetFeedQueue();
    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
    realTrafficHere = true;
    workingRangeNm = 40.0;
    setParkAirport(std::nullopt);
    lf_resetReaders();
    trafficReader.localFeed = true;
    trafficReader.lastLine.clear();
    setReferencePosition(reference);
    setFeedOpen(true);
    newLog();
}

FeedTest::~FeedTest() {
    stopReaders();
    closeLog();
}

std::vector<FeedMessage> FeedTest::feed(std::string_view line) {
    giveDatagram(trafficReader, line);
    std::vector<FeedMessage> messages;
    takeFeedMessages(messages, 1000);
    return messages;
}

FeedMessage FeedTest::accepted(const std::string& line) {
    const std::vector<FeedMessage> messages = feed(line);
    EXPECT_EQ(messages.size(), 1U) << line << "\n" << newLog();
    return messages.empty() ? FeedMessage{} : messages.front();
}

std::string FeedTest::newLog() {
    const std::string log = folder_.read("Log.txt").value_or("");
    std::string added = log.substr(std::min(logRead_, log.size()));
    logRead_ = log.size();
    return added;
}

ParkAirportFacts FeedTest::nearAirport() {
    return {"LSXX", "Test", {47.1, 8.0}, 1400.0};
}

} // namespace kst::test
