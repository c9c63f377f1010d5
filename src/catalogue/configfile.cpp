#include "catalogue/configfile.h"

#include "catalogue/cfglines.h"
#include "catalogue/cfgmodel.h"
#include "catalogue/exitlook.h"
#include "core/files.h"
#include "core/log.h"
#include "core/runstate.h"
#include "platform/paths.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include <fmt/format.h>

namespace kst {

namespace {

/// The number that a section start without a number counts as.
constexpr int unnumberedSection = 10000;

bool isSectionStart(std::string_view line) {
    // Only a line with a bracket is worth a closer look.
    return line.find('[') != std::string_view::npos && !isCfgComment(line) &&
           (matchSectionStart(line) || isUnnumberedSectionStart(line));
}

/// Hands the lines of a text over one by one, and looks for an exit now and then.
template <class Take>
bool forEachLine(std::string_view text, Take take) {
    ExitLook look;
    while (!text.empty()) {
        if (look.stops() || !take(takeTextLine(text))) {
            return false;
        }
    }
    return true;
}

class ConfigReader {
public:
    ConfigReader(ConfigFile file, const AircraftFolder& folder) : file_(std::move(file)), folder_(folder) {}

    FileFindings read(std::string_view text) {
        if (sectionNumbersAreSound(text) && findModel(text)) {
            splitIntoSections(text);
        }
        return std::move(findings_);
    }

private:
    bool takeNumber(std::string_view line, std::vector<int>& numbers);
    bool sectionNumbersAreSound(std::string_view text);
    bool findModel(std::string_view text);
    void splitIntoSections(std::string_view text);
    bool endsSection(std::string_view line) const;
    void processSection(std::vector<std::string_view>& lines);

    ConfigFile file_;
    const AircraftFolder& folder_;
    FileFindings findings_;
};

bool ConfigReader::takeNumber(std::string_view line, std::vector<int>& numbers) {
    if (line.find('[') == std::string_view::npos || isCfgComment(line)) {
        return true;
    }
    const auto digits = matchSectionStart(line);
    if (!digits) {
        if (isUnnumberedSectionStart(line)) {
            numbers.push_back(unnumberedSection);
        }
        return true;
    }
    int number = 0;
    if (std::from_chars(digits->data(), digits->data() + digits->size(), number).ec != std::errc()) {
        findings_.logLines.push_back(fmt::format("fltsim num {} incorrect", *digits));
        return false;
    }
    numbers.push_back(number);
    return true;
}

bool ConfigReader::sectionNumbersAreSound(std::string_view text) {
    std::vector<int> numbers;
    if (!forEachLine(text, [&](std::string_view line) { return takeNumber(line, numbers); })) {
        return false;
    }
    if (numbers.empty()) {
        findings_.reports.noFltsimFiles.push_back(file_.path);
        return true;
    }
    std::sort(numbers.begin(), numbers.end());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (static_cast<std::size_t>(numbers[i]) != i) {
            findings_.reports.invalidCfgFiles.push_back(
                numbers[i] == unnumberedSection
                    ? fmt::format("{} contains a [fltsim.] section without a number", file_.path)
                    : fmt::format("{} contains non-consecutive [fltsim.x] numbers at .x={}", file_.path,
                                  numbers[i]));
            return false;
        }
    }
    return true;
}

bool ConfigReader::findModel(std::string_view text) {
    if (file_.kind == CfgKind::Ivao) {
        file_.model = modelOfIvaoPath(file_.path, findings_.reports);
    } else {
        std::string_view value;
        forEachLine(text, [&](std::string_view line) {
            if (const CfgLine found = matchKeyLine(line); found.key == CfgKey::AtcModel) {
                value = found.value;
            }
            return value.empty();
        });
        file_.model = modelOfValue(value, file_.path, findings_.reports);
    }
    return !file_.model.empty();
}

bool ConfigReader::endsSection(std::string_view line) const {
    constexpr std::size_t placesThatCount = 6;
    const std::string_view beginning =
        file_.kind == CfgKind::Standard ? line.substr(0, placesThatCount) : line;
    return beginning.find('[') != std::string_view::npos;
}

void ConfigReader::processSection(std::vector<std::string_view>& lines) {
    if (lines.empty()) {
        return;
    }
    if (auto found = lf_procesFltSimSection(file_, folder_, lines, findings_)) {
        findings_.liveries.push_back(std::move(*found));
    }
    lines.clear();
}

void ConfigReader::splitIntoSections(std::string_view text) {
    bool inSection = false;
    std::vector<std::string_view> lines;
    const bool toTheEnd = forEachLine(text, [&](std::string_view line) {
        if (isSectionStart(line)) {
            processSection(lines);
            inSection = true;
            lines.push_back(line);
        } else if (endsSection(line)) {
            processSection(lines);
            inSection = false;
        } else if (inSection && !line.empty()) {
            // An empty line says nothing, and a file may hold very many of them.
            lines.push_back(line);
        }
        return true;
    });
    if (toTheEnd) {
        processSection(lines);
    }
}

} // namespace

CfgKind cfgKindOf(std::string_view path) {
    const auto holds = [path](std::string_view text) { return path.find(text) != std::string_view::npos; };
    return holds("ivao_x-csl") || holds("IVAO_MTL") ? CfgKind::Ivao : CfgKind::Standard;
}

FileFindings readConfigText(ConfigFile file, const AircraftFolder& folder, std::string_view text) {
    return ConfigReader(std::move(file), folder).read(text);
}

FileFindings lf_searchLiveriesinFile(ConfigFile file, const AircraftFolder& folder) {
    const auto path = platform::pathFromUtf8(file.path);
    std::error_code ignored;
    std::string text;
    FileFindings findings;
    if (stopAsked() || !std::filesystem::exists(path, ignored)) {
        return findings;
    }
    try {
        switch (readTextFile(path, text, stopAsked)) {
        case TextRead::Done:
            return readConfigText(file, folder, text);
        case TextRead::NotOpened:
            if (file.kind == CfgKind::Ivao) {
                findings.logLines.push_back(fmt::format("no character set found for {}", file.path));
            }
            break;
        case TextRead::Failed:
            break;
        }
    } catch (const std::exception& failure) {
        logLine(fmt::format("exception in lf_searchLiveriesinFile {}: {}", file.path, failure.what()));
        throw;
    }
    return findings;
}

} // namespace kst
