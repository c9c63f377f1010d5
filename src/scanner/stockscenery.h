#pragma once

// What belongs to the simulator itself: no add-on airports are looked for in it.

#include <filesystem>
#include <string_view>

namespace kst {

/// Remembers the folder of the stock airports below the install path; shows a message when it does not exist.
/// Worker.
void lf_setStockAirportsPath();

/// Whether the text of the stock airports' folder stands anywhere in the path, to the letter. Without an
/// install path nothing is stock. Any thread.
bool lf_isStockPath(const std::filesystem::path& path);

/// Whether a line of scenery.cfg names a folder of the simulator's own that holds no airports.
bool lf_isDefaultScenery(std::string_view line);

} // namespace kst
