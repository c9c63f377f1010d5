#pragma once

// The form of parameters.xml: the element `parameters` with one element `parameter` per parameter, attributes
// `name` and `value`. Between the file's bytes and the parameters' values; the file itself is handled by
// core/parameters.h.

#include <string_view>

#include <pugixml.hpp>

namespace kst {

/// Parses the content of a parameters.xml. False when it is no well-formed document.
bool parseParameters(std::string_view content, pugi::xml_document& document);

/// Takes every parameter's value from the document, logging each. What is missing takes its default and is
/// added to the document; folder entries with an empty value are removed from it, and missing ones stay
/// missing. Returns whether the document changed.
bool takeParameters(pugi::xml_document& document);

/// A new document with the present values of all parameters, without the folder entries that are empty.
void fillParameters(pugi::xml_document& document);

} // namespace kst
