#include "parking/airportxml.h"

#include "core/files.h"
#include "core/orderedtasks.h"
#include "core/xmlsection.h"
#include "parking/parkposxml.h"

#include <algorithm>
#include <iterator>

namespace kst {

namespace {

std::string wordsOf(const pugi::xml_parse_result& result) {
    return result ? std::string() : result.description();
}

std::string wordsOf(pugi::xml_parse_status status) {
    pugi::xml_parse_result result;
    result.status = status;
    return wordsOf(result);
}

/// Returns what is wrong with the file, empty if nothing.
std::string readText(const std::filesystem::path& path, std::string& text) {
    constexpr std::size_t largestAirportFile = 64 * 1024 * 1024;
    const std::error_code error = readFile(path, text, largestAirportFile);
    if (!error) {
        return {};
    }
    if (error == std::errc::file_too_large) {
        return "too large";
    }
    if (error == std::errc::is_a_directory || error == std::errc::invalid_argument) {
        return "no regular file";
    }
    return wordsOf(error == std::errc::no_such_file_or_directory ? pugi::status_file_not_found
                                                                 : pugi::status_io_error);
}

struct ParsedStands {
    std::vector<ParkPos> stands;
    std::string wrong; ///< empty if nothing
};

ParsedStands parseStands(std::string& text, const XmlSection& part) {
    ParsedStands parsed;
    parsed.wrong = wordsOf(parseSection(
        text, part, [&parsed](const pugi::xml_node& piece) { readStands(piece, true, parsed.stands); }));
    return parsed;
}

} // namespace

std::string loadAirportXml(const std::filesystem::path& path, pugi::xml_document& document) {
    std::string text;
    std::string wrong = readText(path, text);
    return wrong.empty() ? wordsOf(document.load_buffer(text.data(), text.size())) : wrong;
}

std::string AirportXml::load(const std::filesystem::path& path) {
    std::string text;
    std::string wrong = readText(path, text);
    return wrong.empty() ? parse(text) : wrong;
}

std::string AirportXml::parse(std::string& text) {
    const auto section = findXmlSection(text, "parkpositions");
    if (!section || section->children > mostStands) {
        stands_.reset();
        return wordsOf(document_.load_buffer(text.data(), text.size()));
    }
    const std::vector<XmlSection> parts = partsOf(*section, scanThreadCount());
    OrderedTasks<ParsedStands> tasks(static_cast<unsigned>(parts.size()));
    for (const XmlSection& part : parts) {
        tasks.add([&text, &part] { return parseStands(text, part); });
    }
    std::string wrong = wordsOf(parseAroundSection(text, *section, document_));
    stands_.emplace().reserve(section->children);
    while (tasks.pending() > 0) {
        ParsedStands part = tasks.take();
        std::ranges::move(part.stands, std::back_inserter(*stands_));
        wrong = wrong.empty() ? part.wrong : wrong;
    }
    return wrong;
}

void AirportXml::takeStands(std::vector<ParkPos>& stands) {
    if (stands_) {
        appendStands(*stands_, stands);
    } else {
        readParkPositions(document_, stands, true);
    }
}

} // namespace kst
