#pragma once

// The generated airport files whose stands the system's maker can learn off line, from recorded traffic:
// copies of them are laid out in a folder for the user to send.

#include <filesystem>
#include <string>
#include <vector>

namespace kst {

/// Lays out the copies of the last scan's files, tells the user and the window. Asks the download server
/// about each airport; ends early when an exit is asked for. Worker.
void collectOfflineAirports();

/// The names, without extension and in ascending order, of the regular files in a folder whose extension
/// equals the given one regardless of case and whose name without extension has exactly 4 characters.
std::vector<std::string> lf_listAirportFiles(const std::filesystem::path& folder, std::string_view extension);

} // namespace kst
