#include "platform/paths.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <utf8.h>

namespace kst::platform {

namespace {

/// Lower case of the letters that folder and file names of this field use: Latin, Greek, Cyrillic.
char32_t lowerCase(char32_t c) {
    const auto within = [c](char32_t first, char32_t last) { return c >= first && c <= last; };
    constexpr char32_t multiplicationSign = 0xD7;
    if (within('A', 'Z') || (within(0xC0, 0xDE) && c != multiplicationSign) || within(0x391, 0x3A9) ||
        within(0x410, 0x42F)) {
        return c + 32;
    }
    return within(0x400, 0x40F) ? c + 80 : c;
}

std::u32string folded(const std::string& name) {
    std::u32string letters = utf8::utf8to32(utf8::replace_invalid(name));
    std::transform(letters.begin(), letters.end(), letters.begin(), lowerCase);
    return letters;
}

/// The names in the folder that are `name` but for their case, in order; `name` itself first if it exists.
std::vector<std::filesystem::path> namesLike(const std::filesystem::path& folder,
                                             const std::filesystem::path& name) {
    std::vector<std::filesystem::path> names;
    std::error_code error;
    if (std::filesystem::exists(folder / name, error)) {
        names.push_back(name);
    }
    const std::size_t exact = names.size();
    const std::u32string wanted = folded(name.string());
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error);
    while (!error && entry != std::filesystem::directory_iterator{}) {
        const std::filesystem::path found = entry->path().filename();
        if (found != name && folded(found.string()) == wanted) {
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
