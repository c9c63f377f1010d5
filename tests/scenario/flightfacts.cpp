#include "scenario/flightfacts.h"

#include "standins/simulator/terrain.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>

namespace kst::test {

namespace {

using standin::HistoryPoint;
using standin::TrafficReport;

constexpr double metresPerSecondPerKnot = 1852.0 / 3600.0;
/// Below this speed the ratio of a step to its speed says nothing.
constexpr double slowKt = 20.0;

double angleBetween(double a, double b) {
    return std::abs(std::remainder(b - a, 2 * standin::pi));
}

} // namespace

PathFacts pathFacts(const std::deque<HistoryPoint>& history, const std::vector<TrafficReport>& reports) {
    std::vector<tool::TrackPoint> line;
    for (const TrafficReport& report : reports) {
        line.push_back({report.at, report.position, report.altFt, report.gsKt, report.onGround});
    }
    PathFacts facts;
    std::vector<double> offLine;
    std::vector<double> lag;
    constexpr std::size_t every = 25;
    for (std::size_t i = 0; i < history.size(); i += every) {
        const HistoryPoint& point = history[i];
        const auto place = point.onGround
                               ? std::nullopt
                               : tool::placeOnLine(line, point.atSeconds, {point.place.lat, point.place.lon});
        if (!place) {
            continue;
        }
        offLine.push_back(place->distanceM);
        lag.push_back(place->lagS);
        facts.largestLagS = std::max(facts.largestLagS, place->lagS);
        facts.largestLeadS = std::max(facts.largestLeadS, -place->lagS);
    }
    facts.points = offLine.size();
    const tool::Spread spread = tool::spreadOf(offLine);
    facts.medianOffLineM = spread.median;
    facts.p95OffLineM = spread.p95;
    facts.medianLagS = tool::spreadOf(lag).median;
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
