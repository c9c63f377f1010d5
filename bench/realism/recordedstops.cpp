#include "bench/realism/recordedstops.h"

#include "tools/measureflights/line.h"

#include <algorithm>

namespace kst::bench {

namespace {

constexpr double shortestStopS = 20.0;
constexpr double spotM = 18.0;
constexpr double stoppingKt = 1.0;
constexpr double cameFromM = 85.0; ///< farther than a push back from the next stand

LatLon middleOf(Line::const_iterator begin, Line::const_iterator end) {
    std::vector<double> lat;
    std::vector<double> lon;
    for (; begin != end; ++begin) {
        lat.push_back(begin->position.lat);
        lon.push_back(begin->position.lon);
    }
    return {tool::spreadOf(lat).median, tool::spreadOf(lon).median};
}

} // namespace

std::vector<RecordedStop> stopsOf(const Line& line) {
    std::vector<RecordedStop> stops;
    for (auto first = line.begin(); first != line.end();) {
        const auto behind = std::find_if(first, line.end(), [&](const tool::TrackPoint& point) {
            return !point.onGround || tool::metresBetween(point.position, first->position) > spotM;
        });
        const bool comesToEnd = behind == line.end() && line.back().gsKt <= stoppingKt &&
                                tool::metresBetween(line.front().position, line.back().position) > cameFromM;
        if (behind == first || (!comesToEnd && (behind - 1)->time - first->time < shortestStopS)) {
            ++first;
            continue;
        }
        RecordedStop stop;
        stop.begin = first->time;
        stop.end = (behind - 1)->time;
        stop.place = middleOf(first, behind);
        stop.fromStart = first == line.begin();
        stop.leaves = std::any_of(behind, line.end(), [&](const tool::TrackPoint& point) {
            return tool::metresBetween(point.position, stop.place) > spotM;
        });
        if (!stops.empty() && tool::metresBetween(stops.back().place, stop.place) < spotM) {
            stops.back().end = stop.end;
            stops.back().leaves = stop.leaves;
        } else {
            stops.push_back(stop);
        }
        first = behind;
    }
    return stops;
}

} // namespace kst::bench
