// One search for a stand over 500 stands with 60 observations each, beside a floor measured in the same run:
// the plain pass that works out the distance of every stand. Wanted: below 50 microseconds, also where the
// observations decide. The guess where a vanished aircraft stood reads observations of many stands; it is
// made once in an aircraft's life.

#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/stands.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <string>

namespace {

using namespace kst;

constexpr LatLon centre{47.46, 8.55};
constexpr std::size_t standCount = 500;
constexpr std::size_t optionCount = 60;
constexpr std::size_t standsPerRow = 25;
constexpr double rowFt = 500.0;
constexpr double columnFt = 200.0;

/// Rows of stands 61 m apart; in the second layout one row only, at one latitude, which no look at the
/// latitude thins out.
void fillStands(bool oneRow) {
    setReferenceForTest({{"A320", Category::Large, 35.8}});
    auto& stands = parkPositions();
    stands.clear();
    for (std::size_t i = 0; i < standCount; ++i) {
        const auto row = static_cast<double>(oneRow ? 0 : i / standsPerRow);
        const auto column = static_cast<double>(oneRow ? i : i % standsPerRow);
        const LatLon place =
            gf_destination(gf_destination(centre, 0.0, row * rowFt), pi / 2, column * columnFt);
        ParkPos stand;
        stand.id = "S" + std::to_string(i);
        stand.latitude = oneRow ? centre.lat : place.lat;
        stand.longitude = place.lon;
        stand.radius = 20.0 * nmPerMetre;
        for (std::size_t k = 0; k < optionCount; ++k) {
            ParkOption option;
            option.airl = "DLH";
            option.type = "A320";
            option.reg = "D-AI" + std::to_string(i * optionCount + k);
            option.cs = "DLH" + std::to_string(k);
            option.day = static_cast<int>(k % 7) + 1;
            option.hours.set(k % 48);
            option.seq = static_cast<std::uint32_t>(k) + 1;
            stand.options.push_back(option);
        }
        stands.push_back(std::move(stand));
    }
    numberStands(stands);
}

LiveAc aircraft() {
    LiveAc ac;
    ac.callsign = "SWR100";
    ac.airline = "SWR";
    ac.acType = "A320";
    ac.category = Category::Large;
    ac.halfSpanNm = gf_halfWingSpan("A320");
    return ac;
}

double distancePass(LatLon position) {
    double sum = 0.0;
    for (const ParkPos& stand : parkPositions()) {
        sum += gf_distanceNm(position, stand.position());
    }
    return sum;
}

/// Processor time of so many rounds, so that what else runs on the machine does not count.
template <typename Work>
double processorSeconds(int rounds, Work&& work) {
    const std::clock_t begin = std::clock();
    for (int i = 0; i < rounds; ++i) {
        benchmark::DoNotOptimize(work());
    }
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

template <typename Search>
void measure(benchmark::State& state, Search&& search) {
    constexpr int rounds = 50;
    fillStands(state.range(0) == 1);
    const LiveAc ac = aircraft();
    // On a taxiway between two stands 61 m away, so that what was seen there decides.
    const LatLon position = gf_destination(parkPositions()[12].position(), pi, rowFt / 2.5);
    double floor = 0.0;
    double seconds = 0.0;
    for (auto unused : state) {
        (void)unused;
        floor += processorSeconds(rounds, [&] { return distancePass(position); });
        const double took = processorSeconds(rounds, [&] { return search(position, ac); });
        seconds += took;
        state.SetIterationTime(took);
    }
    const double searches = rounds * static_cast<double>(state.iterations());
    state.counters["us"] = 1e6 * seconds / searches;
    state.counters["floor_us"] = 1e6 * floor / searches;
    state.counters["times_floor"] = seconds / floor;
    resetEngine(false);
    parkPositions().clear();
}

void standNearby(benchmark::State& state) {
    measure(state, [](LatLon position, const LiveAc& ac) {
        return lf_searchStandNearby(position, ac, 20.0 * nmPerMetre, true);
    });
}

void standOfVanished(benchmark::State& state) {
    measure(state, [](LatLon, const LiveAc& ac) { return lf_searchSoftStand({3, 20}, ac, true); });
}

BENCHMARK(standNearby)->Arg(0)->Arg(1)->ArgName("one_row")->UseManualTime();
BENCHMARK(standOfVanished)->Arg(0)->ArgName("one_row")->UseManualTime();

} // namespace
