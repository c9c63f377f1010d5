#include "core/random.h"

#include <atomic>

namespace kst {

namespace {
std::atomic<std::int64_t> fixedSeed{-1};

std::uint32_t firstSeed() {
    const std::int64_t seed = fixedSeed.load();
    return seed >= 0 ? static_cast<std::uint32_t>(seed) : std::random_device{}();
}
} // namespace

std::mt19937& randomGenerator() {
    thread_local std::mt19937 generator{firstSeed()};
    return generator;
}

void seedRandom(std::uint32_t seed) {
    fixedSeed = seed;
    randomGenerator().seed(seed);
}

std::uint32_t randomBelow(std::uint32_t n) {
    constexpr std::uint64_t range = std::uint64_t{1} << 32;
    const std::uint64_t limit = range - range % n;
    std::uint64_t draw = randomGenerator()();
    while (draw >= limit) {
        draw = randomGenerator()();
    }
    return static_cast<std::uint32_t>(draw % n);
}

bool chance(std::uint32_t percent) {
    return randomBelow(100) < percent;
}

} // namespace kst
