#include "bench/realism/recordings.h"

#include "tools/measureflights/csvtable.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

namespace kst::bench {

namespace {

using standin::TrafficReport;
using Reports = std::vector<TrafficReport>;

constexpr double longestSilenceS = 300.0;
constexpr double shortestFlightS = 60.0;
constexpr std::size_t fewestReports = 10;

// Where a flight uses an airport: low over it.
constexpr double airportRadiusM = 3.0 * metresPerNm;
constexpr double lowFt = 1500.0;
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

std::ifstream opened(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error(fmt::format("cannot open {}", path.filename().string()));
    }
    return in;
}

/// All airports with a code of four letters, by whole degrees.
class AirportMap {
public:
    explicit AirportMap(const std::filesystem::path& file) {
        std::ifstream in = opened(file);
        tool::readCsv(in, {"code", "lat", "lon", "alt_ft"}, [&](const tool::CsvRow& row) {
            const auto lat = row.number(1);
            const auto lon = row.number(2);
            const std::string code(row.text(0));
            const bool proper = code.size() == 4 && std::all_of(code.begin(), code.end(), [](char letter) {
                                    return letter >= 'A' && letter <= 'Z';
                                });
            if (proper && lat && lon) {
                cells_[cellOf({*lat, *lon})].push_back({code, {*lat, *lon}, row.number(3).value_or(0.0)});
            }
        });
    }

    const Airport* nearest(LatLon place) const {
        const Airport* best = nullptr;
        double bestM = airportRadiusM;
        for (int dLat = -1; dLat <= 1; ++dLat) {
            for (int dLon = -1; dLon <= 1; ++dLon) {
                const auto cell = cells_.find(cellOf({place.lat + dLat, place.lon + dLon}));
                const Airport* here = cell == cells_.end() ? nullptr : nearestAirport(cell->second, place);
                if (here != nullptr && tool::metresBetween(here->position, place) < bestM) {
                    best = here;
                    bestM = tool::metresBetween(here->position, place);
                }
            }
        }
        return best;
    }

private:
    static std::pair<int, int> cellOf(LatLon place) {
        return {static_cast<int>(std::floor(place.lat)), static_cast<int>(std::floor(place.lon))};
    }
    std::map<std::pair<int, int>, std::vector<Airport>> cells_;
};

std::vector<Airport> airportsOf(const Reports& reports, const AirportMap& map) {
    std::map<std::string, std::pair<int, Airport>> used;
    for (const TrafficReport& report : reports) {
        const Airport* airport = report.altFt < 12000.0 ? map.nearest(report.position) : nullptr;
        if (airport != nullptr && (report.onGround || report.altFt < airport->elevationFt + lowFt)) {
            auto& entry = used[airport->code];
            ++entry.first;
            entry.second = *airport;
        }
    }
    std::vector<std::pair<int, Airport>> byUse;
    for (const auto& [code, entry] : used) {
        byUse.push_back(entry);
    }
    std::stable_sort(byUse.begin(), byUse.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<Airport> airports;
    for (const auto& [count, airport] : byUse) {
        if (airports.size() < mostAirports) {
            airports.push_back(airport);
        }
    }
    return airports;
}

/// What happens where the recording goes from ground to air or back.
void noteContacts(RecordedFlight& flight) {
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

/// Reports of one target, cut where it is silent for long.
std::vector<Reports> cutFlights(const Reports& reports) {
    std::vector<Reports> flights;
    for (const TrafficReport& report : reports) {
        if (flights.empty() || report.at - flights.back().back().at > longestSilenceS) {
            flights.emplace_back();
        }
        flights.back().push_back(report);
    }
    std::erase_if(flights, [](const Reports& flight) {
        return flight.size() < fewestReports || flight.back().at - flight.front().at < shortestFlightS;
    });
    return flights;
}

} // namespace

const Airport* nearestAirport(const std::vector<Airport>& airports, LatLon place) {
    const auto nearest =
        std::min_element(airports.begin(), airports.end(), [&](const auto& a, const auto& b) {
            return tool::metresBetween(a.position, place) < tool::metresBetween(b.position, place);
        });
    return nearest == airports.end() ? nullptr : &*nearest;
}

void giveType(std::vector<TrafficReport>& reports, const std::set<std::string, std::less<>>& types) {
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

std::set<std::string, std::less<>> knownTypes(const std::filesystem::path& file) {
    std::set<std::string, std::less<>> types;
    std::ifstream in = opened(file);
    tool::readCsv(in, {"designator"}, [&](const tool::CsvRow& row) { types.emplace(row.text(0)); });
    return types;
}

bool isContact(const TrafficReport& before, const TrafficReport& after) {
    return after.gsKt >= rollingKt && after.at - before.at <= contactGapS;
}

int qnhFitting(std::vector<double>& elevationMinusPressureFt) {
    if (elevationMinusPressureFt.empty()) {
        return standardQnh;
    }
    const double offFt = tool::spreadOf(elevationMinusPressureFt).median;
    const int offHpa = static_cast<int>(std::lround(offFt / feetPerHectopascal));
    return std::clamp(standardQnh + offHpa, lowestQnh, highestQnh);
}

std::set<std::filesystem::path> trackFiles(const std::filesystem::path& tracks) {
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(tracks)) {
        if (entry.path().extension() == ".csv") {
            files.insert(entry.path());
        }
    }
    if (files.empty()) {
        throw std::runtime_error("the folder holds no tracks");
    }
    return files;
}

std::vector<RecordedFlight> readRecordings(const std::filesystem::path& tracks,
                                           const std::filesystem::path& dataFolder) {
    const AirportMap airports(dataFolder / "airports.csv");
    const auto types = knownTypes(dataFolder / "types.csv");
    std::vector<RecordedFlight> flights;
    for (const std::filesystem::path& file : trackFiles(tracks)) {
        Reports all;
        standin::recordedTraffic({.files = {{file, 0.0}}})->takeDue(1e18, all);
        std::map<std::uint32_t, Reports> byTarget;
        for (const TrafficReport& report : all) {
            byTarget[report.hexid].push_back(report);
        }
        for (const auto& [hexid, target] : byTarget) {
            for (Reports& reports : cutFlights(target)) {
                RecordedFlight flight;
                const TrafficReport& first = reports.front();
                const double begin = first.at;
                flight.file = file.stem().string();
                flight.name = fmt::format(
                    "{} {}@{:.0f}", flight.file,
                    first.callsign.empty() ? fmt::format("{:06x}", hexid) : first.callsign, begin);
                giveType(reports, types);
                for (TrafficReport& report : reports) {
                    report.at -= begin;
                    if (report.callsign.empty() && report.registration.empty()) {
                        report.callsign = fmt::format("{:06X}", hexid);
                    }
                }
                flight.airports = airportsOf(reports, airports);
                flight.reports = std::move(reports);
                noteContacts(flight);
                flights.push_back(std::move(flight));
            }
        }
    }
    return flights;
}

} // namespace kst::bench
