// An aircraft.cfg: the first byte chooses the kind of file, the rest is its text. Whatever the text, a livery
// that comes out has what the store and the matcher rely on.

#include "catalogue/configfile.h"
#include "catalogue/reference.h"
#include "catalogue/referencetables.h"
#include "core/parameters.h"

#include <cstdlib>
#include <set>
#include <string>

namespace {

void prepareOnce() {
    static const bool prepared = [] {
        kst::ReferenceTables& tables = kst::referenceTables();
        tables.validModels = {"A320", "C172"};
        tables.largeModels = {"A320"};
        tables.validAirlines = {"KLM", "ZZZ"};
        tables.modelFixes = {{"A-320", "A320"}};
        kst::SUPPRESS_STUB.set(true);
        return true;
    }();
    static_cast<void>(prepared);
}

bool sound(const kst::LiveryData& livery) {
    return !livery.airline.empty() && kst::gf_isValidModel(livery.model) && !livery.title.empty() &&
           livery.title.find('\n') == std::string::npos && !livery.title.ends_with(' ') &&
           !livery.title.ends_with("_STUB") && livery.regcode.size() <= kst::longestRegcode;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kst::platform::EntryKind;
    if (size == 0) {
        return 0;
    }
    prepareOnce();
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::string path = data[0] % 2 == 0 ? "x/aircraft.cfg" : "x/IVAO_MTL/IVAO_A320/aircraft.cfg";
    const kst::AircraftFolder folder(
        "x", std::vector<kst::platform::FolderEntry>{{"model", EntryKind::Folder, false},
                                                     {"texture", EntryKind::Folder, false},
                                                     {"texture.t", EntryKind::Folder, false},
                                                     {".air", EntryKind::File, false},
                                                     {"a.air", EntryKind::File, false}});
    const kst::FileFindings found = kst::readConfigText({path, kst::cfgKindOf(path), 1, ""}, folder, text);
    for (const kst::FoundLivery& livery : found.liveries) {
        if (!sound(livery.livery)) {
            std::abort();
        }
    }
    return 0;
}
