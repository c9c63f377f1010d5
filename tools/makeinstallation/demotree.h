#pragma once

#include <cstddef>
#include <filesystem>

namespace kst::made {

/// Makes a tree of aircraft folders with a livery for each airline and type that flies in the recordings of
/// the data folder, and one without an airline for every type. Returns the number of liveries. Throws
/// std::runtime_error.
std::size_t makeDemoTree(const std::filesystem::path& data, const std::filesystem::path& folder);

} // namespace kst::made
