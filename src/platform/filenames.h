#pragma once

#include <string>
#include <string_view>

namespace kst::platform {

/// The file name in the form in which two names of one file are equal when case does not count: lower case of
/// Latin, Greek and Cyrillic letters, whatever the system. UTF-8; bytes that are none become replacement
/// characters.
std::string foldedName(std::string_view name);

} // namespace kst::platform
