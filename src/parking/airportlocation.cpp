// Where an airport's parking file is: the user's folders first, then the download server.

#include "core/files.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "install/download.h"
#include "parking/airportfetch.h"
#include "parking/airportfile.h"
#include "parking/airportxml.h"
#include "parking/parkposxml.h"
#include "platform/paths.h"

#include <fmt/format.h>
#include <pugixml.hpp>

namespace kst {

namespace {

constexpr double nothingFoundNm = 100.0;

/// The user's own folders, in the order in which they count.
const std::filesystem::path* const localFolders[] = {&folders::myThirdparty, &folders::myOrbx};

std::filesystem::path fileOf(const std::filesystem::path& folder, std::string_view icao,
                             std::string_view extension) {
    return folder / platform::pathFromUtf8(fmt::format("{}{}", icao, extension));
}

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

/// The first line of a link file, up to the end of the file name in it; empty when there is none.
std::string linkedLocation(const std::filesystem::path& link) {
    std::vector<std::string> lines;
    if (!gf_readExtTextFileToStringVector(link, lines) || lines.empty()) {
        return {};
    }
    std::string location = lines.front();
    // Whatever stands behind ".xml" goes.
    location.erase(location.find_last_of('l') + 1);
    return location;
}

std::string stockLocation(std::string_view icao) {
    return fmt::format("archive/stock/{}.xml", icao);
}

bool stockFileExists(std::string_view icao) {
    const std::filesystem::path temporary = platform::pathFromUtf8(fmt::format("{}.xml", icao));
    const bool fetched = fetchAirportFile(stockLocation(icao), temporary);
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    return fetched;
}

} // namespace

bool isLocalLocation(std::string_view location) {
    return location.starts_with("airports");
}

std::string airportFileUrl(std::string_view location) {
    return lf_airportServerBase() + std::string(location);
}

bool fetchAirportFile(std::string_view location, const std::filesystem::path& path) {
    const DownloadHandle handle;
    return gf_fetchFile(handle, airportFileUrl(location), path, true);
}

std::string gf_locateApf(std::string_view icao) {
    for (const std::filesystem::path* const folder : localFolders) {
        if (const auto link = fileOf(*folder, icao, ".txt"); isThere(link)) {
            if (std::string location = linkedLocation(link); !location.empty()) {
                return location;
            }
        }
        if (const auto file = fileOf(*folder, icao, ".xml"); isThere(file)) {
            return platform::utf8FromPath(file);
        }
    }
    return stockFileExists(icao) ? stockLocation(icao) : std::string();
}

bool gf_apfExists(std::string_view icao) {
    for (const std::filesystem::path* const folder : localFolders) {
        if (isThere(fileOf(*folder, icao, ".txt")) || isThere(fileOf(*folder, icao, ".xml"))) {
            return true;
        }
    }
    return stockFileExists(icao);
}

double gf_readDestApfForClosestStand(std::string_view icao, LatLon position, std::string& standId) {
    double nearestNm = nothingFoundNm;
    try {
        const std::filesystem::path fetched = "airport.xml";
        const std::string location = gf_locateApf(icao);
        const bool local = isLocalLocation(location);
        if (location.empty() || (!local && !fetchAirportFile(location, fetched))) {
            return nothingFoundNm;
        }
        pugi::xml_document document;
        const std::string failure =
            loadAirportXml(local ? platform::pathFromUtf8(location) : fetched, document);
        const pugi::xml_node parkpositions = document.child("parkpositions");
        if (!failure.empty() || !parkpositions) {
            std::filesystem::remove(fetched);
            return nothingFoundNm;
        }
        for (const pugi::xml_node parkpos : parkpositions.children("parkpos")) {
            const LatLon place{numberAttribute(parkpos.attribute("latitude")),
                               numberAttribute(parkpos.attribute("longitude"))};
            if (const double distance = gf_distanceNm(position, place); distance < nearestNm) {
                nearestNm = distance;
                standId = textAttribute(parkpos.attribute("id"));
            }
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "gf_readDestApfForClosestStand", error.what()));
        return nothingFoundNm;
    }
    return nearestNm;
}

} // namespace kst
