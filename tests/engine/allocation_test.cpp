// The pass over flying and rolling aircraft asks the system for no memory.

#include "core/runstate.h"
#include "engine/feedintake.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "simlink/objectcommands.h"
#include "support/engineworld.h"

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {
std::atomic<std::size_t> allocations = 0;
}

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace kst::test {
namespace {

constexpr std::size_t aircraft = 60;
constexpr std::int32_t begin = 10000;
/// Until each track is as long as it becomes: 30 seconds of feed.
constexpr int ticksToSettle = 4000;
constexpr int ticksCounted = 5000;
constexpr double feedSeconds = 3.0;

/// A flight that turns gently, or a taxi through corners, with a new point each few seconds.
FeedMessage nextMessage(std::size_t number, double seconds) {
    const bool airborne = number % 3 != 0;
    const double gsKt = airborne ? 250.0 : 14.0;
    const double turnPerSecond = airborne ? 0.01 : 0.06;
    const double radiusM = gsKt * metresPerNm / 3600.0 / turnPerSecond;
    const double angle = turnPerSecond * seconds;
    const LatLon centre = offset(airportPlace, static_cast<double>(number) * 6.0, airborne ? 9000.0 : 3000.0);
    FeedMessage message = feedMessage({.hexid = 30001 + static_cast<std::uint32_t>(number),
                                       .callsign = "SWR100",
                                       .position = offset(centre, angle * degPerRad, radiusM),
                                       .altFt = airborne ? 6000.0 : 0.0,
                                       .gsKt = gsKt,
                                       .trackDeg = std::fmod(angle * degPerRad + 90.0, 360.0),
                                       .timeS = 1000.0 + seconds,
                                       .airborne = airborne});
    return message;
}

TEST(Allocation, PassOverAircraftOnOldAndNewLegsAsksForNoMemory) {
    EngineWorld world;
    world.openAirport();
    world.setTick(begin);
    for (std::size_t i = 0; i < aircraft; ++i) {
        const FeedMessage first = nextMessage(i, 0.0);
        LiveAc& ac = world.addLive("A" + std::to_string(i), AcState::Live,
                                   first.airborne ? AcPhase::Air : AcPhase::Taxi, {trackPointOf(first)});
        ac.callsign = first.callsign;
        ac.onGround = !first.airborne;
    }
    std::vector<FeedMessage> heard;
    heard.reserve(aircraft);
    std::size_t counted = 0;
    std::size_t legs = 0;
    for (int tick = 0; tick < ticksToSettle + ticksCounted; ++tick) {
        world.setTick(begin + tick);
        if (tick % ticksPerSecond == 0) {
            resetObjectCommands(); // as frames take what is queued for the simulator
        }
        heard.clear();
        for (std::size_t i = 0; i < aircraft; ++i) {
            if ((tick + static_cast<int>(i)) % static_cast<int>(feedSeconds * ticksPerSecond) == 0) {
                heard.push_back(nextMessage(i, static_cast<double>(tick) / ticksPerSecond));
            }
        }
        const std::size_t before = allocations;
        for (const FeedMessage& message : heard) {
            lf_feedRecord(message);
        }
        lf_updateAllLiveAc();
        if (tick >= ticksToSettle) {
            counted += allocations - before;
            legs += heard.size();
        }
    }
    EXPECT_EQ(counted, 0U) << "in " << ticksCounted << " ticks";
    EXPECT_GT(legs, aircraft * 10);
    for (const LiveAc& ac : liveAcs) {
        EXPECT_EQ(ac.state, AcState::Live);
        EXPECT_GT(ac.track.size(), 1U) << "flies on legs";
    }
}

} // namespace
} // namespace kst::test
