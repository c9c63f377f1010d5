#pragma once

#include <string>

#include <pugixml.hpp>

namespace kst::data {

/// Fills the world directory of airports from airports.csv of the folder. An unknown elevation is 0. Throws
/// std::runtime_error where the file is missing or a row has no position.
void addAirports(pugi::xml_document& document, const std::string& folder);

} // namespace kst::data
