#include "simlink/flightplans.h"

#include "core/describe.h"
#include "core/files.h"
#include "core/log.h"
#include "platform/paths.h"
#include "simlink/objectcommands.h"

#include <string_view>
#include <system_error>

#include <fmt/format.h>

namespace kst {

namespace {

/// Absolute: the simulator, which reads the files, has another working directory.
std::filesystem::path flightPlanFolder() {
    return std::filesystem::absolute(folders::output / "orig_dest");
}

/// The text as content of an element: what the feed says does not become markup.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

bool fliesByInstruments(Category category) {
    return category == Category::Buzjets || category == Category::Large || category == Category::Heavy;
}

} // namespace

bool lf_prepareFlightPlanFolder() {
    const std::filesystem::path folder = flightPlanFolder();
    try {
        std::filesystem::create_directories(folder);
    } catch (const std::filesystem::filesystem_error& error) {
        throw std::filesystem::filesystem_error("create_directory", error.path1(), error.code());
    }
    return std::filesystem::exists(folder);
}

void gf_removeFlightPlanFolder() {
    try {
        std::filesystem::remove_all(flightPlanFolder());
    } catch (const std::filesystem::filesystem_error& error) {
        logLine(fmt::format("gf_removeFlightPlanFolder: {}", error.what()));
    }
}

std::filesystem::path flightPlanPath(std::uint32_t objectId) {
    return flightPlanFolder() / fmt::format("{}.pln", objectId);
}

std::string flightPlanText(const LiveAc& ac) {
    // The quote behind the document's bracket belongs there.
    return fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\"\n"
                       "<FlightPlan.FlightPlan>\n"
                       "<FPType>{}</FPType>\n"
                       "<DepartureID>{}</DepartureID>\n"
                       "<DestinationID>{}</DestinationID>\n"
                       "</FlightPlan.FlightPlan>\n"
                       "</SimBase.Document>\n",
                       fliesByInstruments(ac.category) ? "IFR" : "VFR", escaped(ac.origin),
                       escaped(ac.destination));
}

void lf_setFlightPlan(LiveAc& ac) {
    if (ac.origin.empty() || ac.destination.empty()) {
        return;
    }
    const std::filesystem::path path = flightPlanPath(ac.objectId);
    ac.flightPlanLoaded = writeTextFile(flightPlanText(ac), path, false) &&
                          lf_sendFlightPlan(ac.objectId, platform::utf8FromPath(path));
    if (!ac.flightPlanLoaded) {
        logLine(fmt::format("{} creating a flight plan failed", describe(ac)));
    }
}

void lf_deleteFlightPlan(const LiveAc& ac) {
    if (ac.flightPlanLoaded) {
        std::error_code ignored;
        std::filesystem::remove(flightPlanPath(ac.objectId), ignored);
    }
}

} // namespace kst
