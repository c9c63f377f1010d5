#pragma once

// Files that tie liveries to registrations: the downloaded list and the user's own text files.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// One entry of a source. Without registrations it means: do not use this title.
struct RegcodeEntry {
    std::string title;
    std::vector<std::string> regcodes;
    bool special = false; ///< only the aircraft of these registrations may wear it

    friend bool operator==(const RegcodeEntry&, const RegcodeEntry&) = default;
};

/// Appends the entries of a list with scrambled registrations, and keeps two copies of the file beside it
/// (the name with 0 and 00). Gives whether all of it was good; what was not is logged. Worker.
bool lf_readRegcodeXml(const std::filesystem::path& file, std::vector<RegcodeEntry>& entries);

/// Appends the entries of every text file (extension .TXT in any case) directly in the folder, in the order
/// of their names. Gives whether every line was good; what was not is logged. Worker.
bool lf_readRegcodeFolder(const std::filesystem::path& folder, std::vector<RegcodeEntry>& entries);

/// One line of a user's file: "title", "title;registrations" or "title;registrations;#", the registrations
/// divided by commas. `file` names the file in the log. False when something in the line is wrong.
bool readRegcodeLine(std::string_view line, std::string_view file, std::vector<RegcodeEntry>& entries);

} // namespace kst
