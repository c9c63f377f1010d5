// The population of an airport of 500 stands with 60 observations each, worked out in one pass, and its
// renewal, beside a floor measured in the same run: a bare walk over all observations. Wanted: no pass above
// 10 ms.

#include "parking/staticparking.h"
#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/tables.h"
#include "parking/parkrequests.h"
#include "parking/population.h"
#include "parking/renewal.h"
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
constexpr double columnFt = 100.0; ///< less than a radius: each stand overlaps the next ones
constexpr int hoursOfVisit = 3;

void fillStands() {
    setReferenceForTest({{"A320", Category::Large, 35.8}});
    seedRandom(1);
    auto& stands = parkPositions();
    stands.clear();
    for (std::size_t i = 0; i < standCount; ++i) {
        const LatLon row = gf_destination(centre, 0.0, static_cast<double>(i / standsPerRow) * rowFt);
        const LatLon place = gf_destination(row, pi / 2, static_cast<double>(i % standsPerRow) * columnFt);
        ParkPos& stand = stands.emplace_back();
        stand.id = "S" + std::to_string(i);
        stand.latitude = place.lat;
        stand.longitude = place.lon;
        stand.radius = 20.0 * nmPerMetre;
        for (std::size_t k = 0; k < optionCount; ++k) {
            ParkOption& option = stand.options.emplace_back();
            // Every third flight is also seen on other stands.
            const std::size_t flight = k % 3 == 0 ? randomBelow(5000) : i * optionCount + k;
            option.airl = "DLH";
            option.type = "A320";
            option.reg = "D-AI" + std::to_string(flight);
            option.cs = "DLH" + std::to_string(flight);
            option.cs2 = k % 2 == 0 ? "DLH" + std::to_string(flight) + "X" : "";
            option.day = static_cast<int>(k % 7) + 1;
            for (std::size_t from = randomBelow(48), h = from; h < from + hoursOfVisit && h < 48; ++h) {
                option.hours.set(h);
            }
            option.seq = static_cast<std::uint32_t>(k) + 1;
        }
    }
    numberStands(stands);
    nowStamp = DayHH{3, 20}.packed();
}

/// What was asked for stands.
void standAll() {
    staticAcs.clear();
    for (const ParkRequest& request : parkQueue) {
        StaticAc& ac = staticAcs.emplace_back();
        const ParkPos& stand = *standBySid(request.sid);
        ac.airline = request.airl;
        ac.acType = request.type;
        ac.regcode = request.reg;
        ac.primaryCallsign = request.cs;
        ac.coupledCallsign = request.cs2;
        ac.callsign = (request.inbound ? request.cs : request.cs2) + "*";
        ac.sid = request.sid;
        ac.standLat = stand.latitude;
        ac.standLon = stand.longitude;
        ac.state = AcState::Live;
        ac.objectId = 1000 + request.sid;
        ac.parkStamp = nowDayHH().back(static_cast<int>(request.offset));
    }
    parkQueue.clear();
}

std::size_t bareWalk() {
    std::size_t count = 0;
    for (const ParkPos& stand : parkPositions()) {
        for (const ParkOption& option : stand.options) {
            count += option.seq != 0 && option.day == 3 && option.hours.test(20) ? 1 : 0;
        }
    }
    return count;
}

/// Processor time, so that what else runs on the machine does not count.
template <typename Work>
double processorSeconds(Work&& work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

template <typename Prepare, typename Work>
void measure(benchmark::State& state, Prepare&& prepare, Work&& work) {
    constexpr int walks = 20;
    for (Parameter* const parameter : allParameters()) {
        parameter->setDefault();
    }
    CUSTOM_PARKING_PERCENTAGE.set(static_cast<int>(state.range(0)));
    double floor = 0.0;
    double sum = 0.0;
    double worst = 0.0;
    std::size_t taken = 0;
    for (auto unused : state) {
        (void)unused;
        fillStands();
        prepare();
        floor += processorSeconds([] {
                     for (int i = 0; i < walks; ++i) {
                         benchmark::DoNotOptimize(bareWalk());
                     }
                 }) /
                 walks;
        const double took = processorSeconds(work);
        taken = parkQueue.size() + staticStayers.size();
        worst = std::max(worst, took);
        sum += took;
        state.SetIterationTime(took);
        resetEngine(false);
        clearPopulation();
    }
    state.counters["ms"] = 1e3 * sum / static_cast<double>(state.iterations());
    state.counters["worst_ms"] = 1e3 * worst;
    state.counters["floor_ms"] = 1e3 * floor / static_cast<double>(state.iterations());
    state.counters["times_floor"] = sum / floor;
    state.counters["aircraft"] = static_cast<double>(taken);
    parkPositions().clear();
}

void firstPopulation(benchmark::State& state) {
    measure(
        state, [] {}, lf_initialParking);
}

void renewal(benchmark::State& state) {
    measure(
        state,
        [] {
            lf_initialParking();
            standAll();
            nowStamp = nowDayHH().next().packed();
        },
        lf_parkingAdjustments);
}

BENCHMARK(firstPopulation)->Arg(30)->Arg(100)->ArgName("share")->UseManualTime()->Iterations(30);
BENCHMARK(renewal)->Arg(30)->Arg(100)->ArgName("share")->UseManualTime()->Iterations(30);

} // namespace
