#include "bench/realism/apronfigures.h"

#include "core/reasoncounts.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <ranges>

namespace kst::bench {

namespace {

constexpr std::array<std::string_view, apronStageCount> apronStageNames = {"taxi", "roll", "push back",
                                                                           "onto stand", "parked"};

std::string stageRows(const ApronFigures& figures) {
    std::string rows = "                      |  from the line, m    | turn, of three | turns\n"
                       "stage         seconds | median    95%    max | base rates     |  back\n";
    std::string worst;
    for (std::size_t i = 0; i < apronStageCount; ++i) {
        const StageFigures& stage = figures.stages[i];
        const tool::Spread line = tool::spreadOf(stage.fromLineM);
        rows += fmt::format("{:13} {:7.0f} | {:6.1f} {:6.1f} {:6.1f} | {:14.2f} | {:5}\n", apronStageNames[i],
                            stage.seconds, line.median, line.p95, line.max, stage.turnShare.value,
                            stage.reversals);
        worst += worstOf(apronStageNames[i], stage);
    }
    return rows + worst;
}

std::string overlapRow(std::string_view name, const Overlaps& overlaps) {
    constexpr std::size_t most = 5;
    std::vector<std::pair<double, std::string>> longest;
    double all = 0.0;
    for (const auto& [pair, seconds] : overlaps) {
        longest.emplace_back(seconds, pair);
        all += seconds;
    }
    std::ranges::sort(longest, std::greater());
    std::string out = fmt::format("{:28} {:4} pairs, {:7.1f} s\n", name, overlaps.size(), all);
    for (const auto& [seconds, pair] : longest | std::views::take(most)) {
        out += fmt::format("    {:7.1f} s {}\n", seconds, pair);
    }
    return out;
}

std::string stopRows(const ApronFigures& figures) {
    int parked = 0;
    int stay = 0;
    int close = 0;
    int inLine = 0;
    int elsewhere = 0;
    int arrivals = 0;
    int arrivalsParked = 0;
    double farthestM = 0.0;
    double headingOffDeg = 0.0;
    std::string misses;
    for (const StandStop& stop : figures.stops) {
        const bool isParked = !stop.parkedOn.empty();
        arrivals += stop.standsFromStart ? 0 : 1;
        arrivalsParked += !stop.standsFromStart && isParked ? 1 : 0;
        parked += isParked ? 1 : 0;
        stay += stop.stays ? 1 : 0;
        if (isParked) {
            close += stop.fromStandM <= parkedWithinM ? 1 : 0;
            inLine += stop.headingOffDeg <= parkedWithinDeg ? 1 : 0;
            elsewhere += stop.parkedOn != stop.stand ? 1 : 0;
            farthestM = std::max(farthestM, stop.fromStandM);
            headingOffDeg = std::max(headingOffDeg, stop.headingOffDeg);
        }
        if (!isParked || !stop.stays || stop.fromStandM > parkedWithinM ||
            stop.headingOffDeg > parkedWithinDeg) {
            misses += fmt::format("  {} on {} ({:.0f} m off it in the recording, {}{}): {}{}\n", stop.name,
                                  stop.stand, stop.recordedFromStandM,
                                  stop.standsFromStart ? "there from the start" : "arrives",
                                  stop.leaves ? ", leaves again" : "",
                                  isParked ? fmt::format("parked {:.1f} m and {:.1f} degrees off; ",
                                                         stop.fromStandM, stop.headingOffDeg)
                                           : "",
                                  stop.instead);
        }
    }
    return fmt::format(
        "recorded stops on stands: {} ({} of them arrive there), parked {} ({}), still so at the end "
        "{}; within {:.0f} m {}, headed within {:.0f} degree {}, farthest {:.2f} m, {:.2f} degrees; "
        "on another stand than the nearest {}\n{}",
        figures.stops.size(), arrivals, parked, arrivalsParked, stay, parkedWithinM, close, parkedWithinDeg,
        inLine, farthestM, headingOffDeg, elsewhere, misses);
}

std::string reasonRows(std::string_view name, const std::map<Reason, int>& reasons) {
    std::string out = fmt::format("{}:", name);
    for (const auto& [reason, count] : reasons) {
        out += fmt::format(" {} {};", count, refusalText(reason));
    }
    return out + "\n";
}

} // namespace

std::string tableOf(const ApronFigures& figures) {
    std::string left;
    for (const std::string& who : figures.whoLeft) {
        left += "  " + who + "\n";
    }
    return fmt::format("{} scenes on the apron, {} aircraft, {} of them shown\n", figures.scenes,
                       figures.aircraft, figures.shown) +
           stageRows(figures) + "wing circles that overlap:\n" +
           overlapRow("  moving, flown", figures.flown) + overlapRow("  moving, naive", figures.naive) +
           overlapRow("  moving past parked, flown", figures.flownPast) +
           overlapRow("  moving past parked, naive", figures.naivePast) +
           overlapRow("  parked", figures.parked) + stopRows(figures) +
           reasonRows("removed while recorded", figures.leftWhileRecorded) + left +
           reasonRows("never shown", figures.neverShown);
}

} // namespace kst::bench
