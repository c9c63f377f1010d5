#pragma once

#include <filesystem>
#include <string>

namespace kst::test {

/// The source tree and the build tree that this test belongs to.
std::filesystem::path sourceFolder();
std::filesystem::path buildFolder();

/// The address of a local file or folder.
std::string fileUrl(const std::filesystem::path& path);

/// A text in which paths are written with the system's separator, with slashes instead.
std::string withSlashes(std::string text);

} // namespace kst::test
