// What the Traffic Reader's filter costs per line, beside the floor: cutting the same line at its commas and
// converting its eight numbers, nothing else. The counter "of floor" is the ratio of the two, measured in the
// same run.

#include "core/display.h"
#include "core/log.h"
#include "core/runstate.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "feed/trafficreader.h"

#include <array>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace kst;

constexpr std::string_view acceptedLine =
    "RTTFC,11259137,47.166612,8.012345,12000,-640,0,271.50,310.4,SWR8AB,A320,HB-IJD,LSZH,EGLL,1700000000.5,"
    "X2,"
    "SWR8AB,adsb_mlat,0,310,355,0.62,0,-4.50,260,270.25,0,1013,A3,0,0,0,0,120,8000,12032,1013,";
constexpr std::string_view farLine =
    "RTTFC,11259137,51.469312,-0.461545,12000,-640,0,271.50,310.4,SWR8AB,A320,HB-IJD,LSZH,EGLL,1700000000.5,"
    "X2,"
    "SWR8AB,adsb_mlat,0,310,355,0.62,0,-4.50,260,270.25,0,1013,A3,0,0,0,0,120,8000,12032,1013,";
// Near in latitude and longitude, yet just beyond the range.
constexpr std::string_view cornerLine =
    "RTTFC,11259137,47.5412,8.8045,12000,-640,0,271.50,310.4,SWR8AB,A320,HB-IJD,LSZH,EGLL,1700000000.5,X2,"
    "SWR8AB,adsb_mlat,0,310,355,0.62,0,-4.50,260,270.25,0,1013,A3,0,0,0,0,120,8000,12032,1013,";
constexpr std::string_view malformedLine =
    "RTTFC,11259137,47.166612,8.012345,12000,-640,0,271.50,fast,SWR8AB,A320,HB-IJD,LSZH,EGLL,1700000000.5,X2,"
    "SWR8AB,adsb_mlat,0,310,355,0.62,0,-4.50,260,270.25,0,1013,A3,0,0,0,0,120,8000,12032,1013,";

constexpr std::array<std::size_t, 8> numberFields = {2, 3, 4, 5, 7, 8, 14, 20};

double convert(std::string_view text) {
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

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
        sum += convert(fields[index]);
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

template <class Work>
double nanosecondsPerLine(int lines, Work work) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < lines; ++i) {
        work();
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    return taken.count() / lines;
}

// Both sides run in turn, in batches, so that a change of the machine's speed meets both. The worker's side,
// which takes the records, is not part of the time.
void processLine(benchmark::State& state, std::string_view line) {
    prepare();
    constexpr int batch = 500;
    std::vector<std::string_view> fields;
    std::vector<FeedMessage> taken;
    double lineNs = 0.0;
    double floorNs = 0.0;
    trafficReader.line = line.data();
    trafficReader.lineLength = line.size();
    for (auto _ : state) {
        const double ns = nanosecondsPerLine(batch, [] { trafficReader.processLine(); });
        takeFeedMessages(taken, batch);
        lineNs += ns;
        floorNs += nanosecondsPerLine(batch, [&] { benchmark::DoNotOptimize(floorOf(line, fields)); });
        state.SetIterationTime(ns * batch * 1e-9);
    }
    state.SetItemsProcessed(state.iterations() * batch);
    state.counters["line ns"] = lineNs / static_cast<double>(state.iterations());
    state.counters["floor ns"] = floorNs / static_cast<double>(state.iterations());
    state.counters["of floor"] = lineNs / floorNs;
    resetFeedQueue();
}

BENCHMARK_CAPTURE(processLine, accepted, acceptedLine)->UseManualTime();
BENCHMARK_CAPTURE(processLine, outOfRange, farLine)->UseManualTime();
BENCHMARK_CAPTURE(processLine, justOutOfRange, cornerLine)->UseManualTime();

// With the log open, as in a real run: nearly all of a flood's lines are counted there instead of written.
void processMalformed(benchmark::State& state) {
    namespace fs = std::filesystem;
    const fs::path before = fs::current_path();
    const fs::path folder = fs::temp_directory_path() / "kestrane-bench-feedline";
    fs::create_directories(folder);
    fs::current_path(folder);
    openLog();
    processLine(state, malformedLine);
    closeLog();
    fs::current_path(before);
    fs::remove_all(folder);
}
BENCHMARK(processMalformed)->UseManualTime();

} // namespace
