// Who made a scenery file.

#include "catalogue/reference.h"
#include "catalogue/referencetables.h"
#include "core/log.h"

#include <algorithm>
#include <regex>

#include <fmt/format.h>

namespace kst {

namespace {

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool containsWithoutCase(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

/// Whether the text matches ".*item.*" without regard to case. Only an item that is more than plain text
/// needs an expression, which costs thousands of times as much.
bool matches(std::string_view text, const std::string& item) {
    constexpr std::string_view meaningful = "^$\\.*+?()[]{}|";
    if (item.find_first_of(meaningful) == std::string::npos) {
        return containsWithoutCase(text, item);
    }
    if (text.find(item) != std::string_view::npos) {
        return true;
    }
    try {
        const std::regex expression(".*" + item + ".*", std::regex::icase);
        return std::regex_match(text.begin(), text.end(), expression);
    } catch (const std::regex_error&) {
        return false;
    }
}

} // namespace

std::string gf_publisherOfFile(std::string_view filename) {
    if (containsWithoutCase(filename, "ORBX")) {
        logLine(fmt::format("from filename => publisher  {}", "simaddon"));
        return "simaddon";
    }
    for (const std::vector<std::string>& names : referenceTables().publisherNames) {
        for (const std::string& name : names) {
            if (!name.empty() && matches(filename, name)) {
                return names.front();
            }
        }
    }
    return "unknown";
}

} // namespace kst
