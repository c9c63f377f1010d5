#pragma once

#include <string>

namespace kst::data {

/// Writes an archive with one file of this content. Throws std::runtime_error.
void writeZip(const std::string& path, const std::string& entry, const std::string& content);

/// The text of the last file in the archive. Throws std::runtime_error.
std::string readZip(const std::string& path);

} // namespace kst::data
