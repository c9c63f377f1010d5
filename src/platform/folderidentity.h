#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace kst::platform {

/// Which folder it really is, whatever links a path goes through.
struct FolderIdentity {
    std::uint64_t volume = 0;
    std::uint64_t index = 0;
    friend auto operator<=>(const FolderIdentity&, const FolderIdentity&) = default;
};

/// Nothing when the folder does not exist or cannot be asked. Any thread.
std::optional<FolderIdentity> folderIdentity(const std::filesystem::path& folder);

} // namespace kst::platform
