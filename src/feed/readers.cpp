#include "feed/readers.h"

#include "core/display.h"
#include "core/log.h"
#include "core/runstate.h"
#include "feed/qnhreader.h"
#include "feed/trafficreader.h"

#include <exception>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr int dataFlows = 1;
constexpr int noData = 2;
constexpr int notRunning = 3;

/// How a reader's thread is named in the log and in messages, and which status is its own.
struct ReaderFacts {
    FeedReader& reader;
    std::string_view logName;
    std::string_view messageName;
    int StatusValues::*status;
};

const ReaderFacts weather{qnhReader, "QNH Reader", "WeatherReader", &StatusValues::weatherStatus};
// The blank at the end of the name is part of the message.
const ReaderFacts traffic{trafficReader, "Traffic Reader", "TrafficReader ", &StatusValues::trafficStatus};

void setStatus(int StatusValues::*which, int value) {
    updateStatus(Band::Status, [which, value](StatusValues& status) { status.*which = value; });
}

void lf_readerFailed(std::string_view name, std::string_view text) {
    showMessage(fmt::format("The {} has stopped with an error: {}", name, text), true);
    readerError = true;
}

/// Sets the promise once the socket is bound or has failed.
void readUntilStopped(const ReaderFacts& facts, int port, const std::function<void()>& listening,
                      std::promise<void> opened) {
    bool told = false;
    const auto tell = [&] {
        if (!told) {
            told = true;
            opened.set_value();
        }
    };
    const auto fail = [&](std::string_view text) {
        logLine(fmt::format("{} disconnected", facts.logName));
        setStatus(facts.status, notRunning);
        lf_readerFailed(facts.messageName, text);
        tell();
    };
    try {
        facts.reader.openSocket(port);
        listening();
        logLine(fmt::format("{} connected", facts.logName));
        tell();
        facts.reader.receiveLoop();
    } catch (const std::exception& e) {
        fail(e.what());
    } catch (...) {
        fail("Unknown exception");
    }
}

void QnhReaderThread(int port, std::promise<void> opened) {
    readUntilStopped(
        weather, port, [] { setStatus(&StatusValues::weatherStatus, dataFlows); }, std::move(opened));
}

void TrafficReaderThread(int port, std::promise<void> opened) {
    const auto listening = [] {
        updateStatus(Band::Status, [](StatusValues& status) {
            status.trafficStatus = dataFlows;
            status.weatherStatus = dataFlows;
        });
    };
    readUntilStopped(traffic, port, listening, std::move(opened));
}

/// Both threads. The lock guards the thread objects: a start and a stop may meet when an exit begins early.
class ReaderThreads {
public:
    ~ReaderThreads() { stop(); }

    void start(std::thread& thread, FeedReader& reader, void (*body)(int, std::promise<void>), int port) {
        const std::lock_guard lock(mutex_);
        if (stopAsked()) {
            return;
        }
        end(thread, reader);
        reader.resetCounters();
        std::promise<void> opened;
        const std::future<void> ready = opened.get_future();
        thread = std::thread(body, port, std::move(opened));
        ready.wait();
    }

    void stop() {
        const std::lock_guard lock(mutex_);
        end(qnhThread, qnhReader);
        end(trafficThread, trafficReader);
    }

    std::thread qnhThread;
    std::thread trafficThread;

private:
    static void end(std::thread& thread, FeedReader& reader) {
        if (thread.joinable()) {
            reader.requestStop();
            thread.join();
        }
    }

    std::mutex mutex_;
};

ReaderThreads& readerThreads() {
    static ReaderThreads threads;
    return threads;
}

void checkAlive(const ReaderFacts& facts) {
    const bool moved = facts.reader.movedSinceLastCheck();
    const bool wasSilent = facts.reader.silentAtLastCheck.exchange(!moved);
    if (!moved) {
        setStatus(facts.status, noData);
    } else if (wasSilent) {
        setStatus(facts.status, dataFlows);
    }
}

} // namespace

void startQnhReader(int port) {
    readerThreads().start(readerThreads().qnhThread, qnhReader, QnhReaderThread, port);
}

void startTrafficReader(int port) {
    readerThreads().start(readerThreads().trafficThread, trafficReader, TrafficReaderThread, port);
}

void stopReaders() {
    readerThreads().stop();
}

void lf_resetReaders() {
    for (FeedReader* reader :
         {static_cast<FeedReader*>(&qnhReader), static_cast<FeedReader*>(&trafficReader)}) {
        reader->resetCounters();
        reader->silentAtLastCheck = false;
    }
    qnhReader.lastQnh = standardQnh;
    trafficReader.reset();
}

void lf_checkReadersAlive() {
    if (!statusValues().rtConnected) {
        return;
    }
    checkAlive(weather);
    checkAlive(traffic);
}

void setReferencePosition(LatLon position) {
    trafficReader.setReferencePosition(position);
}

void setFieldElevation(std::optional<double> elevationFt) {
    trafficReader.setFieldElevation(elevationFt);
}

void collectSeenTargets(bool on) {
    trafficReader.collectSeen(on);
}

std::vector<std::pair<LatLon, std::string>> seenTargets() {
    return trafficReader.copySeen();
}

} // namespace kst
