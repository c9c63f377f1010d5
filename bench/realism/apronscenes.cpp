#include "bench/realism/apronscenes.h"

#include "tools/measureflights/line.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <stdexcept>

namespace kst::bench {

namespace {

using standin::TrafficReport;

constexpr double sceneRadiusM = 10.0 * metresPerNm;
constexpr double apronRadiusM = 3.0 * metresPerNm;
constexpr std::ptrdiff_t fewestOnGround = 10;

constexpr std::uint32_t firstHexidTogether = 0x300000;

// What is slower and has no airline's callsign is no aircraft.
constexpr double fastestVehicleKt = 80.0;
constexpr std::size_t shortestFlightNumber = 6;
constexpr std::size_t airlineLetters = 3;

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
void completeTypes(Reports& all, const Types& types) {
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

std::vector<Recording> scenesAt(const Airport& airport, const Reports& all, const std::string& file) {
    const auto isWithin = [&](double radiusM) {
        return [&airport, radiusM](const TrafficReport& report) {
            return tool::metresBetween(report.position, airport.position) <= radiusM;
        };
    };
    Reports near;
    std::ranges::copy_if(all, std::back_inserter(near), isWithin(sceneRadiusM));
    std::vector<Recording> scenes;
    for (Reports& reports : cutAtSilences(near)) {
        const auto onGround = std::ranges::count_if(reports, [&](const TrafficReport& report) {
            return report.onGround && isWithin(apronRadiusM)(report);
        });
        if (onGround >= fewestOnGround) {
            Recording& scene = scenes.emplace_back();
            scene.name = fmt::format("{}@{:.0f} {}", file, beginAtZero(reports), airport.code);
            scene.airports = {airport};
            scene.qnh = qnhOf(reports, airport.elevationFt);
            scene.reports = std::move(reports);
        }
    }
    return scenes;
}

} // namespace

std::vector<Recording> readScenes(const std::filesystem::path& tracks, const std::filesystem::path& stands,
                                  const std::filesystem::path& dataFolder) {
    std::vector<Airport> airports = readAirports(dataFolder);
    std::erase_if(airports, [&](const Airport& airport) {
        return !std::filesystem::exists(stands / (airport.code + ".csv"));
    });
    if (airports.empty()) {
        throw std::runtime_error("the folder holds no stands of a known airport");
    }
    const Types types = readTypes(dataFolder);
    std::vector<Recording> scenes;
    forEachFile(tracks, [&](const std::string& file, Reports& all) {
        completeTypes(all, types);
        for (const Airport& airport : airports) {
            std::ranges::move(scenesAt(airport, all, file), std::back_inserter(scenes));
        }
    });
    return scenes;
}

std::vector<Recording> scenesTogether(const std::vector<Recording>& scenes, double everyS) {
    std::map<std::string, Recording> byAirport;
    std::map<std::string, double> nextBegin;
    std::uint32_t hexid = firstHexidTogether;
    for (const Recording& scene : scenes) {
        const std::string& code = scene.airports.front().code;
        Recording& all = byAirport[code];
        all.name = "together " + code;
        all.airports = scene.airports;
        all.qnh = scene.qnh;
        double& begin = nextBegin[code];
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
    std::vector<Recording> out;
    for (auto& [code, scene] : byAirport) {
        std::ranges::stable_sort(scene.reports, {}, &TrafficReport::at);
        out.push_back(std::move(scene));
    }
    return out;
}

} // namespace kst::bench
