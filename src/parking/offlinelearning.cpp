// Whether the stands of an add-on airport can be learned away from the user's machine.

#include "core/log.h"
#include "parking/airportfetch.h"
#include "parking/airportxml.h"
#include "parking/learning.h"
#include "parking/parkposxml.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

/// The first week of recorded traffic that tells enough.
constexpr int firstGoodWeek = 18;

/// An airport code that may stand in an address.
bool isPlainCode(std::string_view icao) {
    return !icao.empty() && std::ranges::all_of(icao, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
    });
}

/// Fetches and parses the airport's stock file. False when it cannot be had.
bool fetchStock(std::string_view icao, pugi::xml_document& document) {
    const std::filesystem::path file = "offline.xml";
    const bool parsed = fetchAirportFile(fmt::format("archive/stock/{}.xml", icao), file) &&
                        loadAirportXml(file, document).empty();
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return parsed;
}

bool isQuality(const pugi::xml_document& document, std::string_view name) {
    const pugi::xml_attribute value = airportParameter(document, name);
    return value && wholeAttribute(value) >= 0;
}

} // namespace

bool gf_stockIsSuitable(std::string_view icao) {
    pugi::xml_document document;
    if (!isPlainCode(icao) || !fetchStock(icao, document)) {
        logLine(fmt::format("{} Not suitable for offline learning", icao));
        return false;
    }
    const pugi::xml_attribute week = airportParameter(document, "WEEK");
    return (isQuality(document, "Qf_real") || isQuality(document, "Qf_soft")) &&
           (!week || wholeAttribute(week) >= firstGoodWeek);
}

} // namespace kst
