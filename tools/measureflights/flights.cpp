#include "tools/measureflights/flights.h"

#include "tools/measureflights/csvtable.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace kst::tool {

namespace {

template <typename T>
void sortPoints(std::vector<T>& all) {
    for (T& one : all) {
        std::ranges::stable_sort(one.points, {}, &TrackPoint::time);
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

/// The rows of a file whose columns begin with time, id, latitude and longitude; `take` gets each that holds
/// these four.
void readPoints(std::istream& in, const std::vector<std::string_view>& columns, std::size_t& unreadableRows,
                const std::function<void(const CsvRow&, std::uint32_t id, TrackPoint)>& take) {
    readCsv(in, columns, [&](const CsvRow& row) {
        const auto time = row.number(0);
        const auto id = row.number(1);
        const auto lat = row.number(2);
        const auto lon = row.number(3);
        if (!time || !id || *id < 0.0 || *id > std::numeric_limits<std::uint32_t>::max() || !lat || !lon ||
            std::abs(*lat) > 90.0 || std::abs(*lon) > 180.0) {
            ++unreadableRows;
            return;
        }
        take(row, static_cast<std::uint32_t>(*id),
             {*time, {*lat, *lon}, row.number(4).value_or(0.0), 0.0, row.text(5) == "1"});
    });
}

} // namespace

void readSent(std::istream& in, Flights& flights) {
    std::map<std::uint32_t, std::size_t> index;
    readPoints(
        in,
        {"time", "hexid", "lat", "lon", "alt_ft", "on_ground", "gs_kt", "callsign", "registration", "type"},
        flights.unreadableRows, [&](const CsvRow& row, std::uint32_t id, TrackPoint point) {
            Target& target = entry(flights.targets, index, id);
            target.hexid = id;
            point.gsKt = row.number(6).value_or(0.0);
            target.callsign = row.text(7);
            target.registration = row.text(8);
            target.type = row.text(9);
            target.points.push_back(point);
        });
    sortPoints(flights.targets);
}

void readHistory(std::istream& in, Flights& flights) {
    std::map<std::uint32_t, std::size_t> index;
    readPoints(in, {"time", "id", "lat", "lon", "alt_ft", "on_ground", "tail_number", "title"},
               flights.unreadableRows, [&](const CsvRow& row, std::uint32_t id, const TrackPoint& point) {
                   ShownObject& object = entry(flights.objects, index, id);
                   object.id = id;
                   object.tailNumber = row.text(6);
                   object.title = row.text(7);
                   object.points.push_back(point);
               });
    sortPoints(flights.objects);
}

} // namespace kst::tool
