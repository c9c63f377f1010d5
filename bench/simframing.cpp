// What a message of the simulator costs on its way in, beside the floor: copying the same bytes once. The
// stream holds the replies of an aircraft scan, 96 bytes each, and arrives in reads as a socket gives them.
// The counter "of floor" is the ratio of the times, measured in the same run.

#include "bench/support/besidefloor.h"
#include "simlink/framing.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"
#include "simlink/sessionstate.h"
#include "simlink/simconnect.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace kst;

constexpr std::size_t messageSize = 96;
constexpr std::size_t messageCount = 1024;

/// Scan replies for one object after the other, all below the ceiling of the height report.
const std::vector<std::byte>& scanReplies() {
    static const std::vector<std::byte> stream = [] {
        std::vector<std::byte> bytes(messageSize * messageCount);
        for (std::size_t i = 0; i < messageCount; ++i) {
            std::byte* message = bytes.data() + i * messageSize;
            const auto put = [&](std::size_t offset, auto value) {
                std::memcpy(message + offset, &value, sizeof value);
            };
            put(0, static_cast<std::uint32_t>(messageSize));
            put(8, std::uint32_t{9});
            put(12, std::uint32_t{101});
            put(16, static_cast<std::uint32_t>(100 + i));
            put(40, 1200.0);
            put(48, 400.0);
            std::memcpy(message + 64, "SWR100", 6);
        }
        return bytes;
    }();
    return stream;
}

/// Copies the stream into a framing in reads of the size it has room for.
template <typename Received>
void pour(PacketFraming& framing, const std::vector<std::byte>& stream, Received received) {
    for (std::size_t at = 0; at < stream.size();) {
        const std::span<std::byte> space = framing.freeSpace();
        const std::size_t count = std::min(space.size(), stream.size() - at);
        std::memcpy(space.data(), stream.data() + at, count);
        at += count;
        received(count);
    }
}

void copy(const std::vector<std::byte>& stream, std::vector<std::byte>& target) {
    std::memcpy(target.data(), stream.data(), stream.size());
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
}

/// A connection whose reads are copies out of the stream.
class CopyTransport : public SimTransport {
public:
    using SimTransport::SimTransport;
    void receive(const std::vector<std::byte>& stream) {
        pour(framing_, stream, [this](std::size_t count) { onReceived(count); });
    }

private:
    void startReceiving() override {}
    void startSending() override {
        std::span<const std::byte> packet;
        while (nextToSend(packet)) {
        }
    }
    void closeStream() override {}
};

std::shared_ptr<CopyTransport> openConnection() {
    std::shared_ptr<CopyTransport> transport;
    setTransportForTest([&](const TransportTarget& target) {
        transport = std::make_shared<CopyTransport>(target.maxReceiveSize);
        return transport;
    });
    lf_openSimSession();
    setTransportForTest({});
    return transport;
}

/// Nanoseconds of one copy of the stream.
double floorNs() {
    const auto& stream = scanReplies();
    std::vector<std::byte> target(stream.size());
    constexpr int rounds = 2000;
    return 1e9 / rounds * wallSeconds([&] {
               for (int i = 0; i < rounds; ++i) {
                   copy(stream, target);
               }
           });
}

template <typename Round>
void measure(benchmark::State& state, Round round) {
    const double seconds = wallSeconds([&] {
        for (auto _ : state) {
            round();
        }
    });
    const double ns = seconds * 1e9 / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * scanReplies().size()));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * messageCount));
    state.counters["of floor"] = ns / floorNs();
}

void copyOnly(benchmark::State& state) {
    std::vector<std::byte> target(scanReplies().size());
    measure(state, [&] { copy(scanReplies(), target); });
}
BENCHMARK(copyOnly);

void framing(benchmark::State& state) {
    PacketFraming cutter(41088);
    measure(state, [&] {
        pour(cutter, scanReplies(), [&](std::size_t count) {
            cutter.advance(count);
            for (std::span<const std::byte> packet; cutter.next(packet);) {
                benchmark::DoNotOptimize(packet.data());
            }
        });
    });
}
BENCHMARK(framing);

/// Up to a callback that does nothing.
void framingAndDispatch(benchmark::State& state) {
    const auto transport = openConnection();
    const auto ignore = [](const void* message, std::uint32_t, void*) { benchmark::DoNotOptimize(message); };
    measure(state, [&] {
        transport->receive(scanReplies());
        SimConnect_CallDispatch(simHandle, ignore, nullptr);
    });
    resetSimSession();
}
BENCHMARK(framingAndDispatch);

/// Up to the height reports that the worker takes.
void framingToWorker(benchmark::State& state) {
    const auto transport = openConnection();
    std::vector<SimCommand> answers;
    measure(state, [&] {
        transport->receive(scanReplies());
        lf_pumpSimMessages();
        takeSimCommands(answers);
        benchmark::DoNotOptimize(answers.data());
    });
    if (answers.size() != messageCount) {
        state.SkipWithError("not every message became a height report");
    }
    resetSimSession();
}
BENCHMARK(framingToWorker);

} // namespace
