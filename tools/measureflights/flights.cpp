#include "tools/measureflights/flights.h"

#include "tools/measureflights/csvtable.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace kst::tool {

namespace {

bool onGlobe(std::optional<double> lat, std::optional<double> lon) {
    return lat && lon && std::abs(*lat) <= 90.0 && std::abs(*lon) <= 180.0;
}

template <typename T>
void sortPoints(std::vector<T>& all) {
    for (T& one : all) {
        std::stable_sort(one.points.begin(), one.points.end(),
                         [](const TrackPoint& a, const TrackPoint& b) { return a.time < b.time; });
    }
}

/// The element of `all` that stands for `id`, made when it is new.
template <typename T>
T& entry(std::vector<T>& all, std::map<std::uint32_t, std::size_t>& index, std::uint32_t id) {
    const auto [place, isNew] = index.try_emplace(id, all.size());
    if (isNew) {
        all.emplace_back();
    }
    return all[place->second];
}

std::optional<std::uint32_t> idOf(std::optional<double> number) {
    if (!number || *number < 0.0 || *number > 4294967295.0) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(*number);
}

} // namespace

void readSent(std::istream& in, Flights& flights) {
    enum Column : std::size_t { Time, Hexid, Callsign, Registration, Type, Lat, Lon, Alt, Gs, Ground };
    std::map<std::uint32_t, std::size_t> index;
    readCsv(
        in,
        {"time", "hexid", "callsign", "registration", "type", "lat", "lon", "alt_ft", "gs_kt", "on_ground"},
        [&](const CsvRow& row) {
            const auto id = idOf(row.number(Hexid));
            const auto time = row.number(Time);
            const auto lat = row.number(Lat);
            const auto lon = row.number(Lon);
            if (!id || !time || !onGlobe(lat, lon)) {
                ++flights.unreadableRows;
                return;
            }
            Target& target = entry(flights.targets, index, *id);
            target.hexid = *id;
            target.callsign = row.text(Callsign);
            target.registration = row.text(Registration);
            target.type = row.text(Type);
            target.points.push_back({*time,
                                     {*lat, *lon},
                                     row.number(Alt).value_or(0.0),
                                     row.number(Gs).value_or(0.0),
                                     row.text(Ground) == "1"});
        });
    sortPoints(flights.targets);
}

void readHistory(std::istream& in, Flights& flights) {
    enum Column : std::size_t { Time, Id, Tail, Title, Lat, Lon, Alt, Ground };
    std::map<std::uint32_t, std::size_t> index;
    readCsv(in, {"time", "id", "tail_number", "title", "lat", "lon", "alt_ft", "on_ground"},
            [&](const CsvRow& row) {
                const auto id = idOf(row.number(Id));
                const auto time = row.number(Time);
                const auto lat = row.number(Lat);
                const auto lon = row.number(Lon);
                if (!id || !time || !onGlobe(lat, lon)) {
                    ++flights.unreadableRows;
                    return;
                }
                ShownObject& object = entry(flights.objects, index, *id);
                object.id = *id;
                object.tailNumber = row.text(Tail);
                object.title = row.text(Title);
                object.points.push_back(
                    {*time, {*lat, *lon}, row.number(Alt).value_or(0.0), 0.0, row.text(Ground) == "1"});
            });
    sortPoints(flights.objects);
}

} // namespace kst::tool
