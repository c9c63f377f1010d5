#pragma once

#include <cstdint>

namespace kst {

/// A half hour of the week: the key of all observations on stands.
struct DayHH {
    int day = 1; ///< day of week, 1 (Monday) to 7
    int hh = 0;  ///< half hour of the day, 0 to 47: hour times 2, plus 1 from minute 30; UTC

    friend bool operator==(const DayHH&, const DayHH&) = default;

    /// The half hour after this one; after 47 comes 0 of the next day, after day 7 comes day 1.
    constexpr DayHH next() const { return hh < 47 ? DayHH{day, hh + 1} : DayHH{day % 7 + 1, 0}; }
    /// The half hour that many before this one, over midnight and over the week's end.
    constexpr DayHH back(int halfHours) const {
        const int ofWeek = ((((day - 1) * 48 + hh - halfHours) % 336) + 336) % 336;
        return {ofWeek / 48 + 1, ofWeek % 48};
    }
    /// One word for an atomic: day in the low 32 bits, half hour in the high 32 bits.
    constexpr std::uint64_t packed() const {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(hh)) << 32 |
               static_cast<std::uint32_t>(day);
    }
    static constexpr DayHH unpacked(std::uint64_t word) {
        return {static_cast<int>(word & 0xFFFFFFFFU), static_cast<int>(word >> 32)};
    }
};

/// Half hours from `stamp` to `now`, within a week.
constexpr int halfHoursSince(DayHH stamp, DayHH now) {
    return (((now.day - stamp.day) * 48 + now.hh - stamp.hh) % 336 + 336) % 336;
}

/// Whether `a` lies before `b`. Observations reach back over one midnight, so day 7 lies before day 1.
constexpr bool isEarlier(DayHH a, DayHH b) {
    if (a.day == b.day) {
        return a.hh < b.hh;
    }
    const bool overWeekEnd = (a.day == 7 && b.day == 1) || (a.day == 1 && b.day == 7);
    return overWeekEnd ? a.day == 7 : a.day < b.day;
}

} // namespace kst
