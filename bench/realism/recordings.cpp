#include "bench/realism/recordings.h"

#include "tools/measureflights/csvtable.h"
#include "tools/measureflights/files.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <ranges>
#include <stdexcept>

namespace kst::bench {

namespace {

using standin::TrafficReport;

constexpr double longestSilenceS = 300.0;
constexpr double shortestFlightS = 60.0;
constexpr std::size_t fewestReports = 10;

// Where a flight uses an airport: low over it.
constexpr double airportRadiusM = 3.0 * metresPerNm;
constexpr double lowFt = 1500.0;
constexpr double highestAirportFt = 12000.0;
constexpr double cellReachDeg = 0.7; ///< from the middle of a square degree to beyond its edge
constexpr std::size_t mostAirports = 8;

// A landing or departure is recorded when it is seen for some time on both sides.
constexpr int pointsInAir = 5;
constexpr int pointsOnGround = 2;
constexpr double rollingKt = 40.0;
constexpr double contactGapS = 15.0;

constexpr double feetPerHectopascal = 27.3;
constexpr int standardQnh = 1013;
constexpr int lowestQnh = 980;
constexpr int highestQnh = 1045;
constexpr double jetKt = 220.0;

/// Those that lie within `airportRadiusM` of the flight's ground and low points, the most used first.
std::vector<Airport> airportsOf(const Reports& reports, const std::vector<Airport>& all) {
    std::map<std::pair<double, double>, std::vector<Airport>> near; // of each square degree
    std::map<std::string, std::pair<int, Airport>> used;
    for (const TrafficReport& report : reports) {
        if (report.altFt >= highestAirportFt) {
            continue;
        }
        const LatLon place = report.position;
        const LatLon corner{std::floor(place.lat), std::floor(place.lon)};
        const auto [cell, fresh] = near.try_emplace({corner.lat, corner.lon});
        if (fresh) {
            std::ranges::copy_if(all, std::back_inserter(cell->second), [&](const Airport& airport) {
                return std::abs(airport.position.lat - corner.lat - 0.5) < cellReachDeg &&
                       std::abs(airport.position.lon - corner.lon - 0.5) < cellReachDeg;
            });
        }
        const Airport* airport = nearestAirport(cell->second, place);
        if (airport != nullptr && tool::metresBetween(airport->position, place) < airportRadiusM &&
            (report.onGround || report.altFt < airport->elevationFt + lowFt)) {
            auto& entry = used[airport->code];
            ++entry.first;
            entry.second = *airport;
        }
    }
    std::vector<std::pair<int, Airport>> byUse;
    for (const auto& [code, entry] : used) {
        byUse.push_back(entry);
    }
    std::ranges::stable_sort(byUse, std::greater(), &std::pair<int, Airport>::first);
    std::vector<Airport> airports;
    for (const auto& [count, airport] : byUse | std::views::take(mostAirports)) {
        airports.push_back(airport);
    }
    return airports;
}

/// What happens where the recording goes from ground to air or back.
void noteContacts(Recording& flight) {
    const Reports& reports = flight.reports;
    std::vector<double> elevationMinusPressure;
    std::size_t begin = 0;
    for (std::size_t i = 1; i <= reports.size(); ++i) {
        if (i < reports.size() && reports[i].onGround == reports[begin].onGround) {
            continue;
        }
        const auto length = static_cast<int>(i - begin);
        const bool ground = reports[begin].onGround;
        const bool counts = length >= (ground ? pointsOnGround : pointsInAir);
        const std::size_t next = i;
        std::size_t nextEnd = next;
        while (nextEnd < reports.size() && reports[nextEnd].onGround != ground) {
            ++nextEnd;
        }
        const bool nextCounts = static_cast<int>(nextEnd - next) >= (ground ? pointsInAir : pointsOnGround);
        if (i < reports.size() && counts && nextCounts && isContact(reports[i - 1], reports[i])) {
            (ground ? flight.departures : flight.landings).push_back(reports[i].at);
            const TrafficReport& low = ground ? reports[i] : reports[i - 1];
            if (const Airport* airport = nearestAirport(flight.airports, low.position)) {
                elevationMinusPressure.push_back(airport->elevationFt - low.altFt);
            }
        }
        begin = i;
    }
    flight.qnh = qnhFitting(elevationMinusPressure);
}

} // namespace

const Airport* nearestAirport(const std::vector<Airport>& airports, LatLon place) {
    const auto nearest = std::ranges::min_element(
        airports, {}, [&](const Airport& airport) { return tool::metresBetween(airport.position, place); });
    return nearest == airports.end() ? nullptr : &*nearest;
}

std::vector<Airport> readAirports(const std::filesystem::path& dataFolder) {
    std::vector<Airport> airports;
    std::ifstream in = tool::openFile(dataFolder / "airports.csv");
    tool::readCsv(in, {"code", "lat", "lon", "alt_ft"}, [&](const tool::CsvRow& row) {
        const auto lat = row.number(1);
        const auto lon = row.number(2);
        const std::string code(row.text(0));
        const bool proper = code.size() == 4 && std::ranges::all_of(code, [](char letter) {
                                return letter >= 'A' && letter <= 'Z';
                            });
        if (proper && lat && lon) {
            airports.push_back({code, {*lat, *lon}, row.number(3).value_or(0.0)});
        }
    });
    return airports;
}

void giveType(Reports& reports, const Types& types) {
    double fastestKt = 0.0;
    for (const TrafficReport& report : reports) {
        fastestKt = std::max(fastestKt, report.gsKt);
    }
    for (TrafficReport& report : reports) {
        if (!types.contains(report.type)) {
            report.type = fastestKt > jetKt ? "A320" : "C172";
        }
    }
}

Types readTypes(const std::filesystem::path& dataFolder) {
    Types types;
    std::ifstream in = tool::openFile(dataFolder / "types.csv");
    tool::readCsv(in, {"designator"}, [&](const tool::CsvRow& row) { types.emplace(row.text(0)); });
    return types;
}

std::vector<Reports> cutAtSilences(const Reports& reports) {
    std::vector<Reports> parts;
    for (const TrafficReport& report : reports) {
        if (parts.empty() || report.at - parts.back().back().at > longestSilenceS) {
            parts.emplace_back();
        }
        parts.back().push_back(report);
    }
    return parts;
}

double beginAtZero(Reports& reports) {
    const double begin = reports.front().at;
    for (TrafficReport& report : reports) {
        report.at -= begin;
    }
    return begin;
}

bool isContact(const TrafficReport& before, const TrafficReport& after) {
    return after.gsKt >= rollingKt && after.at - before.at <= contactGapS;
}

int qnhFitting(const std::vector<double>& elevationMinusPressureFt) {
    if (elevationMinusPressureFt.empty()) {
        return standardQnh;
    }
    const double offFt = tool::spreadOf(elevationMinusPressureFt).median;
    const int offHpa = static_cast<int>(std::lround(offFt / feetPerHectopascal));
    return std::clamp(standardQnh + offHpa, lowestQnh, highestQnh);
}

void forEachFile(const std::filesystem::path& tracks,
                 const std::function<void(const std::string& name, Reports& all)>& take) {
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(tracks)) {
        if (entry.path().extension() == ".csv") {
            files.insert(entry.path());
        }
    }
    if (files.empty()) {
        throw std::runtime_error("the folder holds no tracks");
    }
    for (const std::filesystem::path& file : files) {
        Reports all;
        standin::recordedTraffic({.files = {{file, 0.0}}})->takeDue(1e18, all);
        take(file.stem().string(), all);
    }
}

