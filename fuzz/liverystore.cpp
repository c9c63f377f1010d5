// A store of liveries that somebody has edited: whatever it holds, every title that is matched is one of it.

#include "catalogue/liverytables.h"
#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::setReferenceForTest({{"A320", kst::Category::Large, 35.8}, {"C172", kst::Category::Light, 11.0}});
    kst::referenceTables().similarLists = {{"A320", "B738"}, {"C152", "C172"}};
    kst::resetMatching();
    try {
        kst::readLiveriesText({reinterpret_cast<const char*>(data), size}, "fuzz");
    } catch (const std::runtime_error&) {
        return 0;
    }
    kst::gf_buildAirlineIndex(kst::scannedLiveries);
    kst::gf_buildAirlineModelTitles();
    kst::gf_buildModelTitles();
    kst::gf_buildSimilarTables();
    kst::listFallbackModels(kst::Category::Light);
    for (const kst::LiveryData& livery : kst::scannedLiveries) {
        kst::AcBase ac;
        ac.airline = livery.airline;
        ac.acType = livery.model;
        ac.cargo = livery.cargo;
        if (kst::gf_matchLivery(ac) != kst::Rung::None &&
            kst::gf_findTitle(ac.liveryTitle) != ac.liveryTitle) {
            std::abort();
        }
    }
    return 0;
}
