// What the Traffic Reader's filter costs per line, beside the floor: cutting the same line at its commas and
// converting its eight numbers, nothing else. The counter "of floor" is the ratio of the two, measured in the
// same run.

#include "bench/support/besidefloor.h"
#include "core/log.h"
#include "core/runstate.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "feed/trafficreader.h"

#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace {

using namespace kst;

/// A line of an aircraft there at such a speed.
std::string lineOf(std::string_view place, std::string_view speed = "310.4") {
    return fmt::format(
        "RTTFC,11259137,{},12000,-640,0,271.50,{},SWR8AB,A320,HB-IJD,LSZH,EGLL,1700000000.5,X2,"
        "SWR8AB,adsb_mlat,0,310,355,0.62,0,-4.50,260,270.25,0,1013,A3,0,0,0,0,120,8000,12032,1013,",
        place, speed);
}

constexpr std::array<std::size_t, 8> numberFields = {2, 3, 4, 5, 7, 8, 14, 20};

double floorOf(std::string_view line, std::vector<std::string_view>& fields) {
    fields.clear();
    for (std::size_t comma = line.find(','); comma != std::string_view::npos; comma = line.find(',')) {
        fields.push_back(line.substr(0, comma));
        line.remove_prefix(comma + 1);
    }
    if (!line.empty()) {
        fields.push_back(line);
    }
    double sum = 0.0;
    for (const std::size_t index : numberFields) {
        double number = 0.0;
        std::from_chars(fields[index].data(), fields[index].data() + fields[index].size(), number);
        sum += number;
    }
    return sum;
}

void prepare() {
    realTrafficHere = true;
    workingRangeNm = 40.0;
    setReferencePosition({47.0, 8.0});
    resetFeedQueue();
    setFeedOpen(true);
}

// Both sides run in turn, in batches, so that a change of the machine's speed meets both. The worker's side,
// which takes the records, is not part of the time.
void processLine(benchmark::State& state, const std::string& line) {
    prepare();
    constexpr int batch = 500;
    std::vector<std::string_view> fields;
    std::vector<FeedMessage> taken;
    BesideFloor times(state);
    const auto batchSeconds = [](auto&& work) {
        return wallSeconds([&] {
            for (int i = 0; i < batch; ++i) {
                work();
            }
        });
    };
    trafficReader.line = line.data();
    trafficReader.lineLength = line.size();
    for (auto _ : state) {
        const double seconds = batchSeconds([] { trafficReader.processLine(); });
        takeFeedMessages(taken, batch);
        times.add(seconds, batchSeconds([&] { benchmark::DoNotOptimize(floorOf(line, fields)); }));
    }
    state.SetItemsProcessed(state.iterations() * batch);
    times.report("ns", 1e9, batch);
    resetFeedQueue();
}

constexpr const char* near = "47.166612,8.012345";
BENCHMARK_CAPTURE(processLine, accepted, lineOf(near))->UseManualTime();
BENCHMARK_CAPTURE(processLine, outOfRange, lineOf("51.469312,-0.461545"))->UseManualTime();
// Near in latitude and longitude, yet just beyond the range.
BENCHMARK_CAPTURE(processLine, justOutOfRange, lineOf("47.5412,8.8045"))->UseManualTime();

// With the log open, as in a real run: nearly all of a flood's lines are counted there instead of written.
void processMalformed(benchmark::State& state) {
    const WorkFolder folder("feedline");
    openLog();
    processLine(state, lineOf(near, "fast"));
    closeLog();
}
BENCHMARK(processMalformed)->UseManualTime();

} // namespace
