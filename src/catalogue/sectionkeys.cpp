#include "catalogue/sectionkeys.h"

#include "catalogue/cfglines.h"
#include "catalogue/exitlook.h"
#include "catalogue/reference.h"
#include "catalogue/referencereader.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

namespace {

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

bool contains(std::string_view line, std::string_view text) {
    return line.find(text) != std::string_view::npos;
}

/// A list with white space in it is cut at its commas and put together again without.
std::string normalisedList(std::string_view value) {
    if (value.find_first_of(" \t\r\n") == std::string_view::npos) {
        return std::string(value);
    }
    std::string joined;
    bool anything = false;
    for (const std::string_view item : splitCommaList(value)) {
        anything = anything || !item.empty();
        joined.append(item);
        joined.push_back(',');
    }
    joined.pop_back();
    return anything ? joined : std::string();
}

class SectionReader {
public:
    SectionReader(const ConfigFile& file, std::string_view header, FileFindings& findings)
        : file_(file), header_(header), findings_(findings) {}

    /// False when the line refuses the section.
    bool take(std::string_view line);
    SectionKeys takeKeys() { return std::move(keys_); }

private:
    bool refuse(std::string_view text);
    bool refuseSecond(std::string_view key);
    bool takeAirline(std::string_view value);
    void takeRegcode(std::string_view value);
    std::optional<std::string> regcodeProblem(std::string_view item, std::string_view value) const;
    static void takeFirst(std::string_view& kept, std::string_view value);

    const ConfigFile& file_;
    std::string_view header_;
    FileFindings& findings_;
    SectionKeys keys_;
    bool typesSeen_ = false;
};

bool SectionReader::refuse(std::string_view text) {
    findings_.reports.incompleteSections.emplace_back(text);
    return false;
}

bool SectionReader::refuseSecond(std::string_view key) {
    return refuse(fmt::format("{} {} has more than one {} key", file_.path, header_, key));
}

void SectionReader::takeFirst(std::string_view& kept, std::string_view value) {
    if (kept.empty()) {
        kept = value;
    }
}

bool SectionReader::take(std::string_view line) {
    const CfgLine found = matchKeyLine(line);
    if (found.key == CfgKey::Title) {
        if (!keys_.title.empty()) {
            return refuseSecond("title");
        }
        keys_.title = found.value;
        return true;
    }
    // A second airline, type or registration refuses the section whatever the line looks like, a comment
    // included: such a section was edited by hand and does not say what it means.
    if (file_.kind == CfgKind::Standard) {
        if (keys_.airline.empty()) {
            if (found.key == CfgKey::AtcParkingCodes) {
                return takeAirline(found.value);
            }
        } else if (contains(line, "atc_parking_codes")) {
            return refuseSecond("atc_parking_codes");
        }
    }
    if (typesSeen_) {
        if (contains(line, "atc_parking_types")) {
            return refuseSecond("atc_parking_types");
        }
    } else if (found.key == CfgKey::AtcParkingTypes) {
        typesSeen_ = true;
        keys_.parkingTypes = normalisedList(found.value);
        std::transform(keys_.parkingTypes.begin(), keys_.parkingTypes.end(), keys_.parkingTypes.begin(),
                       upper);
        return true;
    }
    if (!keys_.regcode.empty()) {
        if (contains(line, "atc_id=")) {
            return refuse(fmt::format("{}, {}, has more than one atc_id key", file_.path, header_));
        }
    } else if (found.key == CfgKey::AtcId) {
        takeRegcode(found.value);
        return true;
    }
    switch (found.key) {
    case CfgKey::Model:
        takeFirst(keys_.model, found.value);
        break;
    case CfgKey::Sim:
        takeFirst(keys_.sim, found.value);
        break;
    case CfgKey::Texture:
        takeFirst(keys_.texture, found.value);
        break;
    default:
        break;
    }
    return true;
}

bool SectionReader::takeAirline(std::string_view value) {
    constexpr std::size_t lengthWithMark = 4;
    std::string code = normalisedList(value);
    if (code.size() == lengthWithMark && (code.back() == 'X' || code.back() == 'C')) {
        code.pop_back();
    }
    if (gf_isValidAirline(code)) {
        keys_.airline = std::move(code);
        return true;
    }
    if (code == "RFO") {
        return false;
    }
    findings_.reports.invalidAirlines.push_back(fmt::format("{:12} in {} {}", code, file_.path, header_));
    return true;
}

std::optional<std::string> SectionReader::regcodeProblem(std::string_view item,
                                                         std::string_view value) const {
    const bool ivao = file_.kind == CfgKind::Ivao;
    if (item.empty()) {
        return ivao ? fmt::format(" empty regcode in: {}", value)
                    : fmt::format("empty regcode in {} {}", keys_.title, value);
    }
    // Trimming leaves the rarer kinds of white space.
    if (!ivao && item.size() == 1 && isCfgSpace(item.front())) {
        return fmt::format("regcode is a space char? {} {}", keys_.title, value);
    }
    if (item.size() > longestRegcode) {
        return ivao
                   ? fmt::format("regcode: {}, has more than 12 chars in title: {}", item.size(), keys_.title)
                   : fmt::format("regcode: {}, has more than 12 chars or contains UTF16 chars in \"{}\"?",
                                 item, keys_.title);
    }
    if (contains(item, "*")) {
        return fmt::format("{} {} wild cards no longer supported, atc_id skipped ", keys_.title, item);
    }
    return std::nullopt;
}

void SectionReader::takeRegcode(std::string_view value) {
    const std::string_view list = file_.kind == CfgKind::Standard ? value.substr(0, value.find(';')) : value;
    if (list.empty()) {
        findings_.logLines.push_back(fmt::format("invalid atc_id={} ==> in: {}", value, keys_.title));
        return;
    }
    const auto items = splitCommaList(list);
    for (const std::string_view item : items) {
        if (auto problem = regcodeProblem(item, value)) {
            findings_.logLines.push_back(std::move(*problem));
            return;
        }
    }
    // Several registrations on one livery: it belongs to none of them alone.
    if (items.size() == 1) {
        keys_.regcode = items.front();
    }
}

} // namespace

std::optional<SectionKeys> readSectionKeys(const ConfigFile& file, std::span<const std::string_view> lines,
                                           FileFindings& findings) {
    if (lines.empty()) {
        return std::nullopt;
    }
    const auto counts = [](std::string_view line) { return !line.empty() && !isCfgComment(line); };
    const auto last = std::find_if(lines.rbegin(), lines.rend(), counts);
    SectionReader reader(file, lines.front(), findings);
    ExitLook look;
    for (const std::string_view line : lines.first(static_cast<std::size_t>(lines.rend() - last))) {
        if (look.stops() || !reader.take(line)) {
            return std::nullopt;
        }
    }
    return reader.takeKeys();
}

std::string_view firstTitle(std::span<const std::string_view> lines) {
    ExitLook look;
    for (const std::string_view line : lines) {
        if (look.stops()) {
            break;
        }
        if (const CfgLine found = matchKeyLine(line); found.key == CfgKey::Title) {
            return found.value;
        }
    }
    return {};
}

} // namespace kst
