#include "platform/filenames.h"
#include "platform/paths.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace kst::platform {

namespace {

/// The names in the folder that are `name` but for their case, in order; `name` itself first if it exists.
std::vector<std::filesystem::path> namesLike(const std::filesystem::path& folder,
                                             const std::filesystem::path& name) {
    std::vector<std::filesystem::path> names;
    std::error_code error;
    if (std::filesystem::exists(folder / name, error)) {
        names.push_back(name);
    }
    const std::size_t exact = names.size();
    const std::string wanted = foldedName(name.native());
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error);
    while (!error && entry != std::filesystem::directory_iterator{}) {
        const std::filesystem::path found = entry->path().filename();
        if (found != name && foldedName(found.native()) == wanted) {
            names.push_back(found);
        }
        entry.increment(error);
    }
    std::sort(names.begin() + static_cast<std::ptrdiff_t>(exact), names.end());
    return names;
}

using Part = std::filesystem::path::const_iterator;

std::optional<std::filesystem::path> find(const std::filesystem::path& folder, Part part, Part end) {
    if (part == end) {
        return folder;
    }
    const Part next = std::next(part);
    if (part->empty() || *part == "." || *part == ".." || *part == "/") {
        return find(folder / *part, next, end);
    }
    for (const std::filesystem::path& name : namesLike(folder, *part)) {
        if (auto found = find(folder / name, next, end)) {
            return found;
        }
    }
    return std::nullopt;
}

} // namespace

std::filesystem::path caseInsensitivePath(const std::filesystem::path& path) {
    std::error_code ignored;
    if (path.empty() || std::filesystem::exists(path, ignored)) {
        return path;
    }
    return find({}, path.begin(), path.end()).value_or(path);
}

} // namespace kst::platform
