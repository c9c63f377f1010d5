#pragma once

// Cuts one long section out of an XML text, so that its elements can be parsed a few thousand at a time: the
// tree of a parser takes several times the space of the text.

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

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
std::optional<XmlSection> findXmlSection(std::string_view text, std::string_view name, std::size_t pieceSize);

} // namespace kst
