#pragma once

// One stand and one observation as elements of an airport parking file.

#include "model/airportfile.h"

#include <bitset>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace kst {

inline const char* boolText(bool value) {
    return value ? "true" : "false";
}

/// The half hours of an `hh` attribute. At the first piece that is no half hour the rest is left out, which
/// is logged.
std::bitset<48> lf_hours2bitset(std::string_view text);
/// The half hours in ascending order with commas between them.
std::string lf_bitset2hours(const std::bitset<48>& hours);

/// A boolean attribute, by its first character; false when it is missing.
bool boolAttribute(const pugi::xml_attribute& attribute);
/// A number attribute; 0 when it is missing, unreadable, or larger than anything in a file can be.
double numberAttribute(const pugi::xml_attribute& attribute);
/// The same, cut to a whole number.
int wholeAttribute(const pugi::xml_attribute& attribute);
/// A text attribute without control characters: it may come from anyone, and goes to the log and the window.
std::string textAttribute(const pugi::xml_attribute& attribute);
/// The attribute `value` of `/parameters/parameter[@name='name']`; an empty one when the file has none.
pugi::xml_attribute airportParameter(const pugi::xml_document& document, std::string_view name);

/// Adds such a parameter to the element `parameters`.
void addAirportParameter(pugi::xml_node parameters, std::string_view name, const std::string& value);

/// An `opt` element. Operator and type that it leaves out come from the registration. `seq` is left 0.
ParkOption readParkOption(const pugi::xml_node& opt, bool fromArchive);
/// A `parkpos` element with all its options, numbered from 1. `sid` and `neighbours` are left empty.
ParkPos readParkPos(const pugi::xml_node& parkpos, bool fromArchive);
/// No airport has as many stands by far. More of them would cost the worker seconds.
inline constexpr std::size_t mostStands = 4000;
/// Every `parkpos` among the children of the node in file order, behind what is in `stands`.
void readStands(const pugi::xml_node& parent, bool fromArchive, std::vector<ParkPos>& stands);
/// Moves the stands behind those in `stands`. Throws UserErrorException at an id that is among them already;
/// those before it then stay.
void appendStands(std::vector<ParkPos>& read, std::vector<ParkPos>& stands);
/// Reads and appends every stand of the document. Throws std::runtime_error at more than `mostStands`.
void readParkPositions(const pugi::xml_document& document, std::vector<ParkPos>& stands, bool fromArchive);

/// Adds a `parkpos` with all attributes of place and kind, without `manual` and options.
pugi::xml_node addParkPos(pugi::xml_node parkpositions, const ParkPos& stand);
/// A stand's radius as the file holds it, metres.
std::string radiusText(const ParkPos& stand);
/// Adds an `opt` for each option of the stand that is not dead.
void addParkOptions(pugi::xml_node parkpos, const ParkPos& stand);

} // namespace kst
