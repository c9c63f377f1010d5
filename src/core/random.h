#pragma once

// Random numbers: one Mersenne Twister (MT19937) per thread. Shuffles and chance tests draw from it, so that
// a seed fixes a whole run. The parameter `RANDOM` decides at the callers whether shuffling happens at all.

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace kst {

/// This thread's generator. Seeded from the system's entropy unless a seed was set.
std::mt19937& randomGenerator();

/// Makes this thread's generator and those of threads started later begin at `seed`. Tests.
void seedRandom(std::uint32_t seed);

/// A number from 0 to n - 1, each equally likely: draws outside the largest multiple of n are discarded. n
/// >= 1.
std::uint32_t randomBelow(std::uint32_t n);

/// True with a probability of `percent` in 100.
bool chance(std::uint32_t percent);

/// Fisher-Yates.
template <typename T>
void shuffle(std::vector<T>& items) {
    for (std::size_t i = items.size(); i > 1; --i) {
        std::swap(items[i - 1], items[randomBelow(static_cast<std::uint32_t>(i))]);
    }
}

} // namespace kst
