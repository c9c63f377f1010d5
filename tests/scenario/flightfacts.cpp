#include "scenario/flightfacts.h"

#include "standins/simulator/terrain.h"

#include <algorithm>
#include <cmath>

namespace kst::test {

namespace {

using standin::HistoryPoint;
using standin::TrafficReport;

constexpr double delayS = 30.0;
constexpr double metresPerDegree = 111'194.93;
constexpr double metresPerSecondPerKnot = 1852.0 / 3600.0;
/// Below this speed the ratio of a step to its speed says nothing.
constexpr double slowKt = 20.0;

struct Flat {
    double east;
    double north;
};

Flat flat(double lat, double lon, double originLat, double originLon) {
    return {(lon - originLon) * metresPerDegree * std::cos(originLat * standin::radPerDeg),
            (lat - originLat) * metresPerDegree};
}

struct NearestOnLine {
    double distanceM = 1e12;
    double feedSeconds = 0.0;
};

/// The nearest place on the line of the reports round the time when the point is due.
NearestOnLine nearest(const HistoryPoint& point, const std::vector<TrafficReport>& reports) {
    constexpr double searchS = 90.0;
    NearestOnLine best;
    for (std::size_t i = 1; i < reports.size(); ++i) {
        const TrafficReport& from = reports[i - 1];
        const TrafficReport& to = reports[i];
        if (to.at + delayS < point.atSeconds - searchS || from.at + delayS > point.atSeconds + searchS) {
            continue;
        }
        const Flat a = flat(from.position.lat, from.position.lon, point.place.lat, point.place.lon);
        const Flat b = flat(to.position.lat, to.position.lon, point.place.lat, point.place.lon);
        const double dx = b.east - a.east;
        const double dy = b.north - a.north;
        const double length = dx * dx + dy * dy;
        const double t = length > 0 ? std::clamp(-(a.east * dx + a.north * dy) / length, 0.0, 1.0) : 0.0;
        const double distance = std::hypot(a.east + t * dx, a.north + t * dy);
        if (distance < best.distanceM) {
            best = {distance, from.at + t * (to.at - from.at)};
        }
    }
    return best;
}

double quantile(std::vector<double>& values, double share) {
    if (values.empty()) {
        return 0.0;
    }
    const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index), values.end());
    return values[index];
}

double angleBetween(double a, double b) {
    return std::abs(std::remainder(b - a, 2 * standin::pi));
}

} // namespace

PathFacts pathFacts(const std::deque<HistoryPoint>& history, const std::vector<TrafficReport>& reports) {
    PathFacts facts;
    std::vector<double> offLine;
    std::vector<double> lag;
    constexpr std::size_t every = 25;
    for (std::size_t i = 0; i < history.size(); i += every) {
        const HistoryPoint& point = history[i];
        if (point.onGround || reports.size() < 2 || point.atSeconds > reports.back().at + delayS) {
            continue;
        }
        const NearestOnLine place = nearest(point, reports);
        offLine.push_back(place.distanceM);
        lag.push_back(point.atSeconds - delayS - place.feedSeconds);
    }
    facts.points = offLine.size();
    facts.medianOffLineM = quantile(offLine, 0.5);
    facts.p95OffLineM = quantile(offLine, 0.95);
    facts.medianLagS = quantile(lag, 0.5);
    for (const double seconds : lag) {
        if (std::abs(seconds) > std::abs(facts.largestLagS)) {
            facts.largestLagS = seconds;
        }
    }
    return facts;
}

PhysicalFacts physicalFacts(const standin::Aircraft& aircraft, double fromSeconds) {
    PhysicalFacts facts;
    facts.lowestAboveGroundFt = 1e9;
    const auto& history = aircraft.history;
    for (std::size_t i = 1; i < history.size(); ++i) {
        const HistoryPoint& a = history[i - 1];
        const HistoryPoint& b = history[i];
        const double dt = b.atSeconds - a.atSeconds;
        if (a.atSeconds < fromSeconds || dt <= 0) {
            continue;
        }
        const double way = standin::groundDistanceM(a.place.lat, a.place.lon, b.place.lat, b.place.lon);
        const double speedKt = std::max({std::abs(a.airspeedKt), std::abs(b.airspeedKt), slowKt});
        facts.largestStepRatio =
            std::max(facts.largestStepRatio, way / (speedKt * metresPerSecondPerKnot * dt));
        const double degreesPerSecond = 1.0 / standin::radPerDeg / dt;
        facts.largestPitchRateDegS = std::max(
            facts.largestPitchRateDegS, angleBetween(a.place.pitchRad, b.place.pitchRad) * degreesPerSecond);
        facts.largestBankRateDegS = std::max(
            facts.largestBankRateDegS, angleBetween(a.place.bankRad, b.place.bankRad) * degreesPerSecond);
        facts.largestTurnRateDegS =
            std::max(facts.largestTurnRateDegS,
                     angleBetween(a.place.headingRad, b.place.headingRad) * degreesPerSecond);
        facts.lowestAboveGroundFt = std::min(facts.lowestAboveGroundFt, b.aboveGroundFt);
    }
    return facts;
}

std::vector<TrafficReport> reportsOf(const std::vector<TrafficReport>& reports, const std::string& callsign) {
    std::vector<TrafficReport> result;
    std::copy_if(reports.begin(), reports.end(), std::back_inserter(result),
                 [&](const TrafficReport& report) { return report.callsign == callsign; });
    return result;
}

} // namespace kst::test
