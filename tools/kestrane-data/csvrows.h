#pragma once

#include <string>
#include <vector>

namespace kst::data {

using Row = std::vector<std::string>;

/// The rows of a CSV file, but for empty lines and those that begin with '#'; `header` says whether its first
/// line is one, which is left out. Throws std::runtime_error where the file is missing.
std::vector<Row> readRows(const std::string& path, bool header);

} // namespace kst::data
