#include "parking/airportsettings.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "model/units.h"
#include "parking/parkposxml.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr int usualPercentage = 30;

/// As the operator entered it: in use now, and what turning the automatic range off brings back.
void rangeTaken() {
    workingRangeNm = LATERAL_RANGE.get();
    requestRangeM = LATERAL_RANGE.get() * metresPerNm;
    rememberedRangeNm = LATERAL_RANGE.get();
}

void autoRangeTaken() {
    enableControl(control::LateralRange, !AUTO_RANGE);
    enableControl(control::AutoRangeAboveHeight, AUTO_RANGE);
    if (AUTO_RANGE) {
        rememberedRangeNm = LATERAL_RANGE.get();
        return;
    }
    closeAirportMode = false;
    LATERAL_RANGE.set(rememberedRangeNm);
    rangeTaken();
    showParameter(LATERAL_RANGE);
}

void maxFitTaken() {
    MAX_FIT_FL.set(static_cast<float>(MAX_FIT.get()) * 0.5F + 0.5F);
    showParameter(MAX_FIT_FL);
}

/// A setting in the order in which a learned file is read, and what follows from its value.
struct Setting {
    Parameter& parameter;
    void (*taken)() = nullptr;
};

const Setting settings[] = {
    {LEARN_SOFT},
    {MAX_LIVE},
    {LATERAL_RANGE, rangeTaken},
    {AUTO_RANGE, autoRangeTaken},
    {PARK_FAKE},
    {WEEK},
    {PARK_SOFT},
    {parking_percentage},
    {INITIAL_LOAD_ONLY},
    {MAX_FIT, maxFitTaken},
};

void logSetting(const Parameter& parameter) {
    if (&parameter == &MAX_FIT) {
        logIndented(fmt::format("{:24}: {} (max number of half hours, is {} hrs decimal)", MAX_FIT.name(),
                                MAX_FIT.get(), formatHours(MAX_FIT_FL)));
        return;
    }
    logIndented(fmt::format("{:24}: {}", parameter.name(), parameter.text()));
}

/// What an absent setting means: no limit, the usual share. The others keep their value.
void takeAbsent(const Parameter& parameter) {
    if (&parameter == &MAX_LIVE) {
        MAX_LIVE.set(-1);
        showParameter(MAX_LIVE);
    } else if (&parameter == &parking_percentage) {
        parking_percentage.set(usualPercentage);
        showParameter(parking_percentage);
    }
}

} // namespace

void addAirportSettings(pugi::xml_node parameters) {
    const Parameter* const written[] = {
        &LATERAL_RANGE,      &AUTO_RANGE,        &WEEK,    &PARK_FAKE, &PARK_SOFT,
        &parking_percentage, &INITIAL_LOAD_ONLY, &MAX_FIT, &MAX_LIVE,  &LEARN_SOFT};
    for (const Parameter* const parameter : written) {
        if (parameter != &MAX_LIVE || MAX_LIVE >= 0) {
            addAirportParameter(parameters, parameter->name(), parameter->text());
        }
    }
}

void takeAirportSettings(const pugi::xml_document& learned) {
    for (const Setting& setting : settings) {
        const pugi::xml_attribute value = airportParameter(learned, setting.parameter.name());
        if (!value) {
            takeAbsent(setting.parameter);
            continue;
        }
        setting.parameter.setFromText(value.value());
        if (setting.taken != nullptr) {
            setting.taken();
        }
        showParameter(setting.parameter);
        logSetting(setting.parameter);
    }
}

} // namespace kst
