#include "parking/parkposxml.h"

#include "catalogue/reference.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "core/numbertext.h"
#include "core/xmlnames.h"
#include "model/units.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>

namespace kst {

namespace {

/// No number of a stand comes near it; what is larger is damage.
constexpr double largestNumber = 1e6;

std::string_view withoutBlanks(std::string_view text) {
    constexpr char lastBlank = ' '; // what is below is a tab, a line end, or no text at all
    while (!text.empty() && text.front() <= lastBlank && text.front() > 0) {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() <= lastBlank && text.back() > 0) {
        text.remove_suffix(1);
    }
    return text;
}

/// The text without control characters: it goes to the log and the window.
void takePlain(std::string_view text, std::string& plain) {
    plain = text;
    for (char& c : plain) {
        c = static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
}

std::string plainText(std::string_view text) {
    std::string plain;
    takePlain(text, plain);
    return plain;
}

std::size_t halfHour(std::string_view piece) {
    const std::string_view digits = withoutBlanks(piece);
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        throw std::runtime_error(fmt::format("\"{}\" is no number", plainText(piece)));
    }
    if (number >= std::bitset<48>{}.size()) {
        throw std::runtime_error(fmt::format("{} is no half hour", number));
    }
    return number;
}

void takeCallsigns(std::string_view text, ParkOption& option) {
    const std::size_t colon = text.find(':');
    takePlain(text.substr(0, colon), option.cs);
    if (colon != std::string_view::npos && colon == text.rfind(':')) {
        takePlain(text.substr(colon + 1), option.cs2);
    }
}

std::size_t count(const pugi::xml_node& parent, const char* name) {
    const auto children = parent.children(name);
    return static_cast<std::size_t>(std::distance(children.begin(), children.end()));
}

/// Fills a fresh option. One walk over the attributes, told apart by their first letter: a file has tens of
/// thousands of these elements.
void takeParkOption(const pugi::xml_node& opt, bool fromArchive, ParkOption& option) {
    option.fromArchive = fromArchive;
    bool named = false;
    for (pugi::xml_attribute attribute = opt.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        const char* const name = attribute.name();
        const auto is = [name](const char* wanted) { return sameName(name, wanted); };
        switch (*name) {
        case 'r':
            if (is("reg")) {
                takePlain(attribute.value(), option.reg);
            }
            break;
        case 'a':
        case 't':
            if (is("airl") || is("type")) {
                takePlain(attribute.value(), *name == 'a' ? option.airl : option.type);
                named = true;
            }
            break;
        case 's':
            option.real = is("soft") ? !boolAttribute(attribute) : option.real;
            break;
        case 'd':
            option.day = is("day") ? wholeAttribute(attribute) : option.day;
            break;
        case 'h':
            option.hours = is("hh") ? lf_hours2bitset(attribute.value()) : option.hours;
            break;
        case 'c':
            if (is("cs")) {
                takeCallsigns(attribute.value(), option);
            }
            break;
        default:
            break;
        }
    }
    if (!named) {
        if (const auto record = gf_regcodeRecord(option.reg)) {
            option.airl = record->operatorCode.empty() ? record->airline : record->operatorCode;
            option.type = record->model;
        }
    }
}

void addText(pugi::xml_node& node, const char* name, const std::string& value) {
    node.append_attribute(name).set_value(value.c_str());
}

} // namespace

std::bitset<48> lf_hours2bitset(std::string_view text) {
    std::bitset<48> hours;
    try {
        while (!text.empty()) {
            std::size_t end = 0; // of a piece: a call would cost more than these few characters
            while (end < text.size() && text[end] != ',') {
                ++end;
            }
            hours.set(halfHour(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("exception {} in lf_hours2bitset", error.what()));
    }
    return hours;
}

std::string lf_bitset2hours(const std::bitset<48>& hours) {
    std::string text;
    for (std::size_t i = 0; i < hours.size(); ++i) {
        if (hours.test(i)) {
            fmt::format_to(std::back_inserter(text), "{}{}", text.empty() ? "" : ",", i);
        }
    }
    return text;
}

bool boolAttribute(const pugi::xml_attribute& attribute) {
    const char first = *attribute.value();
    return first != '\0' && std::string_view("1tTyY").find(first) != std::string_view::npos;
}

double numberAttribute(const pugi::xml_attribute& attribute) {
    const double number = finiteNumberAtStart(withoutBlanks(attribute.value())).value_or(0.0);
    return std::abs(number) <= largestNumber ? number : 0.0;
}

int wholeAttribute(const pugi::xml_attribute& attribute) {
    return wholeNumberAtStart(withoutBlanks(attribute.value())).value_or(0);
}

std::string textAttribute(const pugi::xml_attribute& attribute) {
    return plainText(attribute.value());
}

pugi::xml_attribute airportParameter(const pugi::xml_document& document, std::string_view name) {
    for (const pugi::xml_node parameters : document.children("parameters")) {
        for (const pugi::xml_node parameter : parameters.children("parameter")) {
            if (name == parameter.attribute("name").value()) {
                return parameter.attribute("value");
            }
        }
    }
    return {};
}

void addAirportParameter(pugi::xml_node parameters, std::string_view name, const std::string& value) {
    pugi::xml_node parameter = parameters.append_child("parameter");
    addText(parameter, "name", std::string(name));
    addText(parameter, "value", value);
}

ParkOption readParkOption(const pugi::xml_node& opt, bool fromArchive) {
    ParkOption option;
    takeParkOption(opt, fromArchive, option);
    return option;
}

ParkPos readParkPos(const pugi::xml_node& parkpos, bool fromArchive) {
    ParkPos stand;
    stand.id = textAttribute(parkpos.attribute("id"));
    stand.latitude = numberAttribute(parkpos.attribute("latitude"));
    stand.longitude = numberAttribute(parkpos.attribute("longitude"));
    stand.radius = numberAttribute(parkpos.attribute("radius")) / metresPerNm;
    // Room for every child, whatever its name: they are options but for a comment.
    std::size_t children = 0;
    for (pugi::xml_node child = parkpos.first_child(); child; child = child.next_sibling()) {
        ++children;
    }
    stand.options.reserve(children);
    for (const pugi::xml_node opt : parkpos.children("opt")) {
        ParkOption& option = stand.options.emplace_back();
        takeParkOption(opt, fromArchive, option);
        option.seq = static_cast<std::uint32_t>(stand.options.size());
    }
    stand.heli = boolAttribute(parkpos.attribute("heli"));
    stand.ramp = boolAttribute(parkpos.attribute("ramp"));
    stand.cargo = boolAttribute(parkpos.attribute("cargo"));
    stand.heading = numberAttribute(parkpos.attribute("heading")) * radPerDeg;
    return stand;
}

void readStands(const pugi::xml_node& parent, bool fromArchive, std::vector<ParkPos>& stands) {
    for (const pugi::xml_node parkpos : parent.children("parkpos")) {
        stands.push_back(readParkPos(parkpos, fromArchive));
    }
}

void appendStands(std::vector<ParkPos>& read, std::vector<ParkPos>& stands) {
    stands.reserve(stands.size() + read.size());
    std::unordered_set<std::string_view> seen;
    for (ParkPos& stand : read) {
        // The name is looked at where it stays: the memory of `stands` does not move any more.
        stands.push_back(std::move(stand));
        if (!seen.insert(stands.back().id).second) {
            const std::string id = stands.back().id;
            stands.pop_back();
            throw UserErrorException(99, fmt::format("Parking position {} appears more than once?", id));
        }
    }
}

void readParkPositions(const pugi::xml_document& document, std::vector<ParkPos>& stands, bool fromArchive) {
    const pugi::xml_node parkpositions = document.child("parkpositions");
    const std::size_t stated = count(parkpositions, "parkpos");
    if (stated > mostStands) {
        throw std::runtime_error(
            fmt::format("{} stands are more than the {} that a file may have", stated, mostStands));
    }
    std::vector<ParkPos> read;
    read.reserve(stated);
    readStands(parkpositions, fromArchive, read);
    appendStands(read, stands);
}

pugi::xml_node addParkPos(pugi::xml_node parkpositions, const ParkPos& stand) {
    pugi::xml_node node = parkpositions.append_child("parkpos");
    addText(node, "id", stand.id);
    addText(node, "latitude", fmt::format("{:.6f}", stand.latitude));
    addText(node, "longitude", fmt::format("{:.6f}", stand.longitude));
    addText(node, "heading", fmt::format("{:.1F}", stand.heading * degPerRad));
    addText(node, "radius", radiusText(stand));
    if (stand.heli) {
        addText(node, "heli", "true");
    } else {
        addText(node, "cargo", boolText(stand.cargo));
    }
    addText(node, "ramp", boolText(stand.ramp));
    return node;
}

std::string radiusText(const ParkPos& stand) {
    return fmt::format("{:.1F}", stand.radius * metresPerNm);
}

void addParkOptions(pugi::xml_node parkpos, const ParkPos& stand) {
    for (const ParkOption& option : stand.options) {
        if (option.seq == 0) {
            continue;
        }
        pugi::xml_node node = parkpos.append_child("opt");
        addText(node, "reg", option.reg);
        if (!gf_regcodeRecord(option.reg)) {
            addText(node, "airl", option.airl);
            addText(node, "type", option.type);
        }
        if (!option.real) {
            addText(node, "soft", "true");
        }
        addText(node, "day", fmt::format("{}", option.day));
        addText(node, "hh", lf_bitset2hours(option.hours));
        if (!option.cs.empty()) {
            addText(node, "cs", option.cs2.empty() ? option.cs : option.cs + ":" + option.cs2);
        }
    }
}

} // namespace kst
