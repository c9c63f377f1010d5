#include "core/timeofweek.h"

#include "core/runstate.h"
#include "support/virtualtime.h"

#include <limits>

#include <gtest/gtest.h>

namespace kst {

void PrintTo(const DayHH& stamp, std::ostream* out) {
    *out << "day " << stamp.day << " half hour " << stamp.hh;
}

namespace {

using namespace std::chrono_literals;

TEST(TimeOfWeekTest, DayAndHalfHour) {
    const std::pair<std::int64_t, DayHH> cases[] = {
        {0, {4, 0}},               // the epoch was a Thursday
        {1709546400, {1, 20}},     // Monday 2024-03-04 10:00
        {1709546400 - 1, {1, 19}}, // a second before
        {1709546400 + 1800, {1, 21}},
        {1709510399, {7, 47}}, // Sunday 23:59:59
        {1709510400, {1, 0}},  // the Monday that follows
        {1709164800, {4, 0}},  // 29 February
        {-1, {3, 47}},
    };
    for (const auto& [seconds, expected] : cases) {
        EXPECT_EQ(dayHHOf(seconds), expected) << seconds;
    }
}

TEST(TimeOfWeekTest, TheNextHalfHourGoesRoundTheWeek) {
    std::int64_t seconds = 1709510400; // a Monday, 00:00
    DayHH stamp = dayHHOf(seconds);
    for (int i = 0; i < 7 * 48 + 1; ++i) {
        seconds += 1800;
        stamp = stamp.next();
        ASSERT_EQ(stamp, dayHHOf(seconds)) << i;
        ASSERT_EQ(DayHH::unpacked(stamp.packed()), stamp);
    }
}

TEST(TimeOfWeekTest, TheStampFollowsTheFeedOnlyWhileItsTimeIsKnown) {
    test::VirtualTime time;
    resetRunState();
    stampNow();
    EXPECT_EQ(nowDayHH(), (DayHH{1, 20}));
    lastTimestamp = 1709510399.9;
    stampNow();
    EXPECT_EQ(nowDayHH(), (DayHH{1, 20})) << "time following is off";
    timeFollowing = true;
    stampNow();
    EXPECT_EQ(nowDayHH(), (DayHH{7, 47}));
    for (const double senseless : {0.0, -5.0, 1e300, std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN()}) {
        lastTimestamp = senseless;
        EXPECT_EQ(presentEpochSeconds(), 1709546400) << senseless;
    }
    resetRunState();
}

TEST(TimeOfWeekTest, SimulatorTimeInEveryYear) {
    struct Case {
        int year, day;
        double seconds;
        std::int64_t expected;
    };
    const Case cases[] = {
        {1970, 1, 0, 0},
        {2024, 64, 36000.7, 1709546400}, // 4 March of a leap year
        {2024, 60, 0, 1709164800},       // 29 February
        {2024, 366, 86399, 1735689599},
        {2023, 365, 86399, 1704067199},
        {2000, 366, 0, 978220800},
        {2100, 60, 0, 4107542400}, // no leap year: 1 March
        {1601, 1, 0, 0},
        {2024, 0, 0, 0},
        {2024, 367, 0, 0},
        {99999, 1, 0, 0},
        {2024, 1, -1, 0},
        {2024, 1, 1e30, 0},
        {2024, 1, std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(epochSecondsOfZulu(c.year, c.day, c.seconds), c.expected) << c.year << " " << c.day;
    }
}

} // namespace
} // namespace kst
