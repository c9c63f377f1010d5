#include "feedtest.h"

namespace {

using namespace kst;
using namespace kst::test;
using FeedQueue = FeedTest;

FeedMessage numbered(std::uint32_t hexid) {
    FeedMessage message;
    message.hexid = hexid;
    return message;
}

TEST_F(FeedQueue, RecordsLeaveInOrderAFewAtATime) {
    for (std::uint32_t i = 1; i <= 3; ++i) {
        EXPECT_TRUE(pushFeedMessage(numbered(i)));
    }
    // What waits when the queue is closed stays.
    setFeedOpen(false);
    EXPECT_FALSE(pushFeedMessage(numbered(4)));
    std::vector<FeedMessage> taken;
    EXPECT_EQ(takeFeedMessages(taken, 2), 2U);
    EXPECT_EQ(taken[0].hexid, 1U);
    EXPECT_EQ(taken[1].hexid, 2U);
    EXPECT_EQ(takeFeedMessages(taken, 2), 1U);
    EXPECT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].hexid, 3U);
    EXPECT_EQ(takeFeedMessages(taken, 2), 0U);
    EXPECT_TRUE(taken.empty());
}

TEST_F(FeedQueue, WorkerThatStandsStillLosesTheOldestRecordsOnly) {
    constexpr std::uint32_t tooMany = 5;
    for (std::uint32_t i = 0; i < feedQueueLimit + tooMany; ++i) {
        pushFeedMessage(numbered(i));
    }
    std::vector<FeedMessage> taken;
    EXPECT_EQ(takeFeedMessages(taken, 2 * feedQueueLimit), feedQueueLimit);
    EXPECT_EQ(taken.front().hexid, tooMany);
    EXPECT_EQ(taken.back().hexid, feedQueueLimit + tooMany - 1);
    EXPECT_EQ(reasonTotal(Reason::FeedQueueFull), tooMany);
    EXPECT_EQ(newLog(), "feed queue is full, 100000 records wait, the oldest are lost\n");
}

TEST_F(FeedQueue, FeedFasterThanTheWorkerIsToldOnceAMinute) {
    // 3,000 targets, each with a record every three seconds, against two records a pass.
    std::vector<FeedMessage> taken;
    for (int tick = 0; tick < 100 * ticksPerSecond; ++tick) {
        ++updateCount;
        for (std::uint32_t i = 0; i < 10; ++i) {
            pushFeedMessage(numbered(i));
        }
        takeFeedMessages(taken, 2);
    }
    EXPECT_EQ(newLog(),
              "the feed is faster than it can be followed: 5016 records wait, the oldest for 5 s\n"
              "the feed is faster than it can be followed: 53016 records wait, the oldest for 53 s\n");
}

TEST_F(FeedQueue, DueTickSurvivesTheWrapOfTheTickCount) {
    updateCount = std::numeric_limits<std::int32_t>::max() - 999;
    pushFeedMessage(numbered(1));
    updateCount = 0;
    std::vector<FeedMessage> taken;
    takeFeedMessages(taken, 1);
    EXPECT_EQ(taken.at(0).expiry, std::numeric_limits<std::int32_t>::min() + 2000);
}

} // namespace
