#include "window/controltexts.h"

#include "core/controlids.h"
#include "core/log.h"
#include "core/parameters.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

namespace kst {

namespace {

struct ControlText {
    int id;
    std::string_view name;
    std::string_view tip; ///< one sentence without its full stop
};

constexpr auto controlTexts = std::to_array<ControlText>({
    {control::AllInstallPath, "Install path of the simulator",
     "Folder in which Prepar3D is installed; type it and press Enter"},
    {control::ScanLiveries, "Scan for liveries",
     "Scan the liveries of the AI aircraft on this PC at the next start"},
    {control::LigAutomatic, "Automatic livery folders",
     "Find the livery folders from the simulator's add-on configuration instead of the lfolder parameters"},
    {control::LigPrioritize, "Prioritize livery folders",
     "Skip liveries in lower lfolder entries that a higher one has already"},
    {control::SuppressStub, "Exclude stub liveries", "Leave titles that end with _STUB out of the scan"},
    {control::Log, "Log details", "Write the detail lines to Log.txt"},
    {control::AlwaysOnTop, "Stay on top", "Keep this window above all others"},
    {control::ScanAirports, "Scan for addon airports",
     "Scan the add-on airports on this PC at the next start"},
    {control::AfgAutomatic, "Automatic airport folders",
     "Find the airport folders from the simulator's scenery configuration instead of the afolder parameters"},
    {control::NavLightsWhileParked, "Nav lights while parked",
     "Switch on the navigation lights of parked aircraft"},
    {control::LearnSoft, "Learn soft stands",
     "Learn what parks on stands that are no real parking positions"},
    {control::MatchingDepth, "Max aircraft matching depth",
     "Last step of the livery matching that counts: 1 takes only the closest matches, 4 takes all"},
    {control::LightAircraft, "Light aircraft", "Take in light aircraft"},
    {control::Helicopters, "Helicopters", "Take in helicopters"},
    {control::HighPerfAircraft, "Fighter jets", "Take in high performance aircraft"},
    {control::Aerowinx, "Aerowinx mode",
     "Run without the link to RealTraffic, for users of Aerowinx PSX, from the next start on"},
    {control::GuidChanges, "GUID changes",
     "Let a live aircraft change its livery when the feed brings better data"},
    {control::LateralRange, "Traffic injection radius in nautical miles",
     "Radius round you, in nautical miles, in which traffic is shown"},
    {control::AutoRange, "Automatic range", "Work the radius out from your height and the closest airport"},
    {control::AutoRangeAboveHeight, "Height above which the automatic range is largest, in feet",
     "Altitude in feet above which the automatic range is 100 nautical miles"},
    {control::BlockCallsign, "Callsign to block",
     "Callsign of a live aircraft to keep out, 4 to 8 characters; type it and press Enter"},
    {control::Unblock, "Unblock callsign", "Let the blocked callsign in again"},
    {control::CollisionUserGnd, "Collision avoidance with you on the ground",
     "Remove live aircraft that would run into you on the ground"},
    {control::CollisionUserAir, "Collision avoidance with you in the air",
     "Remove live aircraft that would run into you in the air"},
    {control::CollisionLiveParkedGnd, "Collision avoidance of live with parked aircraft",
     "Remove static parked aircraft that a taxiing live aircraft would run into"},
    {control::CustomMaxPark, "Maximum of static parked aircraft",
     "Most static parked aircraft at any airport, -1 to have it worked out"},
    {control::MaxLive, "Maximum of live aircraft", "Most live aircraft at a time, -1 for no limit"},
    {control::StraightPbsOnly, "Straight push backs only", "Let aircraft push back straight, without a turn"},
    {control::Destination, "Destination airport",
     "ICAO code of the airport that you fly to; type it and press Enter"},
    {control::AirportRange, "Range round a park airport in nautical miles",
     "Distance in nautical miles within which an airport's parked aircraft are loaded"},
    {control::AirportHeight, "Height above ground of a park airport in feet",
     "Height in feet below which the park airport and the automatic range are chosen"},
    {control::ReRead, "Re-read park airports", "Read my_park_airports.txt again"},
    {control::ParkFake, "Park fake", "Let static aircraft use the soft pass of the stand search"},
    {control::Week, "Statistics of the whole week",
     "Park what was seen on any day of the week instead of on this day"},
    {control::ParkSoft, "Park on soft stands",
     "Park static aircraft on stands that are no real parking positions too"},
    {control::ParkingPercentage, "Wanted share of stands in percent",
     "Share of the stands, in percent, that static aircraft are to fill"},
    {control::InitialLoadOnly, "Initial load only",
     "Generate static parked aircraft once, without the renewal every 20 minutes"},
    {control::MaxFitFl, "Maximum fit in hours",
     "Longest time, in hours, between now and the time at which a parked aircraft was seen"},
    {control::FlushStatic, "Flush static aircraft", "Remove all static parked aircraft"},
});

const ControlText& textOf(int controlId) {
    static constexpr ControlText nothing{control::none, "", ""};
    const auto* found = std::find_if(controlTexts.begin(), controlTexts.end(),
                                     [&](const ControlText& text) { return text.id == controlId; });
    return found == controlTexts.end() ? nothing : *found;
}

/// The parameter's name with what a number may be.
std::string parameterFacts(const Parameter& parameter) {
    if (const auto* number = dynamic_cast<const IntParameter*>(&parameter)) {
        return fmt::format("{}, {} to {}, normally {}", number->name(), number->minimum(), number->maximum(),
                           number->defaultValue());
    }
    if (const auto* hours = dynamic_cast<const FloatParameter*>(&parameter)) {
        return fmt::format("{}, {} to {}, normally {}", hours->name(),
                           formatHours(static_cast<double>(hours->minimum())),
                           formatHours(static_cast<double>(hours->maximum())),
                           formatHours(static_cast<double>(hours->defaultValue())));
    }
    return std::string(parameter.name());
}

} // namespace

std::string accessibleName(int controlId) {
    return std::string(textOf(controlId).name);
}

std::string toolTip(int controlId) {
    const std::string_view tip = textOf(controlId).tip;
    for (const Parameter* parameter : allParameters()) {
        if (parameter->controlId() == controlId) {
            return fmt::format("{} ({}).", tip, parameterFacts(*parameter));
        }
    }
    // MAX_FIT_FL is worked out from another parameter and is not in the file.
    if (controlId == MAX_FIT_FL.controlId()) {
        return fmt::format("{} ({}).", tip, parameterFacts(MAX_FIT_FL));
    }
    return fmt::format("{}.", tip);
}

std::string buttonCaption(int controlId) {
    switch (controlId) {
    case control::Unblock:
        return "Unblock";
    case control::ReRead:
        return "Re-read";
    case control::FlushStatic:
        return "Flush static";
    default:
        return {};
    }
}

} // namespace kst
