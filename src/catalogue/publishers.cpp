// Whose scenery a file is, by its name.

#include "catalogue/reference.h"
#include "catalogue/referencetables.h"
#include "core/log.h"

#include <algorithm>
#include <cctype>
#include <regex>

#include <fmt/format.h>

namespace kst {

namespace {

/// Longer names are no file's; the bound also keeps the expressions' recursion shallow.
constexpr std::size_t longestName = 260;

bool equalIgnoringCase(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), equalIgnoringCase) != text.end() ||
           part.empty();
}

bool isExpression(std::string_view item) {
    return item.find_first_of("^$\\.*+?()[]{}|") != std::string_view::npos;
}

/// Whether the item is an expression that is searched for in bounded time: the matcher tries every way to
/// share a text out among repetitions, and the lists come from outside.
bool isHarmless(std::string_view item) {
    constexpr std::size_t longestExpression = 64;
    constexpr int mostRepetitions = 2;
    constexpr std::string_view repeats = "*+?{";
    constexpr std::string_view notRepeated = "*+?})|(^";
    if (item.size() > longestExpression || repeats.find(item.front()) != std::string_view::npos) {
        return false;
    }
    int repetitions = 0;
    for (std::size_t i = 1; i < item.size(); ++i) {
        if (repeats.find(item[i]) != std::string_view::npos) {
            ++repetitions;
            if (notRepeated.find(item[i - 1]) != std::string_view::npos) {
                return false;
            }
        }
    }
    return repetitions <= mostRepetitions;
}

bool matchesExpression(std::string_view name, const std::string& item) {
    if (!isHarmless(item)) {
        return false;
    }
    try {
        const std::regex expression(item, std::regex::ECMAScript | std::regex::icase);
        return std::regex_search(name.begin(), name.end(), expression);
    } catch (const std::regex_error&) {
        return false;
    }
}

/// A plain word matches as its expression would: anywhere, whatever its case, within one line.
bool matches(std::string_view name, const std::string& item) {
    if (name.find(item) != std::string_view::npos) {
        return true;
    }
    return isExpression(item) ? matchesExpression(name, item) : containsIgnoringCase(name, item);
}

} // namespace

std::string gf_publisherOfFile(std::string_view filename) {
    constexpr std::string_view simaddon = "simaddon";
    const std::string_view name = filename.substr(0, longestName);
    if (containsIgnoringCase(name, "ORBX")) {
        logLine(fmt::format("from filename => publisher  {}", simaddon));
        return std::string(simaddon);
    }
    for (const std::vector<std::string>& names : referenceTables().publisherNames) {
        const bool found = std::ranges::any_of(
            names, [name](const std::string& item) { return !item.empty() && matches(name, item); });
        if (found) {
            return names.front();
        }
    }
    return "unknown";
}

} // namespace kst
