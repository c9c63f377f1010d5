#pragma once

#include <string>

#include <pugixml.hpp>

namespace kst::data {

/// Fills the stock parking file of an airport: its stands from stands/ICAO.csv of the folder, with
/// observations that are made up from the airlines that stocktraffic.csv names for it and the aircraft of
/// registrations.csv. The same each time. Throws std::runtime_error where a file or the airport is missing.
void addStockAirport(pugi::xml_document& document, const std::string& folder, const std::string& icao);

} // namespace kst::data
