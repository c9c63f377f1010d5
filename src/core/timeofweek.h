#pragma once

#include "model/dayhh.h"

#include <cstdint>

namespace kst {

/// Day of week and half hour of a UTC time, seconds since 1970.
DayHH dayHHOf(std::int64_t epochSeconds);

/// The present moment of the system in seconds since 1970: the feed's clock while time following is on and a
/// feed time is known, else the system clock. Any thread.
std::int64_t presentEpochSeconds();

/// Takes the present half hour into `nowStamp`. Worker.
void stampNow();

/// Seconds since 1970 of a simulator time: zulu year, zulu day of year (counts from 1), zulu seconds of the
/// day. Right in leap years. 0 for what is no time: a year outside 1970 to 9999, a day outside 1 to 366,
/// seconds below 0 or beyond two days.
std::int64_t epochSecondsOfZulu(int year, int dayOfYear, double secondsOfDay);

} // namespace kst
