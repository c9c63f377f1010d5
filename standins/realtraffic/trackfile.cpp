#include "trackfile.h"

#include "geometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace kst::standin {

namespace {

constexpr std::size_t pointFields = 10;
/// Neighbours farther away in time say nothing about the speed at a point.
constexpr double neighbourSeconds = 60.0;
/// A shorter way is measuring noise and gives no track.
constexpr double shortestWayNm = 0.003;

std::vector<std::string_view> cut(std::string_view line) {
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t comma = line.find(',');
        fields.push_back(line.substr(0, comma));
        if (comma == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(comma + 1);
    }
}

std::optional<double> number(std::string_view text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

template <typename T>
bool whole(std::string_view text, T& value, int base) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size();
}

/// The file's lines, one after the other, into `tracks`.
class LineReader {
public:
    explicit LineReader(RecordedTracks& tracks) : tracks_(tracks) {}

    bool read(std::string_view line) {
        std::vector<std::string_view> fields = cut(line);
        if (fields[0] == "start") {
            const auto start = fields.size() == 2 ? number(fields[1]) : std::nullopt;
            tracks_.startedAt = start.value_or(0.0);
            return start.has_value();
        }
        return fields[0] == "aircraft" ? readAircraft(fields) : readPoint(fields);
    }

private:
    bool readAircraft(const std::vector<std::string_view>& fields) {
        int id = 0;
        RecordedAircraft aircraft;
        if (fields.size() != 6 || !whole(fields[1], id, 10) || !whole(fields[2], aircraft.hexid, 16)) {
            return false;
        }
        aircraft.callsign = fields[3];
        aircraft.registration = fields[4];
        aircraft.type = fields[5];
        ids_[id] = tracks_.aircraft.size();
        tracks_.aircraft.push_back(std::move(aircraft));
        return true;
    }

    bool readPoint(std::vector<std::string_view>& fields) {
        int id = 0;
        if (fields.size() < 4 || fields.size() > pointFields || !whole(fields[1], id, 10)) {
            return false;
        }
        fields.resize(pointFields);
        const auto known = ids_.find(id);
        const auto at = number(fields[0]);
        const auto lat = number(fields[2]);
        const auto lon = number(fields[3]);
        if (known == ids_.end() || !at || !lat || !lon || std::abs(*lat) > 90.0 || std::abs(*lon) > 180.0) {
            return false;
        }
        RecordedPoint point;
        point.at = *at;
        point.aircraft = known->second;
        point.position = {*lat, *lon};
        point.altFt = number(fields[4]);
        point.vsFpm = number(fields[5]);
        point.trackDeg = number(fields[6]);
        point.gsKt = number(fields[7]);
        if (!fields[8].empty()) {
            point.onGround = fields[8] == "1";
        }
        point.headingDeg = number(fields[9]);
        tracks_.points.push_back(point);
        return true;
    }

    RecordedTracks& tracks_;
    std::unordered_map<int, std::size_t> ids_;
};

using Track = std::vector<RecordedPoint*>;

/// The points before and after `i` between which speed and climb at `i` are measured: the nearest with
/// another time.
std::pair<const RecordedPoint*, const RecordedPoint*> neighbours(const Track& track, std::size_t i) {
    const RecordedPoint* before = track[i];
    const RecordedPoint* after = track[i];
    if (i > 0 && track[i]->at - track[i - 1]->at <= neighbourSeconds) {
        before = track[i - 1];
    }
    if (i + 1 < track.size() && track[i + 1]->at - track[i]->at <= neighbourSeconds) {
        after = track[i + 1];
    }
    return {before, after};
}

void completeMotion(const Track& track, std::size_t i) {
    RecordedPoint& point = *track[i];
    if (point.gsKt && point.trackDeg) {
        return;
    }
    const auto [before, after] = neighbours(track, i);
    const double hours = (after->at - before->at) / 3600.0;
    if (hours <= 0.0) {
        return;
    }
    const double wayNm = distanceNm(before->position, after->position);
    if (!point.gsKt) {
        point.gsKt = wayNm / hours;
    }
    if (!point.trackDeg && wayNm > shortestWayNm) {
        point.trackDeg = courseDeg(before->position, after->position);
    }
}

void completeClimb(const Track& track, std::size_t i) {
    RecordedPoint& point = *track[i];
    const auto [before, after] = neighbours(track, i);
    const double minutes = (after->at - before->at) / 60.0;
    if (!point.vsFpm && minutes > 0.0 && before->altFt && after->altFt) {
        point.vsFpm = (*after->altFt - *before->altFt) / minutes;
    }
}

/// A point without altitude that is not flagged as on the ground takes the state of the nearest point in
/// time.
void completeAltitude(const Track& track, std::size_t i) {
    RecordedPoint& point = *track[i];
    if (point.altFt || point.onGround.value_or(false)) {
        return;
    }
    const RecordedPoint* nearest = nullptr;
    for (const std::size_t step : {std::size_t{1}, track.size() - 1}) {
        for (std::size_t j = (i + step) % track.size(); j != i; j = (j + step) % track.size()) {
            const bool known = track[j]->altFt || track[j]->onGround.value_or(false);
            if (known && (nearest == nullptr ||
                          std::abs(track[j]->at - point.at) < std::abs(nearest->at - point.at))) {
                nearest = track[j];
            }
            if (known) {
                break;
            }
        }
    }
    if (nearest != nullptr && nearest->altFt && !nearest->onGround.value_or(false)) {
        point.altFt = nearest->altFt;
    } else {
        point.onGround = true;
    }
}

} // namespace

RecordedTracks readTracks(std::istream& in) {
    RecordedTracks tracks;
    LineReader reader(tracks);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && !reader.read(line)) {
            ++tracks.unreadableLines;
        }
    }
    std::stable_sort(tracks.points.begin(), tracks.points.end(),
                     [](const RecordedPoint& a, const RecordedPoint& b) { return a.at < b.at; });
    return tracks;
}

RecordedTracks readTrackFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error(fmt::format("cannot open the tracks {}", path.string()));
    }
    RecordedTracks tracks = readTracks(in);
    if (tracks.points.empty()) {
        throw std::runtime_error(fmt::format("no recorded point in {}", path.string()));
    }
    return tracks;
}

void completeTracks(RecordedTracks& tracks) {
    std::unordered_map<std::uint32_t, Track> byTarget;
    for (RecordedPoint& point : tracks.points) {
        byTarget[tracks.aircraft[point.aircraft].hexid].push_back(&point);
    }
    for (auto& [hexid, track] : byTarget) {
        for (std::size_t i = 0; i < track.size(); ++i) {
            completeMotion(track, i);
            completeClimb(track, i);
        }
        for (std::size_t i = 0; i < track.size(); ++i) {
            completeAltitude(track, i);
        }
    }
}

} // namespace kst::standin
