#include "tools/measureflights/page.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <optional>
#include <utility>

namespace kst::tool {

namespace {

constexpr double mapWidth = 1100.0;
constexpr double mapMargin = 20.0;
constexpr double profileHeight = 320.0;
constexpr double smallestRiseFt = 100.0;
constexpr double smallestSpanDeg = 0.01;
/// Paths are drawn with a point each so many seconds; frames would only make the page big.
constexpr double pathPointSeconds = 1.0;
constexpr std::string_view toldStyle = "class=\"told\"";

constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Flights measured</title><style>
body{font:15px/1.5 system-ui,sans-serif;margin:24px;background:#11161c;color:#dbe3ea}
h1{font-size:22px} pre{background:#1a222b;padding:14px;border-radius:8px;overflow:auto}
svg{background:#0b0f14;border-radius:8px;max-width:100%;height:auto}
table{border-collapse:collapse} td,th{padding:3px 12px;text-align:right;border-bottom:1px solid #27313b}
td:nth-child(-n+3),th:nth-child(-n+3){text-align:left} .told{stroke:#5b6875;stroke-width:3;fill:none;opacity:.55}
.stand{stroke:#3f6f8f;stroke-width:1;fill:none} .small{font-size:6px}
.flown{stroke-width:1.6;fill:none} text{font:11px system-ui,sans-serif;fill:#aab6c1}
</style></head><body>
)";

std::string escaped(std::string_view text) {
    std::string out;
    for (const char letter : text) {
        switch (letter) {
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '&':
            out += "&amp;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += letter;
        }
    }
    return out;
}

/// A point of a drawing; nothing for what is not drawn.
using Spot = std::optional<std::pair<double, double>>;

/// A polyline through every drawn point that is at least a second after the one before it.
std::string polyline(const std::vector<TrackPoint>& points, std::string_view style,
                     const std::function<Spot(const TrackPoint&)>& spotOf) {
    std::string out = fmt::format("<polyline {} points=\"", style);
    double last = -pathPointSeconds;
    for (const TrackPoint& point : points) {
        const Spot spot = point.time - last >= pathPointSeconds ? spotOf(point) : std::nullopt;
        if (spot) {
            out += fmt::format("{:.1f},{:.1f} ", spot->first, spot->second);
            last = point.time;
        }
    }
    return out + "\"/>\n";
}

/// In the colour of its own that a name has on the whole page.
std::string colourOf(std::string_view name) {
    unsigned sum = 7;
    for (const char letter : name) {
        sum = sum * 31U + static_cast<unsigned char>(letter);
    }
    return fmt::format("hsl({},75%,62%)", sum % 360U);
}

std::string flownStyle(const ShownObject& object) {
    return fmt::format("class=\"flown\" stroke=\"{}\"", colourOf(object.tailNumber));
}

/// Puts positions on the drawing, equal scales to the east and to the north.
class Map {
public:
    explicit Map(const Measured& measured) {
        for (const ObjectFigures& figures : measured.byObject) {
            for (const TrackPoint& point : figures.object->points) {
                include(point.position);
            }
        }
        if (south_ > north_) {
            include({0.0, 0.0});
        }
        const double latSpan = std::max(north_ - south_, smallestSpanDeg);
        shrink_ = std::cos((south_ + north_) / 2.0 * radPerDeg);
        const double lonSpan = std::max((east_ - west_) * shrink_, smallestSpanDeg);
        perDegree_ = (mapWidth - 2.0 * mapMargin) / std::max(lonSpan, latSpan);
        height_ = latSpan * perDegree_ + 2.0 * mapMargin;
        width_ = lonSpan * perDegree_ + 2.0 * mapMargin;
    }

    double x(LatLon point) const { return mapMargin + (point.lon - west_) * shrink_ * perDegree_; }
    double y(LatLon point) const { return mapMargin + (north_ - point.lat) * perDegree_; }
    double width() const { return width_; }
    double height() const { return height_; }
    double nmLength(double nm) const { return nm / 60.0 * perDegree_; }
    bool shows(LatLon point) const {
        return point.lat >= south_ && point.lat <= north_ && point.lon >= west_ && point.lon <= east_;
    }

    std::string line(const std::vector<TrackPoint>& points, std::string_view style) const {
        return polyline(points, style, [&](const TrackPoint& point) {
            return Spot({x(point.position), y(point.position)});
        });
    }

private:
    void include(LatLon point) {
        south_ = std::min(south_, point.lat);
        north_ = std::max(north_, point.lat);
        west_ = std::min(west_, point.lon);
        east_ = std::max(east_, point.lon);
    }

    double south_ = 90.0;
    double north_ = -90.0;
    double west_ = 180.0;
    double east_ = -180.0;
    double shrink_ = 1.0;
    double perDegree_ = 1.0;
    double width_ = mapWidth;
    double height_ = mapWidth;
};

std::string standsOf(const Map& map, const std::vector<DrawnStand>& stands) {
    std::string out;
    for (const DrawnStand& stand : stands) {
        if (!map.shows(stand.position)) {
            continue;
        }
        const double x = map.x(stand.position);
        const double y = map.y(stand.position);
        const double radius = map.nmLength(stand.radiusM * nmPerMetre);
        out += fmt::format("<g class=\"stand\"><title>{0}</title><circle cx=\"{1:.1f}\" cy=\"{2:.1f}\" "
                           "r=\"{3:.1f}\"/><path d=\"M{1:.1f},{2:.1f} L{4:.1f},{5:.1f}\"/></g>"
                           "<text class=\"small\" x=\"{1:.1f}\" y=\"{2:.1f}\">{0}</text>\n",
                           escaped(stand.id), x, y, radius, x + radius * std::sin(stand.headingRad),
                           y - radius * std::cos(stand.headingRad));
    }
    return out;
}

std::string scaleOf(const Map& map) {
    double scaleNm = 10.0;
    while (map.nmLength(scaleNm) > mapWidth / 2.0) {
        scaleNm /= 10.0;
    }
    return fmt::format("<line x1=\"20\" x2=\"{0:.1f}\" y1=\"{1:.1f}\" y2=\"{1:.1f}\" stroke=\"#aab6c1\"/>"
                       "<text x=\"20\" y=\"{2:.1f}\">{3:g} nm</text></svg>\n",
                       20.0 + map.nmLength(scaleNm), map.height() - 10.0, map.height() - 14.0, scaleNm);
}

std::string mapOf(const Measured& measured, const std::vector<DrawnStand>& stands) {
    const Map map(measured);
    std::string out = fmt::format("<svg viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" role=\"img\">\n",
                                  map.width(), map.height());
    out += standsOf(map, stands);
    for (const ObjectFigures& figures : measured.byObject) {
        out += map.line(figures.target->points, toldStyle);
    }
    for (const ObjectFigures& figures : measured.byObject) {
        const ShownObject& object = *figures.object;
        const LatLon end = object.points.back().position;
        out += fmt::format("<g><title>{} {}</title>", escaped(object.tailNumber), escaped(object.title));
        out += map.line(object.points, flownStyle(object));
        out += fmt::format("<circle cx=\"{0:.1f}\" cy=\"{1:.1f}\" r=\"2.5\" fill=\"{2}\"/>"
                           "<text x=\"{3:.1f}\" y=\"{1:.1f}\">{4}</text></g>\n",
                           map.x(end), map.y(end), colourOf(object.tailNumber), map.x(end) + 5.0,
                           escaped(object.tailNumber));
    }
    return out + scaleOf(map);
}

std::string rowsOf(const Measured& measured) {
    std::string out =
        "<table><tr><th>tail number</th><th>type</th><th>title</th><th>samples</th>"
        "<th>from the line, median m</th><th>p95 m</th><th>off 30 s, median s</th><th>p95 s</th>"
        "<th>step over m</th></tr>\n";
    for (const ObjectFigures& figures : measured.byObject) {
        const Spread line = spreadOf(figures.path.fromLineM);
        const Spread time = spreadOf(figures.path.timeOffS);
        out += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td><td>{:.1f}</td><td>{:.1f}</td>"
                           "<td>{:.2f}</td><td>{:.2f}</td><td>{:.1f}</td></tr>\n",
                           escaped(figures.object->tailNumber), escaped(figures.target->type),
                           escaped(figures.object->title), line.count, line.median, line.p95, time.median,
                           time.p95, figures.path.worstStep.overM);
    }
    return out + "</table>\n";
}

/// Altitude over time of an object and its target. What is on the ground tells no altitude.
std::string profileOf(const ObjectFigures& figures) {
    const std::vector<TrackPoint>& flown = figures.object->points;
    const auto [low, high] = std::ranges::minmax_element(flown, {}, &TrackPoint::altFt);
    const double lowestFt = low->altFt;
    const double highestFt = std::max(high->altFt, lowestFt + smallestRiseFt);
    const double first = flown.front().time;
    const double seconds = std::max(flown.back().time - first, 1.0);
    const auto spotAt = [&](double time, double altFt) {
        return Spot({mapMargin + (time - first) / seconds * (mapWidth - 2.0 * mapMargin),
                     profileHeight - mapMargin -
                         (std::max(altFt, lowestFt) - lowestFt) / (highestFt - lowestFt) *
                             (profileHeight - 2.0 * mapMargin)});
    };
    const auto toldSpot = [&](const TrackPoint& point) {
        const double time = point.time + playDelaySeconds;
        return time >= first && time <= first + seconds && !point.onGround ? spotAt(time, point.altFt)
                                                                           : Spot();
    };
    return fmt::format("<svg viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" role=\"img\">\n", mapWidth,
                       profileHeight) +
           polyline(figures.target->points, toldStyle, toldSpot) +
           polyline(flown, flownStyle(*figures.object),
                    [&](const TrackPoint& point) { return spotAt(point.time, point.altFt); }) +
           fmt::format("<text x=\"20\" y=\"14\">{:.0f} ft</text><text x=\"20\" y=\"{:.0f}\">{:.0f} ft, "
                       "{:.0f} s across</text></svg>\n",
                       highestFt, profileHeight - 4.0, lowestFt, seconds);
}

} // namespace

std::string pageOf(const Measured& measured, const std::string& title, const std::string& figures,
                   const std::vector<DrawnStand>& stands) {
    std::string out(head);
    out +=
        fmt::format("<h1>{}</h1>\n<p>Grey: what the feed told. Coloured: what was flown, 30 seconds later.{}"
                    "</p>\n",
                    escaped(title), stands.empty() ? "" : " Blue: the stands.");
    out += mapOf(measured, stands);
    const bool single = measured.byObject.size() == 1 && stands.empty();
    if (single) {
        out += "<h1>Altitude</h1>\n" + profileOf(measured.byObject.front());
    }
    out += fmt::format("<h1>Figures</h1><pre>{}</pre>\n", escaped(figures));
    if (!single) {
        out += "<h1>Each object</h1>\n" + rowsOf(measured);
    }
    return out + "</body></html>\n";
}

} // namespace kst::tool
