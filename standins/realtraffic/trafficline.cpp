#include "trafficsource.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst::standin {

namespace {

constexpr std::string_view unknownText = "null";
constexpr double unknownNumber = -1.0;
constexpr double hpaPerInchOfMercury = 33.8639;

std::string_view orNull(const std::string& text) {
    return text.empty() ? unknownText : std::string_view(text);
}

} // namespace

std::string trafficLine(const TrafficReport& report, double timestamp) {
    std::string line =
        fmt::format("TRAFFIC,{},{:.6f},{:.6f},{:.0f},{:.0f},{}", report.hexid, report.position.lat,
                    report.position.lon, report.altFt, report.vsFpm, report.onGround ? 1 : 0);
    line += report.trackDeg ? fmt::format(",{:.1f}", *report.trackDeg) : ",";
    line += fmt::format(",{:.1f},{},{},{},{},{},{:.2f}", report.gsKt, orNull(report.callsign),
                        orNull(report.type), orNull(report.registration), orNull(report.origin),
                        orNull(report.destination), timestamp);
    // Source, flight number, kind of message, geometric altitude, indicated airspeed.
    line += fmt::format(",R,{},adsb_icao,{:.0f},-1", orNull(report.callsign), report.altFt);
    // True airspeed, mach number, turn rate, roll, magnetic and true heading, geometric climb.
    line += fmt::format(",{:.1f},-1,-1,{:.2f},-1,{:.2f},{:.0f}", report.tasKt.value_or(unknownNumber),
                        report.rollDeg.value_or(unknownNumber), report.headingDeg.value_or(unknownNumber),
                        report.vsFpm);
    // Emergency, category, selected pressure, selected altitude.
    line += fmt::format(",none,{},1013.2,-1", report.category);
    return line;
}

std::string weatherLine(const std::string& station, int qnhHpa, double timestamp) {
    nlohmann::json weather;
    weather["ICAO"] = station;
    weather["QNH"] = qnhHpa;
    weather["altimeterInHg"] = static_cast<double>(qnhHpa) / hpaPerInchOfMercury;
    weather["time"] = timestamp;
    return weather.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace kst::standin
