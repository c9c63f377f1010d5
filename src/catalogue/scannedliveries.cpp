#include "catalogue/scannedliveries.h"

#include "catalogue/store.h"
#include "core/files.h"
#include "core/log.h"
#include "core/xmlmeta.h"
#include "platform/paths.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

std::vector<LiveryData> scannedLiveries;
TitleSet dontUseTitles;

void lf_sortLiveries(std::vector<LiveryData>& liveries) {
    // A store that the program wrote is in order already: the usual case, at each start.
    if (!std::is_sorted(liveries.begin(), liveries.end())) {
        std::stable_sort(liveries.begin(), liveries.end());
    }
}

bool lf_saveLiveries() {
    if (scannedLiveries.empty()) {
        return false;
    }
    pugi::xml_document document;
    addXmlMeta(document);
    pugi::xml_node root = document.append_child("liveries");
    for (const LiveryData& livery : scannedLiveries) {
        pugi::xml_node node = root.append_child("liv");
        node.append_attribute("airl").set_value(livery.airline.c_str());
        node.append_attribute("type").set_value(livery.model.c_str());
        if (livery.cargo) {
            node.append_attribute("cargo").set_value("true");
        }
        node.append_attribute("title").set_value(livery.title.c_str());
        if (!livery.regcode.empty()) {
            node.append_attribute("atcid").set_value(livery.regcode.c_str());
        }
    }
    const auto path = liveriesStorePath();
    if (!saveXml(document, path)) {
        return false;
    }
    logLine(fmt::format("{} liveries in {}", scannedLiveries.size(), platform::utf8FromPath(path)));
    return true;
}

} // namespace kst
