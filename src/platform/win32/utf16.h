#pragma once

// The one place where text becomes UTF-16 for the system's calls, and back. Any thread.

#include <optional>
#include <string>
#include <string_view>

namespace kst::platform {

/// The text in UTF-16. Each sequence that is not UTF-8 becomes a replacement character (U+FFFD).
std::wstring wideFromUtf8(std::string_view text);

/// The same, but nothing when the text is not UTF-8.
std::optional<std::wstring> strictWideFromUtf8(std::string_view text);

/// The text in UTF-8. A surrogate without its partner becomes a replacement character (U+FFFD).
std::string utf8FromWide(std::wstring_view text);

} // namespace kst::platform
