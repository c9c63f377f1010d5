#pragma once

#include <filesystem>

namespace kst::platform {

/// The same path in the form that the system's calls take at any length: absolute and marked with \\?\ where
/// it is too long for its plain form, unchanged where it is not.
std::filesystem::path longPath(const std::filesystem::path& path);

} // namespace kst::platform
