// An airport of 500 stands with 60 observations each. One search for a stand, beside the plain pass that
// works out the distance of every stand; wanted: below 50 microseconds, also where the observations decide.
// (The guess where a vanished aircraft stood reads observations of many stands; it is made once in an
// aircraft's life.) The population, worked out in one pass, and its renewal, beside a bare walk over all
// observations; wanted: no pass above 10 ms.

#include "parking/stands.h"
#include "bench/support/besidefloor.h"
#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/parkrequests.h"
#include "parking/population.h"
#include "parking/renewal.h"
#include "parking/staticparking.h"

namespace {

using namespace kst;

constexpr LatLon centre{47.46, 8.55};
constexpr std::size_t standCount = 500;
constexpr std::size_t optionCount = 60;
constexpr std::size_t standsPerRow = 25;
constexpr double rowFt = 500.0;
constexpr double apartFt = 200.0;
constexpr double overlappingFt = 100.0;
constexpr int hoursOfVisit = 3;

void addObservations(ParkPos& stand, std::size_t number) {
    for (std::size_t k = 0; k < optionCount; ++k) {
        ParkOption& option = stand.options.emplace_back();
        // Every third flight is also seen on other stands.
        const std::size_t flight = k % 3 == 0 ? randomBelow(5000) : number * optionCount + k;
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

/// Rows of stands; or one row only, at one latitude, which no look at the latitude thins out.
void fillStands(double columnFt, bool oneRow = false) {
    setReferenceForTest({{"A320", Category::Large, 35.8}});
    seedRandom(1);
    auto& stands = parkPositions();
    stands.clear();
    for (std::size_t i = 0; i < standCount; ++i) {
        const auto row = static_cast<double>(oneRow ? 0 : i / standsPerRow);
        const auto column = static_cast<double>(oneRow ? i : i % standsPerRow);
        const LatLon place =
            gf_destination(gf_destination(centre, 0.0, row * rowFt), pi / 2, column * columnFt);
        ParkPos& stand = stands.emplace_back();
        stand.id = "S" + std::to_string(i);
        stand.latitude = oneRow ? centre.lat : place.lat;
        stand.longitude = place.lon;
        stand.radius = 20.0 * nmPerMetre;
        addObservations(stand, i);
    }
    numberStands(stands);
    nowStamp = DayHH{3, 20}.packed();
}

double distancePass(LatLon position) {
    double sum = 0.0;
    for (const ParkPos& stand : parkPositions()) {
        sum += gf_distanceNm(position, stand.position());
    }
    return sum;
}

template <typename Search>
void search(benchmark::State& state, Search&& searchStand) {
    constexpr int rounds = 50;
    const auto repeated = [](auto&& work) {
        return processorSeconds([&] {
            for (int i = 0; i < rounds; ++i) {
                benchmark::DoNotOptimize(work());
            }
        });
    };
    fillStands(apartFt, state.range(0) == 1);
    LiveAc ac;
    ac.callsign = "SWR100";
    ac.airline = "SWR";
    ac.acType = "A320";
    ac.category = Category::Large;
    ac.halfSpanNm = gf_halfWingSpan("A320");
    // On a taxiway between two stands 61 m away, so that what was seen there decides.
    const LatLon position = gf_destination(parkPositions()[12].position(), pi, rowFt / 2.5);
    BesideFloor times(state);
    for (auto _ : state) {
        const double floor = repeated([&] { return distancePass(position); });
        times.add(repeated([&] { return searchStand(position, ac); }), floor);
    }
    times.report("us", 1e6, rounds);
    resetEngine(false);
    parkPositions().clear();
}

void standNearby(benchmark::State& state) {
    search(state, [](LatLon position, const LiveAc& ac) {
        return lf_searchStandNearby(position, ac, 20.0 * nmPerMetre, true);
    });
}
BENCHMARK(standNearby)->Arg(0)->Arg(1)->ArgName("one_row")->UseManualTime();

void standOfVanished(benchmark::State& state) {
    search(state, [](LatLon, const LiveAc& ac) { return lf_searchSoftStand({3, 20}, ac, true); });
}
BENCHMARK(standOfVanished)->Arg(0)->ArgName("one_row")->UseManualTime();

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

template <typename Prepare>
void populate(benchmark::State& state, Prepare&& prepare, void (*work)()) {
    constexpr int walks = 20;
    for (Parameter* const parameter : allParameters()) {
        parameter->setDefault();
    }
    CUSTOM_PARKING_PERCENTAGE.set(static_cast<int>(state.range(0)));
    std::size_t aircraft = 0;
    BesideFloor times(state);
    for (auto _ : state) {
        fillStands(overlappingFt);
        prepare();
        const double floor = processorSeconds([] {
            for (int i = 0; i < walks; ++i) {
                benchmark::DoNotOptimize(bareWalk());
            }
        });
        times.add(processorSeconds(work), floor / walks);
        aircraft = parkQueue.size() + staticStayers.size();
        resetEngine(false);
        clearPopulation();
    }
    times.report("ms", 1e3);
    state.counters["worst ms"] = 1e3 * times.worst();
    state.counters["aircraft"] = static_cast<double>(aircraft);
    parkPositions().clear();
}

void firstPopulation(benchmark::State& state) {
    populate(
        state, [] {}, [] { lf_initialParking(); });
}
BENCHMARK(firstPopulation)->Arg(30)->Arg(100)->ArgName("share")->UseManualTime()->Iterations(30);

void renewal(benchmark::State& state) {
    const auto populated = [] {
        lf_initialParking();
        standAll();
        nowStamp = nowDayHH().next().packed();
    };
    populate(state, populated, [] { lf_parkingAdjustments(); });
}
BENCHMARK(renewal)->Arg(30)->Arg(100)->ArgName("share")->UseManualTime()->Iterations(30);

} // namespace
