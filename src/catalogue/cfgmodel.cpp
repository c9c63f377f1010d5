#include "catalogue/cfgmodel.h"

#include "catalogue/reference.h"
#include "catalogue/referencetables.h"
#include "platform/filenames.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

namespace kst {

namespace {

std::string validModel(std::string_view code, std::string_view path, ScanReports& reports) {
    if (gf_isValidModel(code)) {
        return std::string(code);
    }
    const auto& fixes = referenceTables().modelFixes;
    if (const auto fix = fixes.find(std::string(code)); fix != fixes.end()) {
        reports.codeFixes.push_back(
            fmt::format("Model fix: {} found in {} changed into {}", code, path, fix->second));
        return fix->second;
    }
    reports.invalidModels.push_back(fmt::format("{:16} in {}", code, path));
    return {};
}

/// Takes the last part off a path; either separator counts.
std::string_view takeLastPart(std::string_view& path) {
    const std::size_t separator = path.find_last_of("\\/");
    if (separator == std::string_view::npos) {
        return std::exchange(path, {});
    }
    const std::string_view part = path.substr(separator + 1);
    path = path.substr(0, separator);
    return part;
}

bool isWord(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    });
}

/// What follows "IVAO_" in the name of the file's folder, if the path is one of a model set: what the
/// expression `.+\\IVAO_MTL\\IVAO_(\w+)\\aircraft.cfg$` finds without regard to case.
std::string_view modelText(std::string_view path) {
    constexpr std::string_view prefix = "ivao_";
    const std::string file = platform::foldedName(takeLastPart(path));
    const std::string_view folder = takeLastPart(path);
    const std::string set = platform::foldedName(takeLastPart(path));
    const bool matches = file == "aircraft.cfg" && set == "ivao_mtl" && !path.empty() &&
                         platform::foldedName(folder.substr(0, prefix.size())) == prefix &&
                         isWord(folder.substr(prefix.size()));
    return matches ? folder.substr(prefix.size()) : std::string_view{};
}

/// How many characters at the end of a model set's own name are no part of the model code.
std::size_t surplus(std::string_view text) {
    struct Known {
        std::string_view text;
        std::size_t surplus;
    };
    constexpr std::array known = {Known{"B744F", 1},    Known{"T154M", 1},    Known{"T154B2", 2},
                                  Known{"GLID_SH", 3},  Known{"GLID_A13", 4}, Known{"GLID_A25", 4},
                                  Known{"GLID_KA6", 4}, Known{"GLID_KA8", 4}, Known{"GLID_L13", 4}};
    const auto found =
        std::find_if(known.begin(), known.end(), [&](const Known& k) { return k.text == text; });
    if (found != known.end()) {
        return found->surplus;
    }
    return text.ends_with('w') ? 1 : 0;
}

} // namespace

std::string modelOfValue(std::string_view value, std::string_view path, ScanReports& reports) {
    if (value.empty()) {
        reports.invalidCfgFiles.push_back(
            fmt::format("Line atc_model= is missing in [General] section of {}", path));
        return {};
    }
    return validModel(value, path, reports);
}

std::string modelOfIvaoPath(std::string_view path, ScanReports& reports) {
    std::string_view text = modelText(path);
    if (text.empty()) {
        reports.invalidModels.push_back(fmt::format("{:16} in {}", "  ", path));
        return {};
    }
    text.remove_suffix(surplus(text));
    return validModel(text, path, reports);
}

} // namespace kst
