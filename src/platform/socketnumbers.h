#pragma once

#include <system_error>

namespace kst::platform {

/// The Winsock number of a socket error of this system: the same words on every system. A number without a
/// Winsock counterpart comes back unchanged.
int winsockNumber(const std::error_code& error);

} // namespace kst::platform
