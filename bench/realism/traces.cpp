#include "bench/realism/traces.h"

#include "tools/measureflights/linematch.h"
#include "tools/measureflights/page.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst::bench {

namespace {

constexpr std::size_t flightSamplesPerLine = 5; ///< of 20 ms; a scene is sampled each 100 ms

} // namespace

std::string pageOf(const std::string& name, const PlayedScene& played, const std::string& table) {
    tool::Flights flights;
    std::vector<tool::DrawnStand> stands;
    for (const ParkPos& stand : played.stands) {
        stands.push_back({stand.id, stand.position(), stand.radius * metresPerNm, stand.heading});
    }
    for (const PlayedAircraft& aircraft : played.aircraft) {
        if (aircraft.flown.empty()) {
            continue;
        }
        Line line = aircraft.line;
        if (!stands.empty() && std::ranges::any_of(line, &tool::TrackPoint::onGround)) {
            std::erase_if(line, [](const tool::TrackPoint& point) { return !point.onGround; });
        }
        flights.targets.push_back({aircraft.hexid, aircraft.callsign, "", aircraft.type, std::move(line)});
        tool::ShownObject object{aircraft.hexid, aircraft.callsign, name, {}};
        for (const Sample& sample : aircraft.flown) {
            object.points.push_back({sample.at, sample.position, sample.altFt, 0.0, sample.onGround});
        }
        flights.objects.push_back(std::move(object));
    }
    return tool::pageOf(tool::measure(flights), name, table, stands);
}

std::string pathOf(const PlayedScene& played) {
    const std::size_t every = played.stands.empty() ? flightSamplesPerLine : 1;
    std::string out =
        "at,callsign,lat,lon,alt_ft,wheels_ft,pitch_deg,bank_deg,heading_deg,speed_kt,from_line_m,"
        "lag_s,lead_limit_s,lag_limit_s,stage,phase,stand,on_ground,coasting,leg_left_s,leg_kind,"
        "turn_share,ideal_lat,ideal_lon\n";
    for (const PlayedAircraft& one : played.aircraft) {
        std::vector<tool::ShownPlace> shown;
        for (std::size_t i = 0; i < one.flown.size(); i += every) {
            const bool anew = i > 0 && one.flown[i].objectId != one.flown[i - every].objectId;
            shown.push_back({one.flown[i].at, one.flown[i].position, anew});
        }
        const auto places = tool::placesOnLine(one.line, shown);
        for (std::size_t n = 0; n < places.size(); ++n) {
            const Sample& sample = one.flown[n * every];
            const LatLon ideal = one.ideal.empty() ? LatLon() : one.ideal[n * every].position;
            const auto stand = std::ranges::find(played.stands, sample.sid, &ParkPos::sid);
            out += fmt::format(
                "{:.2f},{},{:.6f},{:.6f},{:.1f},{:.1f},{:.2f},{:.2f},{:.2f},{:.1f},{:.1f},{:.2f},"
                "{:.1f},{:.1f},{},{},{},{:d},{:d},{:.2f},{:d},{:.2f},{:.6f},{:.6f}\n",
                sample.at, one.callsign, sample.position.lat, sample.position.lon, sample.altFt,
                sample.wheelsFt, sample.pitch * degPerRad, sample.bank * degPerRad,
                sample.heading * degPerRad, sample.speedKt, places[n] ? places[n]->distanceM : -1.0,
                places[n] ? places[n]->lagS : 0.0, sample.leadLimitS, sample.lagLimitS,
                stageNames[static_cast<std::size_t>(sample.stage)],
                phaseNames[static_cast<std::size_t>(sample.phase)],
                stand == played.stands.end() ? "" : stand->id, sample.onGround, sample.coasting,
                sample.legLeftS, static_cast<int>(sample.leg), sample.turnShare, ideal.lat, ideal.lon);
        }
    }
    return out;
}

} // namespace kst::bench
