#include "catalogue/sectionrules.h"

#include "catalogue/reference.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/sectionkeys.h"
#include "core/log.h"
#include "core/parameters.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

namespace {

bool isAirliner(std::string_view model) {
    const Category category = gf_category(model);
    return category == Category::Large || category == Category::Heavy;
}

/// The airline of a registration that the reference database knows; empty where it knows none.
std::string airlineOfRegcode(std::string_view regcode) {
    const auto record = gf_regcodeRecord(regcode);
    if (!record) {
        return {};
    }
    return !record->airline.empty() ? record->airline : record->operatorCode;
}

bool isWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// The three letters behind the model in the title, with white space between them or none: what the
/// expression `MODEL\s*(\w\w\w).*$` finds.
std::string_view airlineInTitle(std::string_view title, std::string_view model) {
    constexpr std::size_t codeLength = 3;
    constexpr std::string_view spaces = " \t\n\v\f\r";
    for (std::size_t at = title.find(model); at != std::string_view::npos; at = title.find(model, at + 1)) {
        std::string_view rest = title.substr(at + model.size());
        rest.remove_prefix(std::min(rest.find_first_not_of(spaces), rest.size()));
        const std::string_view code = rest.substr(0, codeLength);
        if (code.size() == codeLength && std::all_of(code.begin(), code.end(), isWordCharacter)) {
            return code;
        }
    }
    return {};
}

/// One section on its way through the rules.
class Section {
public:
    Section(const ConfigFile& file, const AircraftFolder& folder, std::span<const std::string_view> lines,
            FileFindings& findings)
        : file_(file), folder_(folder), lines_(lines), findings_(findings) {}

    std::optional<FoundLivery> process();

private:
    bool refuse(std::string text);
    bool partsExist();
    bool titleIsWanted();
    bool settleAirline();
    bool settleIvaoAirline();

    const ConfigFile& file_;
    const AircraftFolder& folder_;
    std::span<const std::string_view> lines_;
    FileFindings& findings_;
    SectionKeys keys_;
};

bool Section::refuse(std::string text) {
    findings_.reports.incompleteSections.push_back(std::move(text));
    return false;
}

bool Section::partsExist() {
    const auto holdsFolder = [this](std::string_view kind, std::string_view value) {
        return folder_.holdsFolder(fmt::format("{}.{}", kind, value));
    };
    const auto holdsAirFile = [this] { return folder_.holdsAirFile(fmt::format("{}.air", keys_.sim)); };
    const bool exist =
        holdsFolder("model", keys_.model) && holdsFolder("texture", keys_.texture) && holdsAirFile();
    return exist || refuse(fmt::format("{} {} does not exist", file_.path, lines_.front()));
}

bool Section::titleIsWanted() {
    if (keys_.title.empty()) {
        return refuse(fmt::format("{} {} misses title", file_.path, lines_.front()));
    }
    return !dontUseTitles.contains(keys_.title);
}

bool Section::settleAirline() {
    if (keys_.airline == genericAirline) {
        keys_.regcode.clear();
    }
    if (!keys_.airline.empty()) {
        return true;
    }
    if (!keys_.regcode.empty()) {
        keys_.airline = airlineOfRegcode(keys_.regcode);
        if (!keys_.airline.empty()) {
            return true;
        }
        if (isAirliner(file_.model)) {
            return refuse(
                fmt::format("\"{}\" \"{}\" has no airline and its regcode is not in my dbase (very old liv?)",
                            fmt::format("{} {}", file_.path, lines_.front()), keys_.title));
        }
        keys_.airline = privateAirline;
        return true;
    }
    if (isAirliner(file_.model)) {
        return refuse(fmt::format("\"{}\" \"{}\" has no airline and no regcode info",
                                  fmt::format("{} {}", file_.path, lines_.front()), keys_.title));
    }
    keys_.airline = privateAirline;
    keys_.regcode = gf_regcodeInTitle(keys_.title);
    return true;
}

bool Section::settleIvaoAirline() {
    const std::string_view code = airlineInTitle(keys_.title, file_.model);
    if (!code.empty()) {
        if (!gf_isValidAirline(code)) {
            findings_.reports.invalidAirlines.push_back(
                fmt::format("{:12} in {} {}", code, file_.path, lines_.front()));
            return false;
        }
        keys_.airline = code;
        if (code == genericAirline) {
            keys_.regcode.clear();
        }
        return true;
    }
    const char* const ending = keys_.regcode.empty() ? "no regcode" : "regcode unknown";
    keys_.airline = airlineOfRegcode(keys_.regcode);
    return !keys_.airline.empty() || refuse(fmt::format("{} {} misses airlinecode in title: {}, and {}",
                                                        file_.path, lines_.front(), keys_.title, ending));
}

std::optional<FoundLivery> Section::process() {
    if (SUPPRESS_STUB && firstTitle(lines_).ends_with("_STUB")) {
        return std::nullopt;
    }
    auto keys = readSectionKeys(file_, lines_, findings_);
    if (!keys) {
        return std::nullopt;
    }
    keys_ = std::move(*keys);
    const bool ivao = file_.kind == CfgKind::Ivao;
    if (!partsExist() || !titleIsWanted() || !(ivao ? settleIvaoAirline() : settleAirline())) {
        return std::nullopt;
    }
    FoundLivery found;
    found.livery.airline = std::move(keys_.airline);
    found.livery.model = file_.model;
    found.livery.title = keys_.title;
    found.livery.regcode = std::move(keys_.regcode);
    found.livery.priority = file_.priority;
    found.livery.cargo = !ivao && keys_.parkingTypes.find("CARGO") != std::string::npos;
    found.header = lines_.front();
    return found;
}

} // namespace

std::optional<FoundLivery> lf_procesFltSimSection(const ConfigFile& file, const AircraftFolder& folder,
                                                  std::span<const std::string_view> lines,
                                                  FileFindings& findings) {
    try {
        return Section(file, folder, lines, findings).process();
    } catch (const std::exception& failure) {
        logLine(fmt::format("exception in lf_procesFltSimSection: {}, file: {}", failure.what(), file.path));
        throw;
    }
}

std::string titleTakenReport(const ConfigFile& file, const FoundLivery& found) {
    return file.kind == CfgKind::Ivao
               ? fmt::format("{} {} title already exists: {}", file.path, found.header, found.livery.title)
               : fmt::format("{} {} title \"{}\" already exists", file.path, found.header,
                             found.livery.title);
}

} // namespace kst
