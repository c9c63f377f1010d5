#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kst::made {

enum class TextForm { Utf8, Utf8WithMark, Utf16Little, Utf16Big };
inline constexpr std::size_t textFormCount = 4;

/// The bytes of a file with this text (UTF-8, line ends "\n") in this form, with line ends as on Windows if
/// wanted.
std::string fileBytes(std::string_view text, TextForm form, bool windowsLineEnds);

} // namespace kst::made
