#include "scanner/airportdirectory.h"

#include "core/exceptions.h"
#include "core/files.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/numbertext.h"
#include "parking/airportfile.h"
#include "platform/paths.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>
#include <pugixml.hpp>

namespace kst {

namespace {

constexpr std::size_t usualAirports = 44000;
constexpr double atAirportNm = 5.0;
/// A degree of latitude on the sphere is 60.0000 nm and a little more. With less than that no airport within
/// reach is passed over, however the numbers are rounded.
constexpr double reachDeg = atAirportNm / 59.9;

std::vector<AirportEntry>& directory() {
    static std::vector<AirportEntry> airports;
    return airports;
}

double numberOf(const pugi::xml_node& airport, const char* name) {
    const char* const text = airport.attribute(name).value();
    if (const std::optional<double> number = finiteNumberAtStart(text)) {
        return *number;
    }
    throw std::runtime_error(
        fmt::format("airport {}: {} \"{}\" is no number", airport.attribute("code").value(), name, text));
}

std::vector<AirportEntry> readDirectory(const std::filesystem::path& path) {
    const std::string shown = platform::utf8FromPath(path);
    pugi::xml_document document;
    if (const pugi::xml_parse_result result = document.load_file(path.c_str()); !result) {
        throw std::runtime_error(fmt::format("{} not loaded {}", shown, result.description()));
    }
    const pugi::xml_node airports = document.child("airports");
    if (!airports) {
        throw std::runtime_error(fmt::format("{} not found", shown));
    }
    std::vector<AirportEntry> entries;
    entries.reserve(usualAirports);
    for (const pugi::xml_node airport : airports.children("airport")) {
        AirportEntry& entry = entries.emplace_back();
        entry.code = airport.attribute("code").value();
        entry.iata = airport.attribute("iata").value();
        entry.alt = static_cast<float>(numberOf(airport, "alt"));
        entry.latitude = numberOf(airport, "lat");
        entry.longitude = numberOf(airport, "lon");
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const AirportEntry& a, const AirportEntry& b) { return a.code < b.code; });
    logLine(fmt::format("{} airports read from \"{}\"", entries.size(), shown));
    entries.shrink_to_fit();
    return entries;
}

} // namespace

bool lf_readAirports() {
    static bool read = false;
    if (!read) {
        try {
            directory() = readDirectory(folders::airports / "airports_p3d.xml");
        } catch (const std::exception& error) {
            throw UserErrorException(88, error.what());
        }
        read = true;
    }
    return !directory().empty();
}

const AirportEntry* gf_airportByCode(std::string_view code) {
    const auto found = std::lower_bound(
        directory().begin(), directory().end(), code,
        [](const AirportEntry& entry, std::string_view wanted) { return entry.code < wanted; });
    return found != directory().end() && found->code == code ? &*found : nullptr;
}

AirportsNear lf_airportsNear(const std::vector<AirportEntry>& directory, LatLon position) {
    AirportsNear near;
    double bestNm = atAirportNm;
    for (const AirportEntry& entry : directory) {
        if (std::abs(entry.latitude - position.lat) > reachDeg) {
            continue;
        }
        const double distance = gf_distanceNm(position, entry.position());
        // The first airport may lie just at the limit, a closer one has to be closer.
        if (near.best == nullptr ? distance <= bestNm : distance < bestNm) {
            near.second = near.best;
            near.best = &entry;
            bestNm = distance;
        }
    }
    return near;
}

const AirportEntry* gf_closestAirport(LatLon position) {
    const auto [best, second] = lf_airportsNear(directory(), position);
    if (best == nullptr || second == nullptr) {
        return best;
    }
    logLine(fmt::format("Airport {} is closest, neighbour is {}", best->code, second->code));
    std::string bestStand;
    std::string secondStand;
    const double bestNm = gf_readDestApfForClosestStand(best->code, position, bestStand);
    const double secondNm = gf_readDestApfForClosestStand(second->code, position, secondStand);
    if (secondNm >= bestNm) {
        return best;
    }
    logLine(fmt::format(
        "Airport {} is closest, but stand {} at neighbouring airport {} is closest at {:.0F} meters ...",
        best->code, secondStand, second->code, secondNm * metresPerNm));
    return second;
}

} // namespace kst
