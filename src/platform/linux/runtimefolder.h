#pragma once

#include <filesystem>

namespace kst::platform {

/// Where this user's sockets and locks lie: `$XDG_RUNTIME_DIR`, or nothing without that variable.
std::filesystem::path xdgRuntimeFolder();

/// What serves instead: the folder /tmp/pipe-<uid>, created for this user alone. Empty when it cannot be
/// had, or when it belongs to another user.
std::filesystem::path fallbackRuntimeFolder();

} // namespace kst::platform
