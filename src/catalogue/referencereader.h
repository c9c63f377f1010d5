#pragma once

#include "catalogue/referencetables.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace kst {

/// Fills the tables from a reference document, whose codes are scrambled. `source` names the document in
/// messages. Throws UserErrorException 61 where a required section is missing or empty, SysErrorException 288
/// and 299 for broken wing spans and publishers, and the coders' std::runtime_error. Bad entries of optional
/// sections are logged and skipped.
void readReferenceDocument(const pugi::xml_document& document, std::string_view source,
                           ReferenceTables& tables);

/// The same from the text of a document, which is used up, in little more space than text and tables need.
/// Throws UserErrorException 60 as well, when it is no XML.
void readReferenceText(std::string& text, std::string_view source, ReferenceTables& tables);
/// The same from a file.
void readReferenceFile(const std::filesystem::path& file, ReferenceTables& tables);

/// Whether a boolean attribute's text means true: it begins with 1, t, T, y or Y.
bool textMeansTrue(std::string_view text);

/// Cuts a list at the divider and trims each item of blanks, tabs and line ends. An empty text gives one
/// empty item.
std::vector<std::string_view> splitTrimmed(std::string_view text, char divider);
inline std::vector<std::string_view> splitCommaList(std::string_view text) {
    return splitTrimmed(text, ',');
}

} // namespace kst
