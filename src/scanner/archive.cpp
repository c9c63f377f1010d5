#include "scanner/archive.h"

#include "core/display.h"
#include "core/parameters.h"
#include "platform/paths.h"

#include <fmt/format.h>

namespace kst {

void lf_setStockAirportsPath() {
    const auto path = platform::pathFromUtf8(SIM_INSTALL_PATH.get()) / "Scenery";
    std::error_code error;
    if (!std::filesystem::exists(platform::caseInsensitivePath(path), error)) {
        showMessage(fmt::format("Stock airports path does not exist: {}", platform::utf8FromPath(path)),
                    true);
    }
}

void gf_scanAirports() {}

} // namespace kst
