#pragma once

#include "support/tempfolder.h"

#include <string_view>

namespace kst::test {

/// Writes values into the registry that the program sees as long as `folder` lives, in place of those of the
/// last call. `text` is in the form of the file registry.ini: a line [HKEY_CURRENT_USER\KEY] or
/// [HKEY_LOCAL_MACHINE\KEY], then lines NAME=text.
void writeRegistry(const TempFolder& folder, std::string_view text);

} // namespace kst::test
