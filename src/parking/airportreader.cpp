#include "core/controlids.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "parking/airportfetch.h"
#include "parking/airportfile.h"
#include "parking/airportxml.h"
#include "parking/learning.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"
#include "platform/paths.h"

#include <fmt/format.h>
#include <pugixml.hpp>

namespace kst {

namespace {

constexpr std::string_view thisFunction = "gf_readApf";

/// From this real factor on the soft one does not matter any more.
constexpr int realIsEnough = 45;

void takeParameters(const pugi::xml_document& document, AirportFile& airport) {
    const pugi::xml_attribute altitude = airportParameter(document, "altitude");
    airport.RT_traffic_week = wholeAttribute(airportParameter(document, "RT_traffic_week"));
    airport.publisher = textAttribute(airportParameter(document, "publisher"));
    if (!altitude) {
        throw UserErrorException(99, "Parameter altitude not found");
    }
    airport.altitude = wholeAttribute(altitude);
    airport.airport_name = textAttribute(airportParameter(document, "airport_name"));
    airport.BGLpath = textAttribute(airportParameter(document, "BGLpath"));
}

int qualityParameter(const pugi::xml_document& document, std::string_view name) {
    const pugi::xml_attribute value = airportParameter(document, name);
    return value ? wholeAttribute(value) : -1;
}

/// Lays the learned file over the airport. Returns the path that the stands came from.
std::string readLearnedOver(const std::string& location, AirportFile& airport) {
    const std::filesystem::path learned = lf_learnedApfPath(location, airport.publisher);
    std::error_code ignored;
    if (!std::filesystem::exists(learned, ignored)) {
        constexpr int usualPercentage = 30;
        parking_percentage.set(usualPercentage);
        showParameter(parking_percentage);
        enableControl(control::ParkingPercentage, false);
        logLine(fmt::format("{:24}: {}%", parking_percentage.name(), parking_percentage.get()));
        return location;
    }
    lf_readLearned(learned, airport);
    airport.quality = gf_qualityFactor();
    if (!airport.handmade) {
        return location;
    }
    logLine("A handmade airport file overruled the archived file!");
    return platform::utf8FromPath(learned);
}

void logAirport(const std::string& source, const AirportFile& airport) {
    logLine(fmt::format("Airport file read from \"{}\" for {}", source, airport.airport_name));
    logIndented(fmt::format("{:24}: {}", "publisher", airport.publisher));
    logIndented(fmt::format("{:24}: {} ft", "altitude", airport.altitude));
    logIndented(fmt::format("{:24}: {}", "num_parkpos", airport.stands.size()));
    logIndented(fmt::format("{:24}: {}", "quality factor", gf_qualityText(airport.quality)));
    logIndented(fmt::format("{:24}: {}", "RT traffic week", airport.RT_traffic_week));
}

void showAirport(const AirportFile& airport) {
    updateStatus(Band::Park, [&](StatusValues& status) {
        status.standsShown = airport.stands.size();
        status.publisherText = airport.publisher;
        status.handmadeShown = airport.handmade;
        status.qualityText = gf_qualityText(airport.quality);
        status.trafficWeek = airport.RT_traffic_week;
        status.airportName = airport.airport_name;
    });
    setAirportLoaded();
    enableControl(control::FlushStatic, true);
    // Blank since the start. The operator is about to be let at it, and an empty text would mean the default.
    showParameter(MAX_FIT_FL);
    parametersChanged = false;
    if (auto facts = parkAirport()) {
        facts->elevationFt = airport.altitude;
        setParkAirport(facts);
    }
}

std::string readApf(const std::string& location) {
    if (location.empty()) {
        return fmt::format("{} xml is empty...", thisFunction);
    }
    const auto facts = parkAirport();
    if (!facts) {
        return fmt::format("{} no park airport set", thisFunction);
    }
    std::filesystem::path path = platform::pathFromUtf8(location);
    if (!isLocalLocation(location)) {
        path = folders::airports / "park_airport.xml";
        if (!fetchAirportFile(location, path)) {
            std::string failure = fmt::format("failed to download: \"{}\"", airportFileUrl(location));
            logLine(failure);
            return failure;
        }
    }
    AirportFile& airport = loadedAirport();
    airport.handmade = false;
    AirportXml file;
    if (const std::string failure = file.load(path); !failure.empty()) {
        return fmt::format("{} could not be loaded: {}", location, failure);
    }
    airport.icao = facts->code;
    takeParameters(file.document(), airport);
    file.takeStands(airport.stands);
    airport.quality = {qualityParameter(file.document(), "Qf_real"),
                       qualityParameter(file.document(), "Qf_soft")};
    const std::string source = readLearnedOver(location, airport);
    numberStands(airport.stands);
    logAirport(source, airport);
    showAirport(airport);
    return airport.stands.empty() ? "no stands found" : "";
}

} // namespace

std::string gf_readApf(const std::string& location) {
    try {
        return readApf(location);
    } catch (const UserErrorException&) {
        throw;
    } catch (const std::exception& error) {
        return fmt::format("{}: {}", thisFunction, error.what());
    }
}

std::string gf_qualityText(QualityFactors quality) {
    if (quality.Qf_real < 0 && quality.Qf_soft < 0) {
        return "  ";
    }
    return quality.Qf_real < realIsEnough ? fmt::format("{:2}/{:2}", quality.Qf_real, quality.Qf_soft)
                                          : fmt::format("{:2}", quality.Qf_real);
}

} // namespace kst
