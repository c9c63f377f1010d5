#pragma once

#include <filesystem>

namespace kst::test {

/// The source tree and the build tree that this test belongs to.
std::filesystem::path sourceFolder();
std::filesystem::path buildFolder();

} // namespace kst::test
