// An aircraft.cfg: the first byte chooses the kind of file, the rest is its text. Whatever the text, a livery
// that comes out has what the store and the matcher rely on.

#include "catalogue/configfile.h"
#include "catalogue/reference.h"
#include "catalogue/referencetables.h"
#include "core/parameters.h"
#include "fuzz/support/fuzzing.h"

#include <string>

namespace {

bool prepare() {
    kst::ReferenceTables& tables = kst::referenceTables();
    tables.validModels = {"A320", "C172"};
    tables.largeModels = {"A320"};
    tables.validAirlines = {"KLM", "ZZZ"};
    tables.modelFixes = {{"A-320", "A320"}};
    kst::SUPPRESS_STUB.set(true);
    return true;
}

} // namespace

void fuzz(std::string_view input) {
    using kst::platform::EntryKind;
    [[maybe_unused]] static const bool prepared = prepare();
    const std::string path =
        takeChoice(input) % 2 == 0 ? "x/aircraft.cfg" : "x/IVAO_MTL/IVAO_A320/aircraft.cfg";
    const kst::AircraftFolder folder(
        "x", std::vector<kst::platform::FolderEntry>{{"model", EntryKind::Folder, false},
                                                     {"texture", EntryKind::Folder, false},
                                                     {"texture.t", EntryKind::Folder, false},
                                                     {".air", EntryKind::File, false},
                                                     {"a.air", EntryKind::File, false}});
    for (const auto& found :
         kst::readConfigText({path, kst::cfgKindOf(path), 1, ""}, folder, input).liveries) {
        const kst::LiveryData& livery = found.livery;
        require(!livery.airline.empty() && kst::gf_isValidModel(livery.model));
        require(!livery.title.empty() && livery.title.find('\n') == std::string::npos);
        require(!livery.title.ends_with(' ') && !livery.title.ends_with("_STUB"));
        require(livery.regcode.size() <= kst::longestRegcode);
    }
}
