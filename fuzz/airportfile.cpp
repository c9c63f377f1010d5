// The content of an airport parking file: from the download server, from scenery, or edited by hand.

#include "core/files.h"
#include "fuzz/support/fuzzing.h"
#include "parking/airportxml.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"

#include <stdexcept>

namespace {

std::string written(const std::vector<kst::ParkPos>& stands) {
    pugi::xml_document document;
    const pugi::xml_node parkpositions = document.append_child("parkpositions");
    for (const kst::ParkPos& stand : stands) {
        kst::addParkOptions(kst::addParkPos(parkpositions, stand), stand);
    }
    return kst::xmlText(document);
}

/// Whether the stands could be read.
bool read(std::string_view content, std::vector<kst::ParkPos>& stands) {
    std::string text(content);
    kst::AirportXml file;
    if (!file.parse(text).empty()) {
        return false;
    }
    try {
        file.takeStands(stands);
    } catch (const std::runtime_error&) {
        return false;
    }
    return true;
}

} // namespace

void fuzz(std::string_view input) {
    std::vector<kst::ParkPos> stands;
    if (!read(input, stands)) {
        return;
    }
    kst::numberStands(stands);
    for (const kst::ParkPos& stand : stands) {
        for (const std::uint32_t neighbour : stand.neighbours) {
            require(neighbour >= 1 && neighbour <= stands.size() && neighbour != stand.sid);
        }
    }
    // What a save writes, a load takes, and a second save writes again.
    const std::string saved = written(stands);
    std::vector<kst::ParkPos> again;
    require(read(saved, again) && written(again) == saved);
}
