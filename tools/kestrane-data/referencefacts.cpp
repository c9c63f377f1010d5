#include "referencefacts.h"

#include "csvrows.h"

#include <map>
#include <set>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

namespace kst::data {

namespace {

/// Codes in one attribute: enough to keep a line readable.
constexpr std::size_t codesPerElement = 40;

void addCodes(pugi::xml_document& document, const char* section, const char* element, const char* attribute,
              const std::set<std::string>& codes) {
    pugi::xml_node parent = document.append_child(section);
    std::string list;
    std::size_t count = 0;
    const auto flush = [&] {
        if (!list.empty()) {
            parent.append_child(element).append_attribute(attribute) = list.c_str();
            list.clear();
        }
    };
    for (const std::string& code : codes) {
        list += (list.empty() ? "" : ",") + code;
        if (++count % codesPerElement == 0) {
            flush();
        }
    }
    flush();
}

bool isModel(const std::string& code) {
    if (code.size() < 2 || code.size() > 4) {
        return false;
    }
    return code.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") == std::string::npos;
}

bool isAirline(const std::string& code) {
    return code.size() == 3 &&
           code.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") == std::string::npos;
}

void addTypes(pugi::xml_document& document, const std::string& folder, std::set<std::string>& models) {
    std::map<std::string, std::set<std::string>> classes;
    std::map<std::string, std::string> spans;
    for (const Row& row : readRows(folder + "/types.csv", true)) {
        if (row.size() < 3 || !isModel(row[0])) {
            continue;
        }
        models.insert(row[0]);
        classes[row[1]].insert(row[0]);
        if (!row[2].empty()) {
            spans[row[0]] = row[2];
        }
    }
    addCodes(document, "aircrafts", "aircraft", "types", models);
    addCodes(document, "high_performance", "hpf", "types", classes["HighPerf"]);
    addCodes(document, "heavy", "hvy", "types", classes["Heavy"]);
    addCodes(document, "large", "lar", "types", classes["Large"]);
    addCodes(document, "buzjet", "bzj", "types", classes["Buzjets"]);
    addCodes(document, "rotorcraft", "rot", "types", classes["Rotorcraft"]);
    pugi::xml_node wingspans = document.append_child("wingspans");
    for (const auto& [model, metres] : spans) {
        pugi::xml_node node = wingspans.append_child("wingspan");
        node.append_attribute("type") = model.c_str();
        node.append_attribute("meters") = metres.c_str();
    }
}

void addSimilar(pugi::xml_document& document, const std::string& folder,
                const std::set<std::string>& models) {
    pugi::xml_node parent = document.append_child("similar_types");
    for (const Row& row : readRows(folder + "/similar.csv", false)) {
        std::string list;
        for (const std::string& model : row) {
            if (models.contains(model)) {
                list += (list.empty() ? "" : ",") + model;
            }
        }
        if (list.find(',') != std::string::npos) {
            parent.append_child("similar").append_attribute("types") = list.c_str();
        }
    }
}

void addRegistrations(pugi::xml_document& document, const std::string& folder,
                      const std::set<std::string>& models) {
    constexpr std::size_t longestRegistration = 12;
    std::set<std::string> cargoTypes;
    std::set<std::string> cargoAirlines;
    std::vector<Row> usable;
    for (Row& row : readRows(folder + "/registrations.csv", true)) {
        const bool good =
            row.size() >= 4 && row[0].size() >= 2 && row[0].size() <= longestRegistration &&
            row[0].find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-+") == std::string::npos &&
            isAirline(row[1]) && models.contains(row[2]);
        if (!good) {
            continue;
        }
        if (row[3] == "true") {
            cargoTypes.insert(row[2]);
            cargoAirlines.insert(row[1]);
        }
        usable.push_back(std::move(row));
    }
    addCodes(document, "cargo_types", "cargo_type", "types", cargoTypes);
    addCodes(document, "cargo_operators", "ICAO", "codes", cargoAirlines);
    pugi::xml_node parent = document.append_child("dbase");
    for (const Row& row : usable) {
        pugi::xml_node node = parent.append_child("db");
        node.append_attribute("reg") = row[0].c_str();
        node.append_attribute("airl") = row[1].c_str();
        node.append_attribute("type") = row[2].c_str();
        if (row[3] == "true") {
            node.append_attribute("cargo") = "true";
        }
    }
}

/// Codes that add-on files use for a type, where they are no type's own.
void addFixes(pugi::xml_document& document, const std::string& folder, const std::set<std::string>& models) {
    pugi::xml_node parent = document.append_child("fixes");
    for (const Row& row : readRows(folder + "/fixes.csv", true)) {
        if (row.size() == 2 && !models.contains(row[0]) && models.contains(row[1])) {
            pugi::xml_node node = parent.append_child("fx");
            node.append_attribute("wro") = row[0].c_str();
            node.append_attribute("cor") = row[1].c_str();
        }
    }
}

void addPublishers(pugi::xml_document& document, const std::string& folder) {
    pugi::xml_node parent = document.append_child("publishers");
    for (const Row& row : readRows(folder + "/publishers.csv", false)) {
        std::string names;
        for (const std::string& name : row) {
            names += (names.empty() ? "" : ",") + name;
        }
        parent.append_child("pub").append_attribute("names") = names.c_str();
    }
}

} // namespace

void addReferenceFacts(pugi::xml_document& document, const std::string& folder) {
    std::set<std::string> models;
    addTypes(document, folder, models);
    addSimilar(document, folder, models);
    std::set<std::string> airlines;
    for (const Row& row : readRows(folder + "/airlines.csv", true)) {
        if (isAirline(row[0])) {
            airlines.insert(row[0]);
        }
    }
    addCodes(document, "ICAO_airlines", "ICAO", "codes", airlines);
    addRegistrations(document, folder, models);
    addFixes(document, folder, models);
    addPublishers(document, folder);
    std::set<std::string> airports;
    for (const Row& row : readRows(folder + "/simaddons.csv", false)) {
        airports.insert(row.front());
    }
    addCodes(document, "simaddonsP3D", "simaddonP3D", "arpts", airports);
}

} // namespace kst::data
