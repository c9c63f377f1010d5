// What the scan of add-on airports costs: the look into the head of files that hold no airports, beside
// opening them and reading their first bytes; and the decoding of airports, beside reading the same file into
// memory. The counters "of floor" are the ratios, measured in the same run.

#include "bench/support/besidefloor.h"
#include "scanner/bglfile.h"
#include "tools/bglscenery/bglwriter.h"
#include "tools/bglscenery/sceneryset.h"

#include <array>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace kst;

bool readFirstBytes(const fs::path& path) {
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path, std::ios::binary);
    std::array<char, 56> bytes;
    return static_cast<bool>(file.read(bytes.data(), bytes.size()));
}

// Both sides go through the files in turn, in batches, so that a change of the machine's speed meets both.
void filesWithoutAirports(benchmark::State& state) {
    constexpr std::size_t count = 20000;
    constexpr std::size_t batch = 500;
    const WorkFolder folder("bgl");
    std::vector<fs::path> files;
    for (std::size_t i = 0; i < count; ++i) {
        const auto file = scenery::plainFile(1 + static_cast<unsigned>(i % 8));
        files.emplace_back("plain" + std::to_string(i) + ".bgl");
        std::ofstream(files.back(), std::ios::binary) << scenery::bglBytes(file);
    }
    BesideFloor times(state);
    std::size_t found = 0;
    std::size_t turn = 0;
    for (auto _ : state) {
        double taken = 0.0;
        double floor = 0.0;
        for (std::size_t first = 0; first < count; first += batch) {
            const auto look = [&] {
                for (std::size_t i = first; i < first + batch; ++i) {
                    found += lf_bglHasAirports(files[i]) ? 1 : 0;
                }
            };
            const auto readOnly = [&] {
                for (std::size_t i = first; i < first + batch; ++i) {
                    benchmark::DoNotOptimize(readFirstBytes(files[i]));
                }
            };
            // Whoever comes second finds the files in the processor's caches.
            if (turn++ % 2 == 0) {
                taken += wallSeconds(look);
                floor += wallSeconds(readOnly);
            } else {
                floor += wallSeconds(readOnly);
                taken += wallSeconds(look);
            }
        }
        times.add(taken, floor);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
    state.counters["found"] = static_cast<double>(found);
    times.report("ms", 1e3);
}
BENCHMARK(filesWithoutAirports)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Airports with so many stands each, among so much that is passed over.
scenery::File fileOf(unsigned airports, unsigned stands, unsigned otherSubRecords) {
    scenery::Airport airport;
    airport.names = {"Field of measurements"};
    airport.otherSubRecords = otherSubRecords;
    for (unsigned i = 0; i < stands; ++i) {
        airport.parkings.push_back({12 + i % 26, i, 9, 20.0F, 90.0F, 47.0, 8.0, {"SWR"}});
    }
    scenery::File file;
    for (unsigned i = 0; i < airports; ++i) {
        airport.extended = i % 2 == 1;
        file.airports.push_back(airport);
    }
    return file;
}

std::size_t readWhole(const fs::path& path, std::vector<std::byte>& content) {
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return static_cast<std::size_t>(file.gcount());
}

void decode(benchmark::State& state, const scenery::File& file) {
    const WorkFolder folder("bgl");
    const std::string bytes = scenery::bglBytes(file);
    const fs::path path = folder.path() / "airports.bgl";
    std::ofstream(path, std::ios::binary) << bytes;
    std::vector<std::byte> content(bytes.size());
    std::size_t stands = 0;
    BglOutput output;
    output.begun = [](AirportFile&) {};
    output.done = [&](AirportFile& airport) { stands += airport.stands.size(); };
    output.report = [](std::string_view) {};
    BesideFloor times(state);
    for (auto _ : state) {
        const double floor = wallSeconds([&] { benchmark::DoNotOptimize(readWhole(path, content)); });
        times.add(wallSeconds([&] { decodeBgl(BglWords(content), "airports.bgl", output); }), floor);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
    state.counters["stands"] = static_cast<double>(stands) / static_cast<double>(state.iterations());
    times.report("ms", 1e3);
}

void manyAirports(benchmark::State& state) {
    // 60 stands to 12 KB of runways, taxiways and aprons, as airports usually have.
    decode(state, fileOf(500, 60, 220));
}
BENCHMARK(manyAirports)->UseManualTime()->Unit(benchmark::kMillisecond);

void nothingButStands(benchmark::State& state) {
    decode(state, fileOf(100, 1000, 0));
}
BENCHMARK(nothingButStands)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
