#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace kst::tool {

/// Both throw std::runtime_error naming the file.
std::ifstream openFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& text);

} // namespace kst::tool
