#pragma once

// Cuts one long section out of an XML text, so that its elements can be parsed a few thousand at a time: the
// tree of a parser takes several times the space of the text.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace kst {

/// The content of an element: from behind its start tag to before its end tag.
struct XmlSection {
    std::size_t begin = 0;
    std::size_t end = 0;
    /// Offsets from `begin` to `end`, in order, between which whole children lie.
    std::vector<std::size_t> cuts;
    std::size_t children = 0;
};

/// Finds the first top-level element of this name, and cuts its content into pieces of about `pieceSize`
/// bytes. Nothing when there is none, or when the text is anything but plain UTF-8 with tags that match in
/// number: such a text is the parser's to judge as a whole.
std::optional<XmlSection> findXmlSection(std::string_view text, std::string_view name,
                                         std::size_t pieceSize = std::size_t{32} * 1024);

/// Parses the text without what is in the section: that element stands empty in the document.
pugi::xml_parse_result parseAroundSection(std::string_view text, const XmlSection& section,
                                          pugi::xml_document& document);
/// The section in parts of about the same size, at most `count`, that can be parsed on threads of their own.
std::vector<XmlSection> partsOf(const XmlSection& section, std::size_t count);
/// Parses what is in the section, in the text's own place, and hands its elements over piece by piece as the
/// children of a node, which lives for the call only. Ends at the first piece that cannot be parsed.
pugi::xml_parse_result parseSection(std::string& text, const XmlSection& section,
                                    const std::function<void(const pugi::xml_node&)>& take);

} // namespace kst
