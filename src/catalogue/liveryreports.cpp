#include "catalogue/liveryreports.h"

#include "catalogue/liverytables.h"
#include "catalogue/reference.h"
#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>

namespace kst {

namespace {

using ModelSet = std::set<std::string_view>;

std::string_view plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

void logModels(const ModelSet& models) {
    constexpr std::size_t modelsPerLine = 20;
    auto model = models.begin();
    while (model != models.end()) {
        std::string line = "  ";
        for (std::size_t i = 0; i < modelsPerLine && model != models.end(); ++i, ++model) {
            line += i == 0 ? "" : ",";
            line += *model;
        }
        logLine(line);
    }
}

/// The switch that shows or hides a size class, with the words for its aircraft; null for a class that is
/// always shown.
struct ClassSwitch {
    BoolParameter* parameter = nullptr;
    std::string_view aircraft;
};

ClassSwitch switchOf(Category category) {
    switch (category) {
    case Category::Light:
        return {&LIGHT_AIRCRAFT, "light aircraft"};
    case Category::HighPerf:
        return {&HIGH_PERF_AIRCRAFT, "High Perf aircraft"};
    case Category::Rotorcraft:
        return {&HELICOPTERS, "Helicopters"};
    case Category::Buzjets:
    case Category::Large:
    case Category::Heavy:
        break;
    }
    return {};
}

void reportNone(Category category) {
    logLine(fmt::format("Category {}: No livery found", categoryName(category)));
    const ClassSwitch shown = switchOf(category);
    if (shown.parameter == nullptr) {
        return;
    }
    if (*shown.parameter) {
        shown.parameter->set(false);
        saveParameter(*shown.parameter);
        showParameter(*shown.parameter);
        logLine(fmt::format("{} temporary switched off because you do not have {} installed",
                            shown.parameter->name(), shown.aircraft));
    }
    enableControl(shown.parameter->controlId(), false);
}

} // namespace

void gf_reportGenerics() {
    const auto& airlines = liveryTables().airlineIndex;
    ModelSet models;
    if (const auto generics = airlines.find(genericAirline); generics != airlines.end()) {
        for (const auto& [model, titles] : generics->second) {
            models.insert(model);
        }
    }
    if (models.empty()) {
        logLine("No generic liveries");
        return;
    }
    logLine(fmt::format("{} model{} have a generic livery", models.size(), plural(models.size())));
    logModels(models);
}

void gf_reportCategory(Category category) {
    ModelSet models;
    std::array<std::size_t, kindCount> counts{};
    for (const LiveryKind kind : {paxKind, cargoKind}) {
        for (const auto& [model, titles] : liveryTables().modelTitles[kind]) {
            if (gf_category(model) == category) {
                models.insert(model);
                counts[kind] += titles.size();
            }
        }
    }
    if (models.empty()) {
        reportNone(category);
        return;
    }
    std::string text = fmt::format("Category {}: {} pax liverie{}", categoryName(category), counts[paxKind],
                                   plural(counts[paxKind]));
    if (counts[cargoKind] > 0) {
        text += fmt::format(" and {} cargo liverie{}", counts[cargoKind], plural(counts[cargoKind]));
    }
    logLine(text);
    logModels(models);
    listFallbackModels(category);
    if (const ClassSwitch shown = switchOf(category); shown.parameter != nullptr) {
        enableControl(shown.parameter->controlId(), true);
    }
}

} // namespace kst
