// A reference document from a server that sends what it likes: read in pieces it gives the same registrations
// as from the tree of the whole document.

#include "catalogue/reference.h"
#include "catalogue/referencereader.h"
#include "fuzz/support/fuzzing.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace {

constexpr const char* required =
    "<aircrafts><aircraft types=\"AB\"/></aircrafts><high_performance><hpf types=\"AB\"/>"
    "</high_performance><heavy><hvy types=\"AB\"/></heavy><large><lar types=\"AB\"/></large>"
    "<buzjet><bzj types=\"AB\"/></buzjet><rotorcraft><rot types=\"AB\"/></rotorcraft>"
    "<cargo_types><cargo_type types=\"AB\"/></cargo_types><ICAO_airlines><ICAO "
    "codes=\"ABC\"/></ICAO_airlines><cargo_operators><ICAO codes=\"ABC\"/></cargo_operators>"
    "<simaddonsP3D><simaddonP3D arpts=\"LSZH\"/></simaddonsP3D>";

/// The number of registrations, or nothing when the document is refused.
template <typename Read>
std::optional<std::size_t> registrations(Read read) {
    kst::ReferenceTables& tables = kst::referenceTables();
    tables = {};
    try {
        read(tables);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return tables.regcodeTable.size();
}

} // namespace

void fuzz(std::string_view input) {
    const std::string text = required + std::string(input);
    const auto inPieces = registrations([&text](kst::ReferenceTables& tables) {
        std::string usedUp = text;
        kst::readReferenceText(usedUp, "fuzz", tables);
    });
    (void)kst::gf_regcodeRecord(text.substr(0, 12));
    (void)kst::gf_publisherOfFile(text.substr(0, 100));
    const auto asWhole = registrations([&text](kst::ReferenceTables& tables) {
        // In its own place as well: the parser judges a text with a zero in it otherwise elsewhere.
        std::string usedUp = text;
        pugi::xml_document document;
        if (!document.load_buffer_inplace(usedUp.data(), usedUp.size())) {
            throw std::runtime_error("no XML");
        }
        kst::readReferenceDocument(document, "fuzz", tables);
    });
    require(!asWhole || inPieces == asWhole);
}
