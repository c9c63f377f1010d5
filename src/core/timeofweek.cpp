#include "core/timeofweek.h"

#include "core/clock.h"
#include "core/runstate.h"

#include <chrono>
#include <cmath>

namespace kst {

DayHH dayHHOf(std::int64_t epochSeconds) {
    using namespace std::chrono;
    const sys_seconds time{seconds{epochSeconds}};
    const auto day = floor<days>(time);
    const auto ofDay = time - day;
    return {static_cast<int>(weekday{day}.iso_encoding()), static_cast<int>(ofDay / minutes{30})};
}

std::int64_t presentEpochSeconds() {
    constexpr double beyondAnyFeed = 253402300800.0; // the year 10000
    const double feedTime = lastTimestamp.load();
    if (timeFollowing && feedTime > 0.0 && feedTime < beyondAnyFeed) {
        return static_cast<std::int64_t>(feedTime);
    }
    return std::chrono::duration_cast<std::chrono::seconds>(wallNow().time_since_epoch()).count();
}

void stampNow() {
    nowStamp = dayHHOf(presentEpochSeconds()).packed();
}

std::int64_t epochSecondsOfZulu(int year, int dayOfYear, double secondsOfDay) {
    using namespace std::chrono;
    constexpr double mostSeconds = 2 * 86400.0;
    const bool isTime = year >= 1970 && year <= 9999 && dayOfYear >= 1 && dayOfYear <= 366 &&
                        secondsOfDay >= 0.0 && secondsOfDay <= mostSeconds;
    if (!isTime) {
        return 0;
    }
    const sys_days firstOfJanuary{std::chrono::year{year} / January / 1};
    const auto day = firstOfJanuary + days{dayOfYear - 1};
    return duration_cast<seconds>(day.time_since_epoch()).count() +
           static_cast<std::int64_t>(std::floor(secondsOfDay));
}

} // namespace kst
