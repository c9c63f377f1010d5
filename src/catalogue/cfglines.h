#pragma once

// Which lines of an aircraft.cfg mean something. The rules are whole-line regular expressions that ignore
// case, `\s*(KEY)\s*=\s*(.*\S)\s*` and `\s*(\[fltsim\.)(\d+)\]\s*`; what is here matches exactly what they
// match (ECMAScript, bytes, classic locale), by hand, since they are asked for every line of an installation.

#include <optional>
#include <string_view>

namespace kst {

enum class CfgKey { None, Title, Sim, Model, Texture, AtcModel, AtcId, AtcParkingCodes, AtcParkingTypes };

struct CfgLine {
    CfgKey key = CfgKey::None;
    std::string_view value; ///< without white space at its ends, never empty when there is a key
};

/// The key of the line and its value; no key where the line matches none, as with nothing behind the "=".
CfgLine matchKeyLine(std::string_view line);

/// The digits of "[fltsim.12]"; nothing where the line is no section start.
std::optional<std::string_view> matchSectionStart(std::string_view line);

/// Whether the line is no section start but holds the beginning of one: it counts as one with no number.
bool isUnnumberedSectionStart(std::string_view line);

/// A comment: the line begins with "//".
inline bool isCfgComment(std::string_view line) {
    return line.starts_with("//");
}

/// White space as the expressions understand it.
bool isCfgSpace(char c);

} // namespace kst
