#pragma once

// The settings that a learned file keeps for its airport. They hold while the airport is loaded and are not
// written to parameters.xml. Worker only.

#include <pugixml.hpp>

namespace kst {

/// Adds the present settings to the element `parameters` of a learned file.
void addAirportSettings(pugi::xml_node parameters);

/// Takes over each setting that the learned file holds, sets its control to match and logs it.
void takeAirportSettings(const pugi::xml_document& learned);

} // namespace kst
