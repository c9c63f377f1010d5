#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace kst::platform {

/// Where the next replacement of `target` by this process is written: NAME.<process id>-<counter>.new beside
/// NAME. Any thread.
std::filesystem::path replacementPath(const std::filesystem::path& target, std::uint32_t process);

/// The process id in the name of a replacement, 0 for any other file name.
std::uint32_t replacementWriter(std::string_view name);

/// Deletes the replacements in the folder whose process does not run.
void removeReplacements(const std::filesystem::path& folder, bool (*processRuns)(std::uint32_t process));

} // namespace kst::platform
