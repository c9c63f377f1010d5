#include "install/version.h"

#include "core/log.h"

#include <charconv>
#include <limits>
#include <regex>
#include <stdexcept>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst {

std::string ProgramVersion::text() const {
    return fmt::format("{}.{}.{}", major, minor, patch);
}

ProgramVersion parseVersion(std::string_view text) {
    // Longer digits cannot be a version; the bound also keeps the expression's recursion shallow.
    constexpr std::size_t longestPlainVersion = 64;
    if (text.empty()) {
        return {};
    }
    static const std::regex plain(R"((\d+).(\d+).(\d+))");
    std::match_results<std::string_view::const_iterator> match;
    if (text.size() <= longestPlainVersion && std::regex_match(text.begin(), text.end(), match, plain)) {
        const auto number = [&match](std::size_t group) {
            const std::string digits = match[group].str();
            int value = 0;
            std::from_chars(digits.data(), digits.data() + digits.size(), value);
            return value;
        };
        return {number(1), number(2), number(3)};
    }
    const auto json = nlohmann::json::parse(text.begin(), text.end());
    const auto number = [&json](const char* key) {
        const auto value = json.at(key).get<double>();
        if (!(value >= 0.0 && value <= std::numeric_limits<int>::max())) {
            throw std::out_of_range(fmt::format("{} is no version number", key));
        }
        return static_cast<int>(value);
    };
    return {number("major"), number("minor"), number("patch")};
}

ProgramVersion thisProgramVersion() {
    static const ProgramVersion version = parseVersion(programVersionText());
    return version;
}

} // namespace kst
