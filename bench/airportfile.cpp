// What it takes to load an airport file of 500 stands with 30,000 observations, beside the floor: reading and
// parsing the same file and nothing else. And what it takes to find the airport at a position among 44,000.
// The counter "of floor" is the ratio of the two in processor time, measured in turn in the same run; "least
// ms" is the shortest time that the worker waited, on all processors of the machine.

#include "parking/airportfile.h"
#include "core/geodesy.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "model/units.h"
#include "parking/airportfetch.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"
#include "scanner/airportdirectory.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <limits>
#include <malloc.h>
#include <random>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace {

using namespace kst;

constexpr int standCount = 500;
constexpr int optionsPerStand = 60;
const std::string location = "airports/my_thirdparty/TEST.xml";

/// A folder of its own as the working directory, with the airport's file in it.
class Folder {
public:
    Folder() : before_(std::filesystem::current_path()) {
        path_ = std::filesystem::temp_directory_path() / "kestrane-bench-airportfile";
        std::filesystem::create_directories(path_ / "airports" / "my_thirdparty");
        std::filesystem::current_path(path_);
        setParkAirport(ParkAirportFacts{"TEST", "Testville", {47.0, 8.0}, 0.0});
    }
    ~Folder() {
        clearLoadedAirport();
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(path_);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

/// Rows of stands 60 m apart as at a large airport, each with observations as they come from the feed.
void writeAirport() {
    seedRandom(1);
    pugi::xml_document document;
    addAirportParameter(document.append_child("parameters"), "altitude", "1416");
    const pugi::xml_node parkpositions = document.append_child("parkpositions");
    for (int i = 0; i < standCount; ++i) {
        ParkPos stand;
        stand.id = fmt::format("A{}", i);
        stand.latitude = 47.0 + i / 25 * 100.0 / metresPerNm / 60.0;
        stand.longitude = 8.0 + i % 25 * 60.0 / metresPerNm / 41.0;
        stand.heading = 1.0;
        stand.radius = 25.0 / metresPerNm;
        for (int k = 0; k < optionsPerStand; ++k) {
            ParkOption option{.airl = "SWR",
                              .type = "A320",
                              .reg = fmt::format("HB-{:04}", randomBelow(9999)),
                              .cs = fmt::format("SWR{}", randomBelow(999)),
                              .cs2 = fmt::format("SWR{}", randomBelow(999)),
                              .hours = {},
                              .seq = 1,
                              .day = k % 7 + 1};
            for (std::uint32_t begin = randomBelow(44), hh = 0; hh < 4; ++hh) {
                option.hours.set(begin + hh);
            }
            stand.options.push_back(option);
        }
        addParkOptions(addParkPos(parkpositions, stand), stand);
    }
    document.save_file(location.c_str());
}

double nanoseconds(auto work) {
    // Each work begins without memory that the one before left behind, as it does in the program.
    malloc_trim(0);
    // Processor time: other work on the machine does not count.
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) * (1e9 / CLOCKS_PER_SEC);
}

void loadAirport(benchmark::State& state) {
    const Folder folder;
    writeAirport();
    double loadNs = 0.0;
    double floorNs = 0.0;
    double leastMs = std::numeric_limits<double>::max(); // elapsed; what others take comes on top
    for (auto _ : state) {
        clearLoadedAirport();
        const auto begin = std::chrono::steady_clock::now();
        const double ns = nanoseconds([] {
            if (!gf_readApf(location).empty()) {
                std::abort();
            }
        });
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - begin;
        leastMs = std::min(leastMs, elapsed.count());
        floorNs += nanoseconds([] {
            pugi::xml_document document;
            benchmark::DoNotOptimize(document.load_file(location.c_str()));
        });
        loadNs += ns;
        state.SetIterationTime(ns * 1e-9);
    }
    state.counters["load ms"] = loadNs / static_cast<double>(state.iterations()) * 1e-6;
    state.counters["least ms"] = leastMs;
    state.counters["floor ms"] = floorNs / static_cast<double>(state.iterations()) * 1e-6;
    state.counters["of floor"] = loadNs / floorNs;
}
BENCHMARK(loadAirport)->UseManualTime();

// The floor is one distance per airport.
void closestAirport(benchmark::State& state) {
    constexpr int airportCount = 44000;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> latitude(-60.0, 70.0);
    std::uniform_real_distribution<double> longitude(-180.0, 180.0);
    std::vector<AirportEntry> directory;
    for (int i = 0; i < airportCount; ++i) {
        directory.push_back({fmt::format("{:04X}", i), "", latitude(random), longitude(random), 0.0});
    }
    double findNs = 0.0;
    double floorNs = 0.0;
    for (auto _ : state) {
        const LatLon position{latitude(random), longitude(random)};
        const double ns =
            nanoseconds([&] { benchmark::DoNotOptimize(lf_airportsNear(directory, position)); });
        floorNs += nanoseconds([&] {
            for (const AirportEntry& entry : directory) {
                benchmark::DoNotOptimize(gf_distanceNm(position, entry.position()));
            }
        });
        findNs += ns;
        state.SetIterationTime(ns * 1e-9);
    }
    state.counters["of floor"] = findNs / floorNs;
}
BENCHMARK(closestAirport)->UseManualTime();

} // namespace
