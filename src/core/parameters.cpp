#include "core/parameters.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace kst {

BoolParameter RANDOM("RANDOM", true);

BoolParameter SCAN_LIVERIES("SCAN_LIVERIES", true, control::ScanLiveries);
BoolParameter LIG_AUTOMATIC("LIG_AUTOMATIC", true, control::LigAutomatic);
BoolParameter LIG_PRIORITIZE("LIG_PRIORITIZE", false, control::LigPrioritize);
BoolParameter SUPPRESS_STUB("SUPPRESS_STUB", true, control::SuppressStub);
BoolParameter LOG("LOG", true, control::Log);
BoolParameter ALWAYS_ON_TOP("ALWAYS_ON_TOP", false, control::AlwaysOnTop);
BoolParameter SCAN_AIRPORTS("SCAN_AIRPORTS", true, control::ScanAirports);
BoolParameter AFG_AUTOMATIC("AFG_AUTOMATIC", true, control::AfgAutomatic);
BoolParameter NAV_LIGHTS_WHILE_PARKED("NAV_LIGHTS_WHILE_PARKED", true, control::NavLightsWhileParked);
BoolParameter LEARN_SOFT("LEARN_SOFT", true, control::LearnSoft);
BoolParameter LIGHT_AIRCRAFT("LIGHT_AIRCRAFT", true, control::LightAircraft);
BoolParameter HELICOPTERS("HELICOPTERS", true, control::Helicopters);
BoolParameter HIGH_PERF_AIRCRAFT("HIGH_PERF_AIRCRAFT", true, control::HighPerfAircraft);
BoolParameter AEROWINX("AEROWINX", false, control::Aerowinx);
BoolParameter GUID_CHANGES("GUID_CHANGES", true, control::GuidChanges);
BoolParameter AUTO_RANGE("AUTO_RANGE", true, control::AutoRange);
BoolParameter COLLISION_USER_GND("COLLISION_USER_GND", true, control::CollisionUserGnd);
BoolParameter COLLISION_USER_AIR("COLLISION_USER_AIR", true, control::CollisionUserAir);
BoolParameter COLLISION_LIVE_PARKED_GND("COLLISION_LIVE_PARKED_GND", false, control::CollisionLiveParkedGnd);
BoolParameter STRAIGHT_PBS_ONLY("STRAIGHT_PBS_ONLY", false, control::StraightPbsOnly);
BoolParameter PARK_FAKE("PARK_FAKE", false, control::ParkFake);
BoolParameter WEEK("WEEK", false, control::Week);
BoolParameter PARK_SOFT("PARK_SOFT", true, control::ParkSoft);
BoolParameter INITIAL_LOAD_ONLY("INITIAL_LOAD_ONLY", false, control::InitialLoadOnly);

IntParameter CUSTOM_PARKING_PERCENTAGE("CUSTOM_PARKING_PERCENTAGE", -1, -1, 100);
IntParameter MAIN_WINDOW_X("MAIN_WINDOW_X", 400, -30000, 30000);
IntParameter MAIN_WINDOW_Y("MAIN_WINDOW_Y", 20, -30000, 30000);
IntParameter LAST_EPOCH_TIME("LAST_EPOCH_TIME", 0, 0, 2147483647);
IntParameter HOLDING_THRESHOLD_METERS("HOLDING_THRESHOLD_METERS", 250, 10, 4000);
IntParameter MAX_HOLDING_MINUTES("MAX_HOLDING_MINUTES", 20, 1, 60);
IntParameter P3D_VERSION("P3D_VERSION", 5, 5, 6);
IntParameter MAX_FIT("MAX_FIT", 47, 0, 47);

IntParameter MATCHING_DEPTH("MATCHING_DEPTH", 4, 1, 4, control::MatchingDepth);
IntParameter LATERAL_RANGE("LATERAL_RANGE", 40, 2, 100, control::LateralRange);
IntParameter AUTO_RANGE_ABOVE_HEIGHT("AUTO_RANGE_ABOVE_HEIGHT", 49000, 18000, 49000,
                                     control::AutoRangeAboveHeight);
IntParameter MAX_LIVE("MAX_LIVE", -1, -1, 300, control::MaxLive);
IntParameter CUSTOM_MAX_PARK("CUSTOM_MAX_PARK", -1, -1, 500, control::CustomMaxPark);
IntParameter AIRPORT_RANGE("AIRPORT_RANGE", 20, 8, 30, control::AirportRange);
IntParameter AIRPORT_HEIGHT("AIRPORT_HEIGHT", 18000, 2000, 45000, control::AirportHeight);
IntParameter parking_percentage("parking_percentage", 30, 0, 100, control::ParkingPercentage);
FloatParameter MAX_FIT_FL("MAX_FIT_FL", 24.0F, 0.5F, 24.0F, control::MaxFitFl);

TextParameter PROGRAM_VERSION("PROGRAM_VERSION");
TextParameter PROGRAM_INSTALL_PATH("PROGRAM_INSTALL_PATH");
TextParameter SIM_INSTALL_PATH("SIM_INSTALL_PATH");
TextParameter PORT_NUMBER("PORT_NUMBER", "10747");
std::array<TextParameter, 10> lfolder{TextParameter("lfolder0"), TextParameter("lfolder1"),
                                      TextParameter("lfolder2"), TextParameter("lfolder3"),
                                      TextParameter("lfolder4"), TextParameter("lfolder5"),
                                      TextParameter("lfolder6"), TextParameter("lfolder7"),
                                      TextParameter("lfolder8"), TextParameter("lfolder9")};
