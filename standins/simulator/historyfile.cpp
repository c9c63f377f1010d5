#include "standins/simulator/historyfile.h"

#include "platform/paths.h"

#include <fmt/format.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kst::standin {

namespace {

constexpr double secondsPerMinute = 60.0;

std::string csvText(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"')
            result += '"';
        result += c == '\n' || c == '\r' ? ' ' : c;
    }
    return result + '"';
}

} // namespace

HistoryFile::HistoryFile(const std::filesystem::path& path) : file_(path, std::ios::binary) {
    if (!file_)
        throw std::runtime_error(fmt::format("cannot write the history to {}", platform::utf8FromPath(path)));
    file_
        << "time,seconds,id,tail_number,title,lat,lon,alt_ft,above_ground_ft,heading_deg,pitch_deg,bank_deg,"
           "airspeed_kt,vs_fpm,on_ground\n";
}

void HistoryFile::add(double wallSeconds, const Aircraft& aircraft, const HistoryPoint& point) {
    std::string line;
    fmt::format_to(
        std::back_inserter(line),
        "{:.3f},{:.3f},{},{},{},{:.7f},{:.7f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.1f},{:.0f},{}\n",
        wallSeconds, point.atSeconds, aircraft.id, csvText(aircraft.tailNumber), csvText(aircraft.title),
        point.place.lat, point.place.lon, point.place.altFt, point.aboveGroundFt,
        point.place.headingRad / radPerDeg, point.place.pitchRad / radPerDeg, point.place.bankRad / radPerDeg,
        point.airspeedKt, point.vsFps * secondsPerMinute, point.onGround ? 1 : 0);
    file_ << line;
}

} // namespace kst::standin
