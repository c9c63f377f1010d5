#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace kst::platform {

/// The one place where text becomes a path and back: text is UTF-8 on every system.
std::filesystem::path pathFromUtf8(std::string_view text);
std::string utf8FromPath(const std::filesystem::path& path);

/// The path as it really is on disk when each part is compared without regard to case, as Windows finds
/// files. Gives the path back unchanged where the system itself ignores case, or where nothing matches. A
/// part that exists to the letter wins over others.
std::filesystem::path caseInsensitivePath(const std::filesystem::path& path);

/// Replaces the file's content as a whole: writes beside it, flushes to the disk, renames over it. Returns
/// the error, with the old content intact. Safe against a kill at any moment; parallel writers of one file do
/// not mix.
std::error_code replaceFileContent(const std::filesystem::path& path, std::string_view content);

/// Deletes what replacements of files in this folder left behind when their process was killed. Those of
/// processes that still run stay. Never fails.
void removeLeftovers(const std::filesystem::path& folder);

} // namespace kst::platform
