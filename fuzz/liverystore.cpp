// A store of liveries that somebody has edited: whatever it holds, every title that is matched is one of it.

#include "catalogue/liverytables.h"
#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"
#include "fuzz/support/fuzzing.h"

#include <stdexcept>
#include <string>

void fuzz(std::string_view input) {
    using namespace kst;
    setReferenceForTest({{"A320", Category::Large, 35.8}, {"C172", Category::Light, 11.0}});
    referenceTables().similarLists = {{"A320", "B738"}, {"C152", "C172"}};
    resetMatching();
    try {
        std::string text(input);
        readLiveriesText(text, "fuzz");
    } catch (const std::runtime_error&) {
        return;
    }
    gf_buildAirlineIndex(scannedLiveries);
    gf_buildAirlineModelTitles();
    gf_buildModelTitles();
    gf_buildSimilarTables();
    listFallbackModels(Category::Light);
    for (const LiveryData& livery : scannedLiveries) {
        AcBase ac;
        ac.airline = livery.airline;
        ac.acType = livery.model;
        ac.cargo = livery.cargo;
        require(gf_matchLivery(ac) == Rung::None || gf_findTitle(ac.liveryTitle) == ac.liveryTitle);
    }
}
