#pragma once

#include <filesystem>
#include <string_view>

namespace kst {

/// The path that a text of one of the simulator's files, or of the user's settings, names: UTF-8, with
/// backslashes, which are separators on every system.
std::filesystem::path pathFromCfgText(std::string_view text);

} // namespace kst
