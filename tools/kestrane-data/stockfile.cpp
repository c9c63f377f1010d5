#include "stockfile.h"

#include "core/numbertext.h"
#include "core/xmlmeta.h"
#include "csvrows.h"
#include "madeuptraffic.h"
#include "model/units.h"
#include "parking/learning.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"

#include <stdexcept>

#include <fmt/format.h>

namespace kst::data {

namespace {

double number(const std::string& text) {
    const auto value = finiteNumberAtStart(text);
    if (!value) {
        throw std::runtime_error("\"" + text + "\" is no number");
    }
    return *value;
}

void takeAirport(AirportFile& airport, const std::string& folder) {
    enum Column { Code, Iata, Latitude, Longitude, Altitude, Name };
    for (const Row& row : readRows(folder + "/airports.csv", true)) {
        if (row[Code] == airport.icao && row.size() > Name) {
            airport.airport_name = row[Name];
            airport.altitude = static_cast<int>(number(row[Altitude]));
            return;
        }
    }
    throw std::runtime_error("airports.csv: no airport " + airport.icao);
}

void takeStands(AirportFile& airport, const std::string& folder) {
    enum Column { Id, Latitude, Longitude, Heading, Radius, Kind };
    for (const Row& row : readRows(folder + "/stands/" + airport.icao + ".csv", true)) {
        if (row.size() <= Kind) {
            throw std::runtime_error("stands/" + airport.icao + ".csv: " + row[Id] + " is cut");
        }
        ParkPos& stand = airport.stands.emplace_back();
        stand.id = row[Id];
        stand.latitude = number(row[Latitude]);
        stand.longitude = number(row[Longitude]);
        stand.heading = number(row[Heading]) * radPerDeg;
        stand.radius = number(row[Radius]) / metresPerNm;
        stand.heli = row[Kind] == "heli";
        stand.cargo = row[Kind] == "cargo";
        stand.ramp = row[Kind] != "gate";
    }
}

} // namespace

void addStockAirport(pugi::xml_document& document, const std::string& folder, const std::string& icao) {
    clearLoadedAirport();
    AirportFile& airport = loadedAirport();
    airport.icao = icao;
    airport.publisher = "stock";
    takeAirport(airport, folder);
    takeStands(airport, folder);
    numberStands(airport.stands);
    addMadeUpTraffic(airport, folder);
    airport.quality = gf_qualityFactor();

    pugi::xml_node parameters = document.append_child("parameters");
    addAirportParameter(parameters, "airport_name", airport.airport_name);
    addAirportParameter(parameters, "publisher", airport.publisher);
    addAirportParameter(parameters, "altitude", fmt::format("{}", airport.altitude));
    addAirportParameter(parameters, "num_parkpos", fmt::format("{}", airport.stands.size()));
    addAirportParameter(parameters, "Qf_real", fmt::format("{}", airport.quality.Qf_real));
    addAirportParameter(parameters, "Qf_soft", fmt::format("{}", airport.quality.Qf_soft));
    addAirportParameter(parameters, "RT_traffic_week", "0");
    addXmlMeta(document);
    pugi::xml_node parkpositions = document.append_child("parkpositions");
    for (const ParkPos& stand : airport.stands) {
        addParkOptions(addParkPos(parkpositions, stand), stand);
    }
    document.insert_child_before(pugi::node_comment, document.child("parameters"))
        .set_value(" Stands: OpenStreetMap contributors, Open Database License 1.0. "
                   "The observations on them are MADE UP: nobody saw these aircraft here. ");
}

} // namespace kst::data
