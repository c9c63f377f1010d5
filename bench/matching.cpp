// Matching with 60,000 liveries and 500,000 registrations loaded, and reading the store of those liveries
// beside the floor: pugixml's parse of the same file and nothing else. The counter
// "of parse" is the ratio of reading the store to the bare parse in the same run.

#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"
#include "core/random.h"
#include "tools/kestrane-data/matchtable.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <pugixml.hpp>

namespace {

using namespace kst;

constexpr int liveryCount = 60'000;
constexpr int registrationCount = 500'000;
constexpr int modelCount = 600;
constexpr int airlineCount = 900;
constexpr int groupCount = 130;

std::string modelCode(std::size_t number) {
    return fmt::format("M{:03}", number % modelCount);
}

std::string airlineCode(std::size_t number) {
    number %= airlineCount;
    return {static_cast<char>('A' + number / 100), static_cast<char>('A' + number / 10 % 10),
            static_cast<char>('A' + number % 10)};
}

std::string registration(std::size_t number) {
    return fmt::format("{}-{:05}", number % 2 == 0 ? "D" : "PH", number);
}

std::vector<LiveryData> drawLiveries(std::mt19937& random) {
    std::vector<LiveryData> liveries;
    for (int i = 0; i < liveryCount; ++i) {
        const std::string airline = i % 20 == 0   ? std::string(genericAirline)
                                    : i % 15 == 0 ? std::string(privateAirline)
                                                  : airlineCode(random() % airlineCount);
        const std::string model = modelCode(random() % 300);
        liveries.push_back({airline, model, fmt::format("Painted {} of {} number {}", model, airline, i),
                            i % 6 == 0 ? registration(random() % registrationCount) : "", 0, i % 12 == 0});
    }
    std::sort(liveries.begin(), liveries.end());
    return liveries;
}

void fillReference(std::mt19937& random) {
    std::vector<ReferenceModel> models;
    for (unsigned i = 0; i < modelCount; ++i) {
        models.push_back({modelCode(i), static_cast<Category>(random() % categoryCount), 30.0});
    }
    setReferenceForTest(models);
    ReferenceTables& tables = referenceTables();
    for (int i = 0; i < groupCount; ++i) {
        std::vector<std::string> group;
        for (unsigned k = 0; k < 2 + random() % 8; ++k) {
            group.push_back(modelCode(random() % modelCount));
        }
        std::sort(group.begin(), group.end());
        tables.similarLists.push_back(std::move(group));
    }
    for (unsigned i = 0; i < registrationCount; ++i) {
        tables.regcodeTable.insert(registration(i),
                                   {airlineCode(random() % airlineCount), modelCode(random()),
                                    i % 5 == 0 ? airlineCode(random() % airlineCount) : "", i % 30 == 0});
    }
}

double seconds(std::clock_t since) {
    return static_cast<double>(std::clock() - since) / CLOCKS_PER_SEC;
}

void match(benchmark::State& state) {
    std::mt19937 random(6);
    seedRandom(6);
    fillReference(random);
    const std::clock_t begin = std::clock();
    data::buildMatchTables(drawLiveries(random));
    state.counters["build ms"] = seconds(begin) * 1e3;
    std::vector<AcBase> fleet(4096);
    for (AcBase& ac : fleet) {
        // As the engine has it when the aircraft enters: known to the reference database, or private.
        const bool known = random() % 3 != 0;
        std::string regcode = registration(random() % registrationCount);
        std::erase(regcode, '-');
        ac.regcode = known ? regcode : "";
        ac.airline = known ? gf_regcodeAirline(regcode) : std::string(privateAirline);
        ac.acType = known ? gf_regcodeModel(regcode) : modelCode(random());
        ac.category = gf_category(ac.acType);
        ac.cargo = random() % 20 == 0;
    }
    matchSteps = {};
    std::size_t next = 0;
    for (auto _ : state) {
        AcBase& ac = fleet[next++ % fleet.size()];
        ac.liveryTitle = {};
        benchmark::DoNotOptimize(gf_matchLivery(ac));
    }
    const auto matches = static_cast<double>(state.iterations());
    double matched = 0.0;
    for (std::size_t i = 0; i < matchSteps.size(); ++i) {
        state.counters[fmt::format("rung {} %", i + 1)] = 100.0 * matchSteps[i] / matches;
        matched += matchSteps[i];
    }
    state.counters["none %"] = 100.0 * (matches - matched) / matches;
    resetMatching();
    setReferenceForTest({});
}
BENCHMARK(match);

void readStore(benchmark::State& state) {
    namespace fs = std::filesystem;
    const fs::path before = fs::current_path();
    const fs::path folder = fs::temp_directory_path() / "kestrane-bench-store";
    fs::create_directories(folder / "output");
    fs::current_path(folder);
    std::mt19937 random(6);
    scannedLiveries = drawLiveries(random);
    if (!lf_saveLiveries()) {
        std::abort();
    }
    double read = 0.0;
    double parse = 0.0;
    for (auto _ : state) {
        scannedLiveries = {};
        malloc_trim(0); // each without memory that the one before left behind, as at the start of the program
        std::clock_t begin = std::clock();
        lf_readLiveries();
        const double taken = seconds(begin);
        read += taken;
        malloc_trim(0);
        begin = std::clock();
        {
            pugi::xml_document document;
            if (!document.load_file(liveriesStorePath().c_str())) {
                std::abort();
            }
        }
        parse += seconds(begin);
        state.SetIterationTime(taken);
    }
    state.counters["of parse"] = read / parse;
    state.SetItemsProcessed(state.iterations() * liveryCount);
    scannedLiveries = {};
    fs::current_path(before);
    fs::remove_all(folder);
}
BENCHMARK(readStore)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
