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
    /// One word for an atomic: day in the low 32 bits, half hour in the high 32 bits.
    constexpr std::uint64_t packed() const {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(hh)) << 32 |
               static_cast<std::uint32_t>(day);
    }
    static constexpr DayHH unpacked(std::uint64_t word) {
        return {static_cast<int>(word & 0xFFFFFFFFU), static_cast<int>(word >> 32)};
    }
};

} // namespace kst
