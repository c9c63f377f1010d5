#pragma once

#include <compare>
#include <string>
#include <string_view>

namespace kst {

/// A version of the program; all zero means unknown.
struct ProgramVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison's own zero for a pointer
    friend auto operator<=>(const ProgramVersion&, const ProgramVersion&) = default;
    bool known() const { return major != 0 || minor != 0 || patch != 0; }
    std::string text() const;
};

/// Reads a plain version such as 1.2.3, or a JSON object with the number keys `major`, `minor`, `patch`.
/// Empty text gives 0.0.0; a text that is neither throws the JSON library's exception.
ProgramVersion parseVersion(std::string_view text);

/// The version of this program.
ProgramVersion thisProgramVersion();

} // namespace kst
