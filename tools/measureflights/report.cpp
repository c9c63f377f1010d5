#include "tools/measureflights/measure.h"

#include <fmt/format.h>

namespace kst::tool {

namespace {

std::string row(std::string_view name, const PathFigures& figures) {
    const Spread line = spreadOf(figures.fromLineM);
    const Spread time = spreadOf(figures.timeOffS);
    const Spread altitude = spreadOf(figures.altitudeOffFt);
    return fmt::format(
        "{:<8} {:>7} {:>9} | {:>8.1f} {:>8.1f} | {:>8.2f} {:>8.2f} {:>8.2f} {:>+8.2f} | {:>6.0f} {:>6.0f}\n",
        name, figures.objects, line.count, line.median, line.p95, time.median, time.p95, time.max,
        spreadOf(figures.lagS).median, altitude.median, altitude.p95);
}

std::string stepRow(std::string_view name, const Step& step) {
    if (step.overM <= 0.0) {
        return fmt::format("{:<8} no step longer than the speed explains\n", name);
    }
    return fmt::format("{:<8} {:.1f} m in {:.0f} ms where {:.1f} m are explained: {:.1f} m over ({})\n", name,
                       step.stepM, step.seconds * 1000.0, step.explainedM, step.overM, step.tailNumber);
}

} // namespace

std::string tableOf(const Measured& measured) {
    std::string text = fmt::format("targets sent {}, objects shown {} (of no target {}), parked {}\n\n",
                                   measured.targets, measured.objects, measured.unmatched, measured.parked);
    text += "                           |  from the line m  |  time against 30 s (s)              |  "
            "altitude ft\n";
    text += "          objects   samples |   median      p95 |   median      p95      max   median |"
            " median    p95\n";
    text += "                           |                   |     size     size     size   signed |\n";
    text += row("air", measured.air);
    text += row("ground", measured.ground);
    text += "\nlargest step between two frames\n";
    text += stepRow("air", measured.air.worstStep);
    text += stepRow("ground", measured.ground.worstStep);
    text += stepRow("new", measured.appearing);
    return text;
}

} // namespace kst::tool
