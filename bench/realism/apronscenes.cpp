#include "bench/realism/apronscenes.h"

#include "tools/measureflights/csvtable.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>

namespace kst::bench {

namespace {

using standin::TrafficReport;
using Reports = std::vector<TrafficReport>;

constexpr double longestSilenceS = 300.0;
constexpr double sceneRadiusM = 10.0 * metresPerNm;
constexpr double apronRadiusM = 3.0 * metresPerNm;
constexpr std::size_t fewestOnGround = 10;

constexpr std::uint32_t firstHexidTogether = 0x300000;

// What is slower and has no airline's callsign is no aircraft.
constexpr double fastestVehicleKt = 80.0;
constexpr std::size_t shortestFlightNumber = 6;
constexpr std::size_t airlineLetters = 3;

/// The airports with a file of stands.
std::vector<Airport> airportsWithStands(const std::filesystem::path& stands,
                                        const std::filesystem::path& list) {
    std::set<std::string, std::less<>> codes;
    for (const auto& entry : std::filesystem::directory_iterator(stands)) {
        if (entry.path().extension() == ".csv") {
            codes.insert(entry.path().stem().string());
        }
    }
    std::vector<Airport> airports;
    std::ifstream in(list, std::ios::binary);
    tool::readCsv(in, {"code", "lat", "lon", "alt_ft"}, [&](const tool::CsvRow& row) {
        if (codes.contains(row.text(0)) && row.number(1) && row.number(2)) {
            airports.push_back(
                {std::string(row.text(0)), {*row.number(1), *row.number(2)}, row.number(3).value_or(0.0)});
        }
    });
    if (airports.empty()) {
        throw std::runtime_error("the folder holds no stands of a known airport");
    }
    return airports;
}

bool isVehicle(const Reports& reports) {
    const std::string& callsign = reports.front().callsign;
    const bool flightNumber = callsign.size() >= shortestFlightNumber &&
                              std::isdigit(static_cast<unsigned char>(callsign[airlineLetters])) != 0;
    return !flightNumber && std::all_of(reports.begin(), reports.end(), [](const TrafficReport& report) {
        return report.gsKt < fastestVehicleKt;
    });
}

std::string withoutHyphen(std::string registration) {
    std::erase(registration, '-');
    return registration;
}

/// Whatever is an aircraft gets a type that the program knows. Vehicles keep none: the program refuses them.
void completeTypes(Reports& all, const std::set<std::string, std::less<>>& types) {
    std::map<std::uint32_t, Reports> byTarget;
    for (const TrafficReport& report : all) {
        byTarget[report.hexid].push_back(report);
    }
    std::map<std::uint32_t, std::string> given;
    for (auto& [hexid, reports] : byTarget) {
        if (!isVehicle(reports) || types.contains(reports.front().type)) {
            giveType(reports, types);
            given[hexid] = reports.front().type;
        }
    }
    for (TrafficReport& report : all) {
        if (const auto type = given.find(report.hexid); type != given.end()) {
            report.type = type->second;
        }
        // As if the program's own list knew every registration.
        if (report.callsign.empty()) {
            report.callsign = report.registration.empty() ? fmt::format("{:06X}", report.hexid)
                                                          : withoutHyphen(report.registration);
        }
    }
}

/// From what each target says of its altitude in the last report before it is on the ground, or the first
/// one after.
int qnhOf(const Reports& reports, double elevationFt) {
    std::vector<double> elevationMinusPressure;
    std::map<std::uint32_t, const TrafficReport*> last;
    for (const TrafficReport& report : reports) {
        const TrafficReport*& before = last[report.hexid];
        if (before != nullptr && before->onGround != report.onGround && isContact(*before, report)) {
            elevationMinusPressure.push_back(elevationFt - (report.onGround ? *before : report).altFt);
        }
        before = &report;
    }
    return qnhFitting(elevationMinusPressure);
}

std::vector<ApronScene> scenesAt(const Airport& airport, const Reports& all, const std::string& file) {
    std::vector<ApronScene> scenes;
    for (const TrafficReport& report : all) {
        if (tool::metresBetween(report.position, airport.position) > sceneRadiusM) {
            continue;
        }
        if (scenes.empty() || report.at - scenes.back().reports.back().at > longestSilenceS) {
            scenes.push_back({fmt::format("{}@{:.0f} {}", file, report.at, airport.code), airport, {}, 0});
        }
        scenes.back().reports.push_back(report);
    }
    std::erase_if(scenes, [&](const ApronScene& scene) {
        return std::count_if(scene.reports.begin(), scene.reports.end(), [&](const TrafficReport& report) {
                   return report.onGround &&
                          tool::metresBetween(report.position, airport.position) < apronRadiusM;
               }) < static_cast<std::ptrdiff_t>(fewestOnGround);
    });
    for (ApronScene& scene : scenes) {
        const double begin = scene.reports.front().at;
        for (TrafficReport& report : scene.reports) {
            report.at -= begin;
        }
        scene.qnh = qnhOf(scene.reports, airport.elevationFt);
    }
    return scenes;
}

} // namespace

std::vector<ApronScene> readApronScenes(const std::filesystem::path& tracks,
                                        const std::filesystem::path& stands,
                                        const std::filesystem::path& dataFolder) {
    const std::vector<Airport> airports = airportsWithStands(stands, dataFolder / "airports.csv");
    const auto types = knownTypes(dataFolder / "types.csv");
    std::vector<ApronScene> scenes;
    for (const std::filesystem::path& file : trackFiles(tracks)) {
        Reports all;
        standin::recordedTraffic({.files = {{file, 0.0}}})->takeDue(1e18, all);
        completeTypes(all, types);
        for (const Airport& airport : airports) {
            for (ApronScene& scene : scenesAt(airport, all, file.stem().string())) {
                scenes.push_back(std::move(scene));
            }
        }
    }
    return scenes;
}

std::vector<ApronScene> scenesTogether(const std::vector<ApronScene>& scenes, double everyS) {
    std::map<std::string, ApronScene> byAirport;
    std::map<std::string, double> nextBegin;
    std::uint32_t hexid = firstHexidTogether;
    for (const ApronScene& scene : scenes) {
        ApronScene& all = byAirport[scene.airport.code];
        all.name = "together " + scene.airport.code;
        all.airport = scene.airport;
        all.qnh = scene.qnh;
        double& begin = nextBegin[scene.airport.code];
        std::map<std::uint32_t, std::uint32_t> newIds;
        for (TrafficReport report : scene.reports) {
            report.at += begin;
            const auto [id, fresh] = newIds.try_emplace(report.hexid, hexid);
            hexid += fresh ? 1U : 0U;
            report.hexid = id->second;
            all.reports.push_back(std::move(report));
        }
        begin += everyS;
    }
    std::vector<ApronScene> out;
    for (auto& [code, scene] : byAirport) {
        std::ranges::stable_sort(scene.reports, {}, &TrafficReport::at);
        out.push_back(std::move(scene));
    }
    return out;
}

} // namespace kst::bench
