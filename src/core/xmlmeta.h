#pragma once

// The block that opens each XML file that the program writes for itself and others (airport files, the
// scanned liveries): the element `meta` with one `info` each for author, version, date and copyright.

#include <pugixml.hpp>

namespace kst {

/// Puts a new `meta` element in front of the document's elements, in place of one that is there.
void addXmlMeta(pugi::xml_document& document);

/// Whether the document's `meta` element holds author, date and version. Logs "meta data incorrect?" if not.
bool checkXmlMeta(const pugi::xml_document& document);

} // namespace kst
