#pragma once

#include <string>

#include <pugixml.hpp>

namespace kst::data {

/// Fills a plain reference document from types.csv, similar.csv, airlines.csv, registrations.csv,
/// fixes.csv, publishers.csv and simaddons.csv of the folder. Throws std::runtime_error where a file is
/// missing.
void addReferenceFacts(pugi::xml_document& document, const std::string& folder);

} // namespace kst::data
