#include "airportlist.h"

#include "csvrows.h"

#include <stdexcept>

namespace kst::data {

void addAirports(pugi::xml_document& document, const std::string& folder) {
    enum Column { Code, Iata, Latitude, Longitude, Altitude, Name };
    pugi::xml_node airports = document.append_child("airports");
    for (const Row& row : readRows(folder + "/airports.csv", true)) {
        if (row.size() <= Name || row[Latitude].empty() || row[Longitude].empty()) {
            throw std::runtime_error("airports.csv: " + row[Code] + " is no airport with a position");
        }
        pugi::xml_node airport = airports.append_child("airport");
        const auto add = [&](const char* name, const std::string& value) {
            airport.append_attribute(name).set_value(value.c_str());
        };
        add("code", row[Code]);
        add("alt", row[Altitude].empty() ? "0" : row[Altitude]);
        add("lat", row[Latitude]);
        add("lon", row[Longitude]);
        add("iata", row[Iata]);
    }
}

} // namespace kst::data
