#include "core/random.h"

#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(RandomTest, ASeedFixesTheRunOnThisThreadAndLaterOnes) {
    seedRandom(5489);
    // The ten thousandth draw of the generator with its standard seed is published.
    for (int i = 1; i < 10000; ++i) {
        randomGenerator()();
    }
    EXPECT_EQ(randomGenerator()(), 4123659995U);

    seedRandom(17);
    const std::uint32_t here = randomBelow(1'000'000);
    std::uint32_t there = 0;
    std::thread([&] { there = randomBelow(1'000'000); }).join();
    EXPECT_EQ(here, there);
}

TEST(RandomTest, DrawsBeyondTheLastWholeMultipleAreDiscarded) {
    // With n = 3 * 2^30 a plain remainder would give the lower third of the numbers twice as often.
    constexpr std::uint32_t n = 3U << 30;
    seedRandom(1);
    constexpr int draws = 30000;
    int lowerThird = 0;
    for (int i = 0; i < draws; ++i) {
        const std::uint32_t number = randomBelow(n);
        ASSERT_LT(number, n);
        lowerThird += number < n / 3 ? 1 : 0;
    }
    EXPECT_NEAR(lowerThird, draws / 3, 400) << "a biased draw gives 15000";
}

TEST(RandomTest, EveryNumberOfASmallRangeComesAndChanceHasItsEnds) {
    seedRandom(2);
    EXPECT_EQ(randomBelow(1), 0U);
    std::vector<int> counts(7, 0);
    int quarter = 0;
    for (int i = 0; i < 7000; ++i) {
        ++counts[randomBelow(7)];
        EXPECT_FALSE(chance(0));
        EXPECT_TRUE(chance(100));
        quarter += chance(25) ? 1 : 0;
    }
    EXPECT_THAT(counts, testing::Each(testing::AllOf(testing::Gt(850), testing::Lt(1150))));
    EXPECT_NEAR(quarter, 1750, 150);
}

TEST(RandomTest, AShuffleKeepsEveryItemAndReachesEveryOrder) {
    seedRandom(4);
    std::map<std::vector<int>, int> orders;
    for (int i = 0; i < 6000; ++i) {
        std::vector<int> items = {0, 1, 2};
        shuffle(items);
        ++orders[items];
    }
    EXPECT_EQ(orders.size(), 6U);
    for (const auto& [order, count] : orders) {
        EXPECT_THAT(order, testing::UnorderedElementsAre(0, 1, 2));
        EXPECT_NEAR(count, 1000, 150);
    }
    std::vector<int> none;
    shuffle(none);
}

} // namespace
} // namespace kst
