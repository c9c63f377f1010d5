#pragma once

#include "catalogue/referencetables.h"

#include <string_view>

#include <pugixml.hpp>

namespace kst {

/// Fills the tables from a reference document, whose codes are scrambled. `source` names the document in
/// messages. Throws UserErrorException 61 where a required section is missing or empty, SysErrorException 288
/// and 299 for broken wing spans and publishers, and the coders' std::runtime_error. Bad entries of optional
/// sections are logged and skipped.
void readReferenceDocument(const pugi::xml_document& document, std::string_view source,
                           ReferenceTables& tables);

/// Whether a boolean attribute's text means true: it begins with 1, t, T, y or Y.
bool textMeansTrue(std::string_view text);

/// Cuts a comma list and trims each item of blanks, tabs and line ends.
std::vector<std::string_view> splitCommaList(std::string_view text);

} // namespace kst
