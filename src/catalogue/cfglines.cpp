#include "catalogue/cfglines.h"

#include <algorithm>

namespace kst {

namespace {

constexpr std::string_view spaces = " \t\n\v\f\r";
/// What the dot of the expressions does not match.
constexpr std::string_view lineEnds = "\r\n";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

void skipSpaces(std::string_view& text) {
    while (!text.empty() && isCfgSpace(text.front())) {
        text.remove_prefix(1);
    }
}

void dropTrailingSpaces(std::string_view& text) {
    while (!text.empty() && isCfgSpace(text.back())) {
        text.remove_suffix(1);
    }
}

bool startsWithWord(std::string_view text, std::string_view lowerWord) {
    return text.size() >= lowerWord.size() && std::equal(lowerWord.begin(), lowerWord.end(), text.begin(),
                                                         [](char word, char c) { return word == lower(c); });
}

struct KeyWord {
    std::string_view word;
    CfgKey key;
};

constexpr KeyWord keyWords[] = {
    {"title", CfgKey::Title},
    {"sim", CfgKey::Sim},
    {"model", CfgKey::Model},
    {"texture", CfgKey::Texture},
    {"atc_model", CfgKey::AtcModel},
    {"atc_id", CfgKey::AtcId},
    {"atc_parking_codes", CfgKey::AtcParkingCodes},
    {"atc_parking_types", CfgKey::AtcParkingTypes},
};

} // namespace

bool isCfgSpace(char c) {
    return spaces.find(c) != std::string_view::npos;
}

CfgLine matchKeyLine(std::string_view line) {
    skipSpaces(line);
    if (line.empty()) {
        return {};
    }
    const char first = lower(line.front());
    for (const KeyWord& candidate : keyWords) {
        if (candidate.word.front() != first || !startsWithWord(line, candidate.word)) {
            continue;
        }
        std::string_view rest = line.substr(candidate.word.size());
        skipSpaces(rest);
        if (!rest.starts_with('=')) {
            continue;
        }
        rest.remove_prefix(1);
        skipSpaces(rest);
        dropTrailingSpaces(rest);
        const bool matches = !rest.empty() && rest.find_first_of(lineEnds) == std::string_view::npos;
        return matches ? CfgLine{candidate.key, rest} : CfgLine{};
    }
    return {};
}

std::optional<std::string_view> matchSectionStart(std::string_view line) {
    constexpr std::string_view opening = "[fltsim.";
    skipSpaces(line);
    if (!startsWithWord(line, opening)) {
        return std::nullopt;
    }
    dropTrailingSpaces(line);
    line.remove_prefix(opening.size());
    if (line.size() < 2 || line.back() != ']') {
        return std::nullopt;
    }
    line.remove_suffix(1);
    const bool digits = std::all_of(line.begin(), line.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits ? std::optional(line) : std::nullopt;
}

bool isUnnumberedSectionStart(std::string_view line) {
    return !isCfgComment(line) &&
           (line.find("[fltsim.") != std::string_view::npos ||
            line.find("[FLTSIM.") != std::string_view::npos) &&
           !matchSectionStart(line);
}

} // namespace kst
