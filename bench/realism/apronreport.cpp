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
    double farthestM = 0.0;
    double headingOffDeg = 0.0;
    std::string misses;
    for (const StandStop& stop : figures.stops) {
        farthestM = std::max(farthestM, stop.fromStandM);
        headingOffDeg = std::max(headingOffDeg, stop.headingOffDeg);
        if (!stop.good()) {
            misses += fmt::format("  {}: {}{}\n", stop.what,
                                  stop.parked ? fmt::format("parked {:.1f} m and {:.1f} degrees off; ",
                                                            stop.fromStandM, stop.headingOffDeg)
                                              : "",
                                  stop.instead);
        }
    }
    return fmt::format("recorded stops on stands: {}, parked {}, still so at the end {}; "
                       "farthest {:.2f} m, {:.2f} degrees\n{}",
                       figures.stops.size(), std::ranges::count_if(figures.stops, &StandStop::parked),
                       std::ranges::count_if(figures.stops, &StandStop::stays), farthestM, headingOffDeg,
                       misses);
}

} // namespace

std::string tableOf(const ApronFigures& figures) {
    std::string gone = "removed while recorded:\n";
    for (const std::string& who : figures.whoLeft) {
        gone += "  " + who + "\n";
    }
    gone += "never shown:";
    for (const auto& [reason, count] : figures.neverShown) {
        gone += fmt::format(" {} {};", count, refusalText(reason));
    }
    return fmt::format("{} scenes on the apron, {} aircraft, {} of them shown\n", figures.scenes,
                       figures.aircraft, figures.shown) +
           stageRows(figures) + "wing circles that overlap:\n" +
           overlapRow("  moving, flown", figures.flown) + overlapRow("  moving, naive", figures.naive) +
           overlapRow("  moving past parked, flown", figures.flownPast) +
           overlapRow("  moving past parked, naive", figures.naivePast) +
           overlapRow("  parked", figures.parked) + stopRows(figures) + gone + "\n";
}

} // namespace kst::bench
