#pragma once

#include <pugixml.hpp>

namespace kst::data {

enum class Direction { Scramble, Unscramble };

/// Turns every code of a reference document or a registration list into its scrambled or plain form, in
/// place. A code that cannot be turned throws std::runtime_error and names the element.
void convertCodes(pugi::xml_document& document, Direction direction);

} // namespace kst::data
