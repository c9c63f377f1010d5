#include "simlink/useraircraft.h"

#include "catalogue/reference.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "model/units.h"
#include "simlink/sessionstate.h"

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::size_t mostTitleCharacters = 48;
/// A model designator has at most four characters; anything longer is no designator.
constexpr std::size_t mostModelCharacters = 4;

struct TitleModel {
    std::string_view titleStart;
    std::string_view model;
};
/// Makers whose titles name the model that their model field does not.
constexpr TitleModel titleModels[] = {
    {"Aerosoft A319", "A319"},
    {"Aerosoft A320", "A320"},
    {"Aerosoft A321", "A321"},
};

/// The text's first characters, no part of a character at the end.
std::string_view cut(std::string_view text, std::size_t most) {
    if (text.size() <= most) {
        return text;
    }
    constexpr unsigned char continuationMask = 0xC0;
    constexpr unsigned char continuation = 0x80;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & continuationMask) == continuation) {
        --end;
    }
    // A text that is no UTF-8 has no character borders to keep to.
    return text.substr(0, end > most - 4 ? end : most);
}

void storeSpan(double halfSpanNm, Category category) {
    const std::lock_guard lock(userAircraftLock);
    userAircraft.halfSpanNm = halfSpanNm;
    userAircraft.category = category;
}

void markSpanKnown(bool known) {
    updateStatus(Band::Status, [&](StatusValues& status) { status.wingSpanKnown = known; });
}

std::string_view modelOfTitle() {
    const std::lock_guard lock(userAircraftLock);
    for (const TitleModel& entry : titleModels) {
        if (userAircraft.title.starts_with(entry.titleStart)) {
            return entry.model;
        }
    }
    return {};
}

} // namespace

void lf_onTitle(std::string_view title) {
    const std::string text(cut(title, mostTitleCharacters));
    if (text.empty()) {
        logLine("! title of your ac is empty?");
        return;
    }
    {
        const std::lock_guard lock(userAircraftLock);
        if (text == userAircraft.title) {
            return;
        }
        userAircraft.title = text;
    }
    updateStatus(Band::Status, [&](StatusValues& status) { status.userAircraftText = text; });
    logLine(fmt::format("SimConnect: User aircraft title: {}", text));
}

void lf_onModel(std::string_view model) {
    constexpr int modelMissing = 71;
    if (model.empty()) {
        throw UserErrorException(modelMissing,
                                 "atc_model= in [General] section of your aircraft.cfg is empty or missing");
    }
    logLine(fmt::format("model raw: {} ", model));
    if (model.find("camerapod") != std::string_view::npos ||
        model.find("Crew Vessel") != std::string_view::npos) {
        // No span of its own: that of a middling airliner keeps the traffic clear.
        storeSpan(gf_halfWingSpan("E190"), Category::Light);
        markSpanKnown(true);
        return;
    }
    std::string report = fmt::format("SimConnect: User aircraft model: {}", model);
    double halfSpanNm = model.size() <= mostModelCharacters ? gf_halfWingSpan(model) : maxHalfWingSpan();
    bool known = halfSpanNm != maxHalfWingSpan();
    if (const std::string_view deduced = known ? std::string_view{} : modelOfTitle(); !deduced.empty()) {
        model = deduced;
        report = fmt::format("SimConnect: User aircraft model deduced from title: {}", model);
        const double span = gf_halfWingSpan(model);
        known = span != 0.0;
        halfSpanNm = known ? span : maxHalfWingSpan();
    }
    markSpanKnown(known);
    if (known) {
        report += fmt::format(", half wing span: {:.1F} meter", halfSpanNm * metresPerNm);
    } else {
        showMessage("User aircraft wing span unknown, max is taken instead, please report in my Forum!",
                    true);
    }
    const Category category = gf_category(model);
    storeSpan(halfSpanNm, category);
    logLine(fmt::format("{}, category: {}", report, categoryName(category)));
}

} // namespace kst