std::vector<Recording> readFlights(const std::filesystem::path& tracks,
                                   const std::filesystem::path& dataFolder) {
    const std::vector<Airport> airports = readAirports(dataFolder);
    const Types types = readTypes(dataFolder);
    std::vector<Recording> flights;
    forEachFile(tracks, [&](const std::string& file, const Reports& all) {
        std::map<std::uint32_t, Reports> byTarget;
        for (const TrafficReport& report : all) {
            byTarget[report.hexid].push_back(report);
        }
        for (const auto& [hexid, target] : byTarget) {
            const std::string address = fmt::format("{:06X}", hexid);
            for (Reports& reports : cutAtSilences(target)) {
                if (reports.size() < fewestReports ||
                    reports.back().at - reports.front().at < shortestFlightS) {
                    continue;
                }
                Recording& flight = flights.emplace_back();
                const std::string callsign = reports.front().callsign;
                flight.name = fmt::format("{} {}@{:.0f}", file, callsign.empty() ? address : callsign,
                                          beginAtZero(reports));
                giveType(reports, types);
                for (TrafficReport& report : reports) {
                    if (report.callsign.empty() && report.registration.empty()) {
                        report.callsign = address;
                    }
                }
                flight.airports = airportsOf(reports, airports);
                flight.reports = std::move(reports);
                noteContacts(flight);
            }
        }
    });
    return flights;
}

} // namespace kst::bench
