#pragma once

// What the lines of a [fltsim.x] section say, before it is judged.

#include "catalogue/sectionrules.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kst {

struct SectionKeys {
    std::string_view title, model, sim, texture;
    std::string airline;      ///< valid airline code, or empty
    std::string regcode;      ///< at most 12 characters, or empty
    std::string parkingTypes; ///< upper case
};

/// Reads the lines, the first of which is the section's header. Nothing when the section is refused: a key
/// stands in it twice (reported), or it asks to be left out.
std::optional<SectionKeys> readSectionKeys(const ConfigFile& file, std::span<const std::string_view> lines,
                                           FileFindings& findings);

/// The title of the section as `readSectionKeys` takes it, or empty.
std::string_view firstTitle(std::span<const std::string_view> lines);

} // namespace kst
