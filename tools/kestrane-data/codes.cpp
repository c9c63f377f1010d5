#include "codes.h"

#include "catalogue/referencereader.h"
#include "catalogue/scramble.h"

#include <stdexcept>
#include <string>

#include <fmt/format.h>

namespace kst::data {

namespace {

using Coder = std::string (*)(std::string_view);

struct CodedAttribute {
    const char* section;
    const char* element;
    const char* attribute;
    Coder encode;
    Coder decode;
};

/// Every attribute that holds codes. All others stand in plain text.
constexpr CodedAttribute codedAttributes[] = {
    {"aircrafts", "aircraft", "types", gf_encodeModel, gf_decodeModel},
    {"high_performance", "hpf", "types", gf_encodeModel, gf_decodeModel},
    {"heavy", "hvy", "types", gf_encodeModel, gf_decodeModel},
    {"large", "lar", "types", gf_encodeModel, gf_decodeModel},
    {"buzjet", "bzj", "types", gf_encodeModel, gf_decodeModel},
    {"rotorcraft", "rot", "types", gf_encodeModel, gf_decodeModel},
    {"cargo_types", "cargo_type", "types", gf_encodeModel, gf_decodeModel},
    {"similar_types", "similar", "types", gf_encodeModel, gf_decodeModel},
    {"ICAO_airlines", "ICAO", "codes", gf_encodeAirline, gf_decodeAirline},
    {"cargo_operators", "ICAO", "codes", gf_encodeAirline, gf_decodeAirline},
    {"wingspans", "wingspan", "type", gf_encodeModel, gf_decodeModel},
    {"dbase", "db", "reg", gf_encodeRegcode, gf_decodeRegcode},
    {"dbase", "db", "airl", gf_encodeAirline, gf_decodeAirline},
    {"dbase", "db", "opr", gf_encodeAirline, gf_decodeAirline},
    {"dbase", "db", "type", gf_encodeModel, gf_decodeModel},
    {"AIG-regcodes", "livery", "reg", gf_encodeRegcode, gf_decodeRegcode},
};

std::string convertList(std::string_view list, Coder coder) {
    std::string result;
    for (const std::string_view item : splitCommaList(list)) {
        result += (result.empty() ? "" : ",") + coder(item);
    }
    return result;
}

} // namespace

void convertCodes(pugi::xml_document& document, Direction direction) {
    for (const CodedAttribute& coded : codedAttributes) {
        const Coder coder = direction == Direction::Scramble ? coded.encode : coded.decode;
        for (pugi::xml_node node : document.child(coded.section).children(coded.element)) {
            pugi::xml_attribute attribute = node.attribute(coded.attribute);
            if (!attribute) {
                continue;
            }
            try {
                attribute.set_value(convertList(attribute.value(), coder).c_str());
            } catch (const std::exception& error) {
                throw std::runtime_error(fmt::format("{}/{} {}=\"{}\": {}", coded.section, coded.element,
                                                     coded.attribute, attribute.value(), error.what()));
            }
        }
    }
}

} // namespace kst::data
