#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kst {

/// Writes a report for the user, one line each, creating its folder. A failure is logged. Worker.
void writeReport(const std::filesystem::path& file, const std::vector<std::string>& lines);

} // namespace kst
