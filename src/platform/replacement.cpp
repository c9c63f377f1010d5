#include "platform/replacement.h"

#include "platform/paths.h"

#include <atomic>
#include <charconv>

#include <fmt/format.h>

namespace kst::platform {

namespace {
constexpr std::string_view ending = ".new";
}

std::filesystem::path replacementPath(const std::filesystem::path& target, std::uint32_t process) {
    static std::atomic<unsigned> counter{0};
    std::filesystem::path path = target;
    path += pathFromUtf8(fmt::format(".{}-{}{}", process, ++counter, ending));
    return path;
}

std::uint32_t replacementWriter(std::string_view name) {
    if (!name.ends_with(ending)) {
        return 0;
    }
    name.remove_suffix(ending.size());
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return 0;
    }
    const std::string_view numbers = name.substr(dot + 1);
    const char* const end = numbers.data() + numbers.size();
    std::uint32_t process = 0;
    const auto [dash, error] = std::from_chars(numbers.data(), end, process);
    if (error != std::errc{} || dash == end || *dash != '-') {
        return 0;
    }
    unsigned counter = 0;
    const auto [rest, counterError] = std::from_chars(dash + 1, end, counter);
    return counterError == std::errc{} && rest == end ? process : 0;
}

void removeReplacements(const std::filesystem::path& folder, bool (*processRuns)(std::uint32_t process)) {
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    while (!error && entry != std::filesystem::directory_iterator{}) {
        const std::uint32_t writer = replacementWriter(utf8FromPath(entry->path().filename()));
        if (writer != 0 && !processRuns(writer)) {
            std::error_code ignored;
            std::filesystem::remove(entry->path(), ignored);
        }
        entry.increment(error);
    }
}

} // namespace kst::platform
