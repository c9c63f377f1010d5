#include "facts.h"

#include <string>

#include <pugixml.hpp>

namespace kst::made {

namespace {

void addCodes(pugi::xml_document& document, const char* section, const char* element, const char* attribute,
              const std::string& codes) {
    document.append_child(section).append_child(element).append_attribute(attribute).set_value(codes.c_str());
}

std::string joined(bool airliners, bool others) {
    std::string codes;
    for (const Model& model : models()) {
        if (model.airliner ? airliners : others) {
            codes += codes.empty() ? "" : ",";
            codes += model.code;
        }
    }
    return codes;
}

} // namespace

const std::vector<Model>& models() {
    static const std::vector<Model> all = {{"A320", true},  {"B738", true},  {"B744", true}, {"A388", true},
                                           {"C172", false}, {"P28A", false}, {"GLID", false}};
    return all;
}

const std::vector<const char*>& airlines() {
    static const std::vector<const char*> all = {"KLM", "DLH", "SWR", "EWG", "UPS", "BAW", "AFR", "ZZZ"};
    return all;
}

const std::vector<Registration>& registrations() {
    static const std::vector<Registration> all = {{"PH-BXA", "KLM", "B738", "", false},
                                                  {"D-AIUA", "DLH", "A320", "EWG", false},
                                                  {"N123UP", "UPS", "B744", "", true},
                                                  {"N1X", "PVT", "C172", "", false}};
    return all;
}

const std::vector<Fix>& fixes() {
    static const std::vector<Fix> all = {{"B737-800", "B738"}, {"C-172", "C172"}};
    return all;
}

void addReferenceFacts(pugi::xml_document& document) {
    addCodes(document, "aircrafts", "aircraft", "types", joined(true, true));
    addCodes(document, "large", "lar", "types", "A320,B738");
    addCodes(document, "heavy", "hvy", "types", "B744,A388");
    // Sections that must not be empty, whose models no made file names.
    addCodes(document, "high_performance", "hpf", "types", "F16");
    addCodes(document, "buzjet", "bzj", "types", "C56X");
    addCodes(document, "rotorcraft", "rot", "types", "EC35");
    addCodes(document, "cargo_types", "cargo_type", "types", "B744");
    std::string codes;
    for (const char* airline : airlines()) {
        codes += codes.empty() ? "" : ",";
        codes += airline;
    }
    addCodes(document, "ICAO_airlines", "ICAO", "codes", codes);
    addCodes(document, "cargo_operators", "ICAO", "codes", "UPS");
    addCodes(document, "simaddonsP3D", "simaddonP3D", "arpts", "LSZH");
    pugi::xml_node section = document.append_child("fixes");
    for (const Fix& fix : fixes()) {
        pugi::xml_node node = section.append_child("fx");
        node.append_attribute("wro").set_value(fix.wrong);
        node.append_attribute("cor").set_value(fix.right);
    }
    section = document.append_child("dbase");
    for (const Registration& registration : registrations()) {
        pugi::xml_node node = section.append_child("db");
        node.append_attribute("reg").set_value(registration.regcode);
        node.append_attribute("airl").set_value(registration.airline);
        node.append_attribute("type").set_value(registration.model);
        node.append_attribute("opr").set_value(registration.operatorCode);
        node.append_attribute("cargo").set_value(registration.cargo);
    }
}

} // namespace kst::made
