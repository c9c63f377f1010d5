// The flight that a stand's record couples to a new aircraft: what it came in as, or leaves as.

#include "core/log.h"
#include "engine/standfit.h"
#include "engine/standselection.h"
#include "parking/stands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

// How many half hours before and after the present one a visit of the same flight may lie.
constexpr int usualReach = 10;
constexpr int heavyReach = 14;
constexpr int lastHalfHour = 47;

std::bitset<48> hoursAround(DayHH dayhh, Category category) {
    const int reach = category == Category::Heavy ? heavyReach : usualReach;
    std::bitset<48> mask;
    for (int hh = std::max(dayhh.hh - reach, 0); hh <= std::min(dayhh.hh + reach, lastHalfHour); ++hh) {
        mask.set(static_cast<std::size_t>(hh));
    }
    return mask;
}

void searchCoupled(DayHH dayhh, LiveAc& ac) {
    const std::bitset<48> mask = hoursAround(dayhh, ac.category);
    const std::string_view callsign = withoutGhostMark(ac.callsign);
    const auto sameFlight = [&](const ParkOption& option) {
        return option.day == dayhh.day && option.seq != 0 && (option.hours & mask).any() &&
               !option.cs2.empty() && option.airl == ac.airline &&
               (option.cs == callsign || option.cs2 == callsign);
    };
    for (const ParkPos& stand : parkPositions()) {
        const auto found = std::ranges::find_if(stand.options, sameFlight);
        if (found != stand.options.end()) {
            ac.primaryCallsign = found->cs;
            ac.coupledCallsign = found->cs2;
            return;
        }
    }
}

} // namespace

void lf_searchForCoupledCsAroundThisTime(DayHH dayhh, LiveAc& ac) {
    try {
        searchCoupled(dayhh, ac);
    } catch (const std::exception& error) {
        ac.coupledCallsign.clear();
        logLine(fmt::format("{}: {}", "lf_searchForCoupledCsAroundThisTime", error.what()));
    }
}

} // namespace kst
