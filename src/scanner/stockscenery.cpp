#include "scanner/stockscenery.h"

#include "catalogue/cfgpaths.h"
#include "core/display.h"
#include "core/parameters.h"
#include "platform/paths.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

namespace kst {

namespace {

/// The simulator's own areas: land classes, cities and the numbered squares of the world.
constexpr std::string_view defaultScenery[] = {
    "\\Cities", "\\CITIES", "\\cities", "\\World", "\\BASE", "\\0006", "\\0007", "\\0103",   "\\0106",
    "\\0107",   "\\0206",   "\\0207",   "\\0307",  "\\0407", "\\0505", "\\0506", "\\0507",   "\\0606",
    "\\0607",   "\\0706",   "\\0707",   "\\0805",  "\\0806", "\\0807", "\\0900", "\\0906",   "\\0907",
    "\\1000",   "\\1006",   "\\1007",   "\\1100",  "\\1102", "\\1107", "\\AFRI", "\\ASIA",   "\\AUST",
    "\\EURE",   "\\EURW",   "\\NAMC",   "\\NAME",  "\\NAMW", "\\OCEN", "\\SAME", "\\Global", "\\Bathymetry",
};

/// Written once by the worker before any scan; empty without an install path.
std::string stockAirportsPath;

} // namespace

void lf_setStockAirportsPath() {
    const std::string install = SIM_INSTALL_PATH.get();
    const auto path = platform::caseInsensitivePath(pathFromCfgText(install) / "Scenery");
    const std::string text = platform::utf8FromPath(path);
    stockAirportsPath = install.empty() ? std::string() : text;
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        showMessage(fmt::format("Stock airports path does not exist: {}", text), true);
    }
}

bool lf_isStockPath(const std::filesystem::path& path) {
    return !stockAirportsPath.empty() &&
           platform::utf8FromPath(path).find(stockAirportsPath) != std::string::npos;
}

bool lf_isDefaultScenery(std::string_view line) {
    std::string text(line);
    std::replace(text.begin(), text.end(), '/', '\\');
    return std::any_of(std::begin(defaultScenery), std::end(defaultScenery),
                       [&](std::string_view part) { return text.find(part) != std::string::npos; });
}

} // namespace kst
