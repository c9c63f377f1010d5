#include "tools/measureflights/page.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace kst::tool {

namespace {

constexpr double mapWidth = 1100.0;
constexpr double mapMargin = 20.0;
constexpr double profileHeight = 320.0;
constexpr double smallestRiseFt = 100.0;
constexpr double smallestSpanDeg = 0.01;
/// Flown paths are drawn with a point each so many seconds; frames would only make the page big.
constexpr double pathPointSeconds = 1.0;

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

    /// A polyline through every point that is at least `apart` seconds after the one before it.
    std::string line(const std::vector<TrackPoint>& points, double apart, std::string_view style) const {
        std::string out = fmt::format("<polyline {} points=\"", style);
        double last = -apart;
        for (const TrackPoint& point : points) {
            if (point.time - last >= apart) {
                out += fmt::format("{:.1f},{:.1f} ", x(point.position), y(point.position));
                last = point.time;
            }
        }
        return out + "\"/>";
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

int hueOf(std::string_view name) {
    unsigned sum = 7;
    for (const char letter : name) {
        sum = sum * 31U + static_cast<unsigned char>(letter);
    }
    return static_cast<int>(sum % 360U);
}

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

std::string mapOf(const Measured& measured, const std::vector<DrawnStand>& stands = {}) {
    const Map map(measured);
    std::string out = fmt::format("<svg viewBox=\"0 0 {:.0f} {:.0f}\" width=\"{:.0f}\" role=\"img\">\n",
                                  map.width(), map.height(), map.width());
    out += standsOf(map, stands);
    for (const ObjectFigures& figures : measured.byObject) {
        out += map.line(figures.target->points, 0.0, "class=\"told\"") + "\n";
    }
    for (const ObjectFigures& figures : measured.byObject) {
        const ShownObject& object = *figures.object;
        const TrackPoint& end = object.points.back();
        const int hue = hueOf(object.tailNumber);
        out += fmt::format("<g><title>{} {}</title>", escaped(object.tailNumber), escaped(object.title));
        out += map.line(object.points, pathPointSeconds,
                        fmt::format("class=\"flown\" stroke=\"hsl({},75%,62%)\"", hue));
        out += fmt::format("<circle cx=\"{0:.1f}\" cy=\"{1:.1f}\" r=\"2.5\" fill=\"hsl({2},75%,62%)\"/>"
                           "<text x=\"{3:.1f}\" y=\"{1:.1f}\">{4}</text></g>\n",
                           map.x(end.position), map.y(end.position), hue, map.x(end.position) + 5.0,
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
        out += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td><td>{:.1f}</td><td>{:.1f}</td>"
                           "<td>{:.2f}</td><td>{:.2f}</td><td>{:.1f}</td></tr>\n",
                           escaped(figures.object->tailNumber), escaped(figures.target->type),
                           escaped(figures.object->title), figures.samples, figures.fromLineM.median,
                           figures.fromLineM.p95, figures.timeOffS.median, figures.timeOffS.p95,
                           figures.worstStep.overM);
    }
    return out + "</table>\n";
}

/// Altitude over time of every object and its target. What is on the ground tells no altitude.
class Profile {
public:
    explicit Profile(const Measured& measured) {
        for (const ObjectFigures& figures : measured.byObject) {
            for (const TrackPoint& point : figures.object->points) {
                first_ = std::min(first_, point.time);
                last_ = std::max(last_, point.time);
                lowest_ = std::min(lowest_, point.altFt);
                highest_ = std::max(highest_, point.altFt);
            }
        }
        highest_ = std::max(highest_, lowest_ + smallestRiseFt);
    }

    std::string line(const std::vector<TrackPoint>& points, double delay, std::string_view style) const {
        std::string out = fmt::format("<polyline {} points=\"", style);
        double last = -pathPointSeconds;
        for (const TrackPoint& point : points) {
            const double time = point.time + delay;
            const bool shown = time >= first_ && time <= last_ && (delay == 0.0 || !point.onGround);
            if (shown && time - last >= pathPointSeconds) {
                out += fmt::format("{:.1f},{:.1f} ", x(time), y(point.altFt));
                last = time;
            }
        }
        return out + "\"/>\n";
    }

    std::string scale() const {
        return fmt::format("<text x=\"20\" y=\"14\">{:.0f} ft</text><text x=\"20\" y=\"{:.0f}\">{:.0f} ft, "
                           "{:.0f} s across</text>\n",
                           highest_, profileHeight - 4.0, lowest_, last_ - first_);
    }

private:
    double x(double time) const {
        return mapMargin + (time - first_) / std::max(last_ - first_, 1.0) * (mapWidth - 2.0 * mapMargin);
    }
    double y(double altFt) const {
        const double share = (std::max(altFt, lowest_) - lowest_) / (highest_ - lowest_);
        return profileHeight - mapMargin - share * (profileHeight - 2.0 * mapMargin);
    }

    double first_ = std::numeric_limits<double>::infinity();
    double last_ = -std::numeric_limits<double>::infinity();
    double lowest_ = std::numeric_limits<double>::infinity();
    double highest_ = -std::numeric_limits<double>::infinity();
};

std::string profileOf(const Measured& measured) {
    const Profile profile(measured);
    std::string out = fmt::format("<svg viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" role=\"img\">\n",
                                  mapWidth, profileHeight);
    for (const ObjectFigures& figures : measured.byObject) {
        out += profile.line(figures.target->points, playDelaySeconds, "class=\"told\"");
        out += profile.line(
            figures.object->points, 0.0,
            fmt::format("class=\"flown\" stroke=\"hsl({},75%,62%)\"", hueOf(figures.object->tailNumber)));
    }
    return out + profile.scale() + "</svg>\n";
}

} // namespace

std::string flightPageOf(const Measured& measured, const std::string& title, const std::string& figures) {
    std::string out(head);
    out += fmt::format("<h1>{}</h1><pre>{}</pre>\n", escaped(title), escaped(figures));
    out += "<p>Grey: the recorded line. Coloured: what was flown, 30 seconds later.</p>\n" + mapOf(measured);
    return out + "<h1>Altitude</h1>\n" + profileOf(measured) + "</body></html>\n";
}

std::string apronPageOf(const Measured& measured, const std::vector<DrawnStand>& stands,
                        const std::string& title, const std::string& figures) {
    std::string out(head);
    out +=
        fmt::format("<h1>{}</h1>\n<p>Grey: the recorded lines. Coloured: what was shown, 30 seconds later. "
                    "Blue: the stands.</p>\n",
                    escaped(title));
    out += mapOf(measured, stands) + "<h1>Figures</h1><pre>" + escaped(figures) + "</pre>\n";
    return out + "<h1>Each aircraft</h1>\n" + rowsOf(measured) + "</body></html>\n";
}

std::string pageOf(const Measured& measured) {
    std::string out(head);
    out += "<h1>What the feed told and what was flown</h1>\n"
           "<p>Grey: the positions that the feed sent. Coloured: the path of the object in the simulator, "
           "30 seconds later.</p>\n";
    out += mapOf(measured);
    out += fmt::format("<h1>Figures</h1><pre>{}</pre>\n", escaped(tableOf(measured)));
    out += "<h1>Each object</h1>\n" + rowsOf(measured) + "</body></html>\n";
    return out;
}

} // namespace kst::tool
