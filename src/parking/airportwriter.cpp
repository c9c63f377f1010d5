#include "core/files.h"
#include "core/xmlmeta.h"
#include "parking/airportfile.h"
#include "parking/airportsettings.h"
#include "parking/parkposxml.h"

#include <fmt/format.h>

namespace kst {

namespace {

constexpr const char* indent = "\t";

void addParameters(pugi::xml_node parameters, const AirportFile& airport, ApfMode mode) {
    const auto add = [&](std::string_view name, const std::string& value) {
        addAirportParameter(parameters, name, value);
    };
    add("airport_name", airport.airport_name);
    add("publisher", airport.publisher);
    if (airport.handmade) {
        add("handmade", "true");
    }
    if (airport.handmade || mode == ApfMode::Archive) {
        add("altitude", fmt::format("{}", airport.altitude));
    }
    add("num_parkpos", fmt::format("{}", airport.stands.size()));
    if (airport.handmade) {
        add("Qf_real", fmt::format("{}", airport.quality.Qf_real));
        add("Qf_soft", fmt::format("{}", airport.quality.Qf_soft));
    }
    if (airport.publisher == "unknown") {
        add("BGLpath", airport.BGLpath);
    }
    if (mode == ApfMode::Learned) {
        addAirportSettings(parameters);
    }
}

/// A stand of a learned file: whole when no other file has it, else only what differs.
pugi::xml_node addLearnedParkPos(pugi::xml_node parkpositions, const ParkPos& stand, bool handmade) {
    if (handmade || stand.manual) {
        pugi::xml_node node = addParkPos(parkpositions, stand);
        if (stand.manual) {
            node.append_attribute("manual").set_value("true");
        }
        return node;
    }
    pugi::xml_node node = parkpositions.append_child("parkpos");
    node.append_attribute("id").set_value(stand.id.c_str());
    if (stand.radius_change) {
        node.append_attribute("radius_change").set_value("true");
        node.append_attribute("radius").set_value(radiusText(stand).c_str());
    }
    if (stand.cargo_change) {
        node.append_attribute("cargo_change").set_value("true");
        node.append_attribute("cargo").set_value(boolText(stand.cargo));
    }
    return node;
}

} // namespace

bool gf_saveApf(const AirportFile& airport, const std::filesystem::path& path, ApfMode mode) {
    pugi::xml_document document;
    addParameters(document.append_child("parameters"), airport, mode);
    addXmlMeta(document);
    const pugi::xml_node parkpositions = document.append_child("parkpositions");
    for (const ParkPos& stand : airport.stands) {
        if (mode == ApfMode::Archive) {
            addParkPos(parkpositions, stand);
        } else {
            addParkOptions(addLearnedParkPos(parkpositions, stand, airport.handmade), stand);
        }
    }
    return replaceFile(path, xmlText(document, indent));
}

} // namespace kst