std::array<TextParameter, 10> afolder{TextParameter("afolder0"), TextParameter("afolder1"),
                                      TextParameter("afolder2"), TextParameter("afolder3"),
                                      TextParameter("afolder4"), TextParameter("afolder5"),
                                      TextParameter("afolder6"), TextParameter("afolder7"),
                                      TextParameter("afolder8"), TextParameter("afolder9")};
TextParameter ALL_INSTALL_PATH("ALL_INSTALL_PATH", {}, control::AllInstallPath);
TextParameter BLOCK_CALLSIGN("BLOCK_CALLSIGN", {}, control::BlockCallsign);
TextParameter DESTINATION("DESTINATION", {}, control::Destination);

namespace {

/// Whether a number that its type cannot hold is too near to 0 rather than too large.
bool isTooSmall(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) {
        return number.substr(exponent + 1).starts_with('-');
    }
    return number.substr(0, number.find('.')).find_first_of("123456789") == std::string_view::npos;
}

/// The number at the beginning of a text, read as far as it goes; 0 if there is none. Blanks and a plus sign
/// in front do not matter. A number too large for its type is the largest of its sign.
template <typename Number>
Number numberIn(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    // Also keeps out the words for infinity and for no number.
    const std::size_t first = text.find_first_of("0123456789.");
    if (first > 1 || (first == 1 && text.front() != '-')) {
        return 0;
    }
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc::result_out_of_range) {
        return value;
    }
    const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
    if (isTooSmall(number)) {
        return 0;
    }
    return number.starts_with('-') ? std::numeric_limits<Number>::lowest()
                                   : std::numeric_limits<Number>::max();
}

} // namespace

std::string BoolParameter::text() const {
    return get() ? "1" : "0";
}

void BoolParameter::setFromText(std::string_view text) {
    constexpr std::string_view lettersOfTrue = "1tTyY";
    set(!text.empty() && lettersOfTrue.find(text.front()) != std::string_view::npos);
}

void IntParameter::set(int value) {
    value_.store(std::clamp(value, minimum_, maximum_), std::memory_order_relaxed);
}

std::string IntParameter::text() const {
    return fmt::format("{}", get());
}

void IntParameter::setFromText(std::string_view text) {
    set(numberIn<int>(text));
}

void FloatParameter::set(float value) {
    const float number = std::isnan(value) ? 0.0F : value;
    value_.store(std::clamp(number, minimum_, maximum_), std::memory_order_relaxed);
}

std::string FloatParameter::text() const {
    return fmt::format("{}", get());
}

void FloatParameter::setFromText(std::string_view text) {
    set(numberIn<float>(text));
}

std::string TextParameter::get() const {
    const std::lock_guard guard(mutex_);
    return value_;
}

void TextParameter::set(std::string_view value) {
    const std::lock_guard guard(mutex_);
    value_ = value;
}

const std::vector<Parameter*>& allParameters() {
    static const std::vector<Parameter*> all = [] {
        std::vector<Parameter*> list = {
            &RANDOM, &SCAN_LIVERIES, &LIG_AUTOMATIC, &LIG_PRIORITIZE, &SUPPRESS_STUB, &LOG, &ALWAYS_ON_TOP,
            &SCAN_AIRPORTS, &AFG_AUTOMATIC, &NAV_LIGHTS_WHILE_PARKED, &LEARN_SOFT, &LIGHT_AIRCRAFT,
            &HELICOPTERS, &HIGH_PERF_AIRCRAFT, &AEROWINX, &GUID_CHANGES, &AUTO_RANGE, &COLLISION_USER_GND,
            &COLLISION_USER_AIR, &COLLISION_LIVE_PARKED_GND, &STRAIGHT_PBS_ONLY, &PARK_FAKE, &WEEK,
            &PARK_SOFT, &INITIAL_LOAD_ONLY,
            // Integers
            &CUSTOM_PARKING_PERCENTAGE, &MAIN_WINDOW_X, &MAIN_WINDOW_Y, &LAST_EPOCH_TIME,
            &HOLDING_THRESHOLD_METERS, &MAX_HOLDING_MINUTES, &P3D_VERSION, &MAX_FIT, &MATCHING_DEPTH,
            &LATERAL_RANGE, &AUTO_RANGE_ABOVE_HEIGHT, &MAX_LIVE, &CUSTOM_MAX_PARK, &AIRPORT_RANGE,
            &AIRPORT_HEIGHT, &parking_percentage, &MAX_FIT_FL,
            // Texts
            &PROGRAM_VERSION, &PROGRAM_INSTALL_PATH, &SIM_INSTALL_PATH, &PORT_NUMBER};
        for (auto* folderList : {&lfolder, &afolder}) {
            for (TextParameter& folder : *folderList) {
                list.push_back(&folder);
            }
        }
        list.insert(list.end(), {&ALL_INSTALL_PATH, &BLOCK_CALLSIGN, &DESTINATION});
        return list;
    }();
    return all;
}

} // namespace kst
