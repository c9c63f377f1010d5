#pragma once

#include <optional>
#include <string>

namespace kst::platform {

/// The environment variable as UTF-8; nothing when it is not set or empty.
std::optional<std::string> environmentText(const std::string& name);

} // namespace kst::platform
