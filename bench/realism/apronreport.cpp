#include "bench/realism/apronfigures.h"

#include "core/reasoncounts.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst::bench {

namespace {

constexpr std::array<std::string_view, apronStageCount> stageNames = {"taxi",       "roll",   "push back",
                                                                      "onto stand", "parked", "naive, all"};

std::string stageRows(ApronFigures& figures) {
    std::string out = "                      |  from the line, m    | turn in a tick | reversals\n"
                      "stage         seconds | median    95%    max | deg.    share  |\n";
    for (std::size_t i = 0; i < apronStageCount; ++i) {
        ApronStageFigures& stage = figures.stages[i];
        const tool::Spread line = tool::spreadOf(stage.fromLineM);
        out += fmt::format("{:13} {:7.0f} | {:6.1f} {:6.1f} {:6.1f} | {:6.2f}  {:5.2f}  | {:4}\n",
                           stageNames[i], stage.seconds, line.median, line.p95, line.max, stage.turnDeg,
                           stage.turnShare, stage.reversals);
    }
    for (std::size_t i = 0; i < apronStageCount; ++i) {
        const ApronStageFigures& stage = figures.stages[i];
        if (!stage.whereFromLine.empty() && static_cast<ApronStage>(i) != ApronStage::Naive) {
            out += fmt::format("  {:10} farthest from the line: {}; fastest turn: {}{}{}\n", stageNames[i],
                               stage.whereFromLine, stage.whereTurn,
                               stage.reversals > 0 ? "; last reversal: " : "", stage.whereReversal);
        }
    }
    return out;
}

std::string overlapRow(std::string_view name, const Overlap& overlap) {
    std::string out = fmt::format("{:28} {:4} pairs, {:7.1f} s", name, overlap.pairs.size(), overlap.seconds);
    if (overlap.afterRecording > 0.0) {
        out += fmt::format("; after the recording of one has ended {:.1f} s more", overlap.afterRecording);
    }
    out += "\n";
    std::vector<std::pair<double, std::string>> longest;
    for (const auto& [pair, seconds] : overlap.pairs) {
        longest.emplace_back(-seconds, pair);
    }
    std::sort(longest.begin(), longest.end());
    constexpr std::size_t shown = 5;
    for (std::size_t i = 0; i < std::min(shown, longest.size()); ++i) {
        out += fmt::format("    {:7.1f} s {}\n", -longest[i].first, longest[i].second);
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

std::string pathsOf(const PlayedApron& played) {
    std::string out = "at,callsign,lat,lon,heading_deg,phase,stand,rolling,no_data,turn_share,from_line_m\n";
    for (const PlayedAircraft& one : played.aircraft) {
        for (const ApronSample& sample : one.samples) {
            const auto found = tool::placeOnLine(one.line, {sample.at, sample.position, 0.0, 0.0, true});
            const ParkPos* stand = standOf(played.stands, sample.sid);
            out += fmt::format("{:.1f},{},{:.6f},{:.6f},{:.2f},{},{},{:d},{:d},{:.2f},{:.1f}\n", sample.at,
                               one.callsign, sample.position.lat, sample.position.lon,
                               sample.heading * degPerRad, phaseNames[static_cast<std::size_t>(sample.phase)],
                               stand == nullptr ? "" : stand->id, sample.rolling, sample.coasting,
                               sample.turnShare, found ? found->distanceM : -1.0);
        }
    }
    return out;
}

std::string tableOf(ApronFigures& figures) {
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
           reasonRows("removed afterwards", figures.leftAfterwards) +
           reasonRows("never shown", figures.neverShown);
}

} // namespace kst::bench
