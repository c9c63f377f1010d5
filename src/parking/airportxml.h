#pragma once

// Parsing an airport parking file.

#include "model/parkpos.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <pugixml.hpp>

namespace kst {

/// Parses the file. Returns what is wrong with it, empty if nothing.
std::string loadAirportXml(const std::filesystem::path& path, pugi::xml_document& document);

/// A parking file that is read for its stands. They are taken while it is parsed, a few at a time: the tree
/// of a large airport fits no cache, and going through it would take longer than making it.
class AirportXml {
public:
    /// Parses the file. Returns what is wrong with it, empty if nothing.
    std::string load(const std::filesystem::path& path);
    /// The same for the text of a file, which is used up.
    std::string parse(std::string& text);
    /// What the file holds; its stands may be left out.
    const pugi::xml_document& document() const { return document_; }
    /// Hands the stands over, once, as `readParkPositions` does.
    void takeStands(std::vector<ParkPos>& stands);

private:
    pugi::xml_document document_;
    std::optional<std::vector<ParkPos>> stands_; ///< nothing when they are in the document
};

} // namespace kst
