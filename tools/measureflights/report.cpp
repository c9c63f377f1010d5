#include "tools/measureflights/measure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst::tool {

namespace {

std::string row(std::string_view name, const PhaseFigures& figures) {
    return fmt::format(
        "{:<8} {:>7} {:>9} | {:>8.1f} {:>8.1f} | {:>8.2f} {:>8.2f} {:>8.2f} {:>+8.2f} | {:>6.0f} {:>6.0f}\n",
        name, figures.objects, figures.fromLineM.count, figures.fromLineM.median, figures.fromLineM.p95,
        figures.timeOffS.median, figures.timeOffS.p95, figures.timeOffS.max, figures.medianLagS,
        figures.altitudeOffFt.median, figures.altitudeOffFt.p95);
}

std::string stepRow(std::string_view name, const Step& step) {
    if (step.overM <= 0.0) {
        return fmt::format("{:<8} no step longer than the speed explains\n", name);
    }
    return fmt::format("{:<8} {:.1f} m in {:.0f} ms where {:.1f} m are explained: {:.1f} m over ({})\n", name,
                       step.stepM, step.seconds * 1000.0, step.explainedM, step.overM, step.tailNumber);
}

nlohmann::json jsonOfSpread(const Spread& spread) {
    return {{"count", spread.count}, {"median", spread.median}, {"p95", spread.p95}, {"max", spread.max}};
}

nlohmann::json jsonOfStep(const Step& step) {
    return {{"step_m", step.stepM},
            {"explained_m", step.explainedM},
            {"over_m", step.overM},
            {"seconds", step.seconds},
            {"tail", step.tailNumber}};
}

nlohmann::json jsonOfPhase(const PhaseFigures& figures) {
    return {{"objects", figures.objects},
            {"from_line_m", jsonOfSpread(figures.fromLineM)},
            {"time_off_s", jsonOfSpread(figures.timeOffS)},
            {"median_lag_s", figures.medianLagS},
            {"altitude_off_ft", jsonOfSpread(figures.altitudeOffFt)},
            {"worst_step", jsonOfStep(figures.worstStep)}};
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

std::string jsonOf(const Measured& measured) {
    nlohmann::json document = {{"targets", measured.targets},
                               {"objects", measured.objects},
                               {"unmatched", measured.unmatched},
                               {"parked", measured.parked},
                               {"air", jsonOfPhase(measured.air)},
                               {"ground", jsonOfPhase(measured.ground)},
                               {"appearing", jsonOfStep(measured.appearing)}};
    return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace kst::tool
