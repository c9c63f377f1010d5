#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kst::platform {

enum class RegistryHive { LocalMachine, CurrentUser };

/// Whether the key exists and can be opened (64-bit view). `key` is written with backslashes, without its
/// hive.
bool registryKeyExists(RegistryHive hive, std::string_view key);

/// A text value as UTF-8; nothing when key or value is missing, denied or not a text.
std::optional<std::string> registryText(RegistryHive hive, std::string_view key, std::string_view name);

} // namespace kst::platform
