#include "catalogue/referencereader.h"

#include "catalogue/reference.h"
#include "catalogue/scramble.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/xmlsection.h"
#include "install/download.h"
#include "model/liverydata.h"
#include "model/units.h"
#include "platform/paths.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

#include <fmt/format.h>

namespace kst {

namespace {

/// Registrations from this length on are not looked for in titles.
constexpr std::size_t tooLongForTitles = 5;

constexpr std::size_t longestModel = 4;
constexpr std::size_t largestReferenceDocument = std::size_t{512} * 1024 * 1024;

using Decode = std::string (*)(std::string_view);

std::string plain(std::string_view text) {
    return std::string(text);
}

/// Reads the comma lists of one attribute over all elements of a required section.
void readRequired(const pugi::xml_document& document, const char* section, const char* element,
                  const char* attribute, Decode decode, TextSet& table) {
    bool found = false;
    for (const pugi::xml_node node : document.child(section).children(element)) {
        for (const std::string_view item : splitCommaList(node.attribute(attribute).value())) {
            if (!item.empty()) {
                table.insert(decode(item));
                found = true;
            }
        }
    }
    if (!found) {
        throw UserErrorException(
            61, fmt::format("In an xml file section {} {} {} is empty ", section, element, attribute));
    }
}

void readSimilar(const pugi::xml_document& document, ReferenceTables& tables) {
    constexpr std::size_t expectedLists = 64;
    tables.similarLists.reserve(expectedLists);
    for (const pugi::xml_node node : document.child("similar_types").children("similar")) {
        std::vector<std::string> models;
        for (const std::string_view item : splitCommaList(node.attribute("types").value())) {
            models.push_back(gf_decodeModel(item));
        }
        std::sort(models.begin(), models.end());
        tables.similarLists.push_back(std::move(models));
    }
    tables.similarLists.shrink_to_fit();
}

void readPublishers(const pugi::xml_document& document, std::string_view source, ReferenceTables& tables) {
    try {
        std::set<std::string> texts;
        for (const pugi::xml_node node : document.child("publishers").children("pub")) {
            texts.insert(node.attribute("names").value());
        }
        tables.publisherNames.reserve(texts.size());
        for (const std::string& text : texts) {
            const auto items = splitCommaList(text);
            tables.publisherNames.emplace_back(items.begin(), items.end());
        }
    } catch (const std::exception& error) {
        throw SysErrorException(
            299, fmt::format("exception {} in reading publishers from \"{}\"", error.what(), source));
    }
}

double metresOf(std::string_view text) {
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || !(value > 0.0) || !std::isfinite(value)) {
        throw std::runtime_error(fmt::format("wing span \"{}\" is no length", text));
    }
    return value;
}

void readWingSpans(const pugi::xml_document& document, std::string_view source, ReferenceTables& tables) {
    try {
        for (const pugi::xml_node node : document.child("wingspans").children("wingspan")) {
            const std::string model = gf_decodeModel(node.attribute("type").value());
            if (model.empty() || !tables.validModels.contains(model)) {
                logLine(fmt::format("wingspan model {} is no valid model, skipped", model));
                continue;
            }
            const double halfSpan = metresOf(node.attribute("meters").value()) * 0.5 * nmPerMetre;
            if (tables.wingSpans.emplace(model, halfSpan).second) {
                tables.maxHalfWingSpan = std::max(tables.maxHalfWingSpan, halfSpan);
            }
        }
    } catch (const std::exception& error) {
        throw SysErrorException(
            288, fmt::format("exception {} in reading wingspans from \"{}\"", error.what(), source));
    }
}

void readFixes(const pugi::xml_document& document, ReferenceTables& tables) {
    for (const pugi::xml_node node : document.child("fixes").children("fx")) {
        const std::string wrong = node.attribute("wro").value();
        const std::string correct = node.attribute("cor").value();
        if (correct.empty() || !tables.validModels.contains(correct)) {
            logLine(fmt::format("wrong fix {}->{}, the latter is not a valid model", wrong, correct));
        } else if (!tables.modelFixes.emplace(wrong, correct).second) {
            logLine(fmt::format("wrong part of fix: \"{}\", already exists, skipped", wrong));
        }
    }
}

void readThirdParties(const pugi::xml_document& document, ReferenceTables& tables) {
    for (const pugi::xml_node node : document.child("thirdpartiesP3D").children("thirdpartieP3D")) {
        const auto items = splitCommaList(node.attribute("arpts").value());
        tables.thirdPartyAirports.emplace_back(node.attribute("pub").value(),
                                               std::vector<std::string>(items.begin(), items.end()));
    }
}

/// The attributes of a `db` element, found in one walk over them.
struct RegistrationText {
    std::string_view reg, airl, type, opr, cargo;

    explicit RegistrationText(const pugi::xml_node& node) {
        for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
            std::string_view* const text = textOf(attribute.name());
            if (text != nullptr && text->data() == nullptr) {
                *text = attribute.value();
            }
        }
    }

private:
    std::string_view* textOf(const char* name) {
        switch (name[0]) {
        case 'r':
            return std::strcmp(name, "reg") == 0 ? &reg : nullptr;
        case 'a':
            return std::strcmp(name, "airl") == 0 ? &airl : nullptr;
        case 't':
            return std::strcmp(name, "type") == 0 ? &type : nullptr;
        case 'o':
            return std::strcmp(name, "opr") == 0 ? &opr : nullptr;
        case 'c':
            return std::strcmp(name, "cargo") == 0 ? &cargo : nullptr;
        default:
            return nullptr;
        }
    }
};

/// Decodes one element; nothing when a code in it has an impossible length, which is logged.
std::optional<RegcodeTable::Entry> decodedRegistration(const pugi::xml_node& node) {
    const RegistrationText text(node);
    if (text.reg.size() > longestScrambledRegcode || text.type.size() == 1 ||
        text.type.size() > longestModel) {
        logLine(fmt::format("registration \"{}\" of model \"{}\" has a wrong length, skipped", text.reg,
                            text.type));
        return std::nullopt;
    }
    return RegcodeTable::Entry{.regcode = decodedRegcode(text.reg),
                               .record = {.airline = decodedAirline(text.airl),
                                          .model = decodedModel(text.type),
                                          .operatorCode = decodedAirline(text.opr),
                                          .cargo = textMeansTrue(text.cargo)}};
}

void addRegistration(const RegcodeTable::Entry& entry, ReferenceTables& tables) {
    const std::string_view regcode = entry.regcode;
    if (!tables.regcodeTable.insert(regcode, entry.record)) {
        logLine(fmt::format("regcode {} already exists", regcode));
    } else if (entry.record.airline == privateAirline && !regcode.empty() &&
               regcode.size() < tooLongForTitles) {
        tables.shortPrivateRegcodes.emplace_back(regcode);
    }
}

void readRegistrations(const pugi::xml_node& parent, ReferenceTables& tables) {
    std::vector<RegcodeTable::Entry> batch;
    for (const pugi::xml_node node : parent.children("db")) {
        if (const auto entry = decodedRegistration(node)) {
            tables.regcodeTable.prepare(entry->regcode);
            batch.push_back(*entry);
        }
    }
    for (const RegcodeTable::Entry& entry : batch) {
        addRegistration(entry, tables);
    }
}

void requireParsed(const pugi::xml_parse_result& result, std::string_view source) {
    if (!result) {
        throw UserErrorException(60,
                                 fmt::format("\"{}\" not read because of {}", source, result.description()));
    }
}

/// Everything but the registrations is small: it is parsed as one document, the registrations piece by piece
/// in their place.
void readInPieces(std::string& text, const XmlSection& section, std::string_view source,
                  ReferenceTables& tables) {
    // A hint only; a text that lies about its number of elements gets no memory for it.
    constexpr std::size_t mostExpected = 4'000'000;
    pugi::xml_document document;
    requireParsed(parseAroundSection(text, section, document), source);
    readReferenceDocument(document, source, tables);
    tables.regcodeTable.reserve(std::min(section.children, mostExpected));
    requireParsed(
        parseSection(text, section, [&](const pugi::xml_node& piece) { readRegistrations(piece, tables); }),
        source);
}

} // namespace

bool textMeansTrue(std::string_view text) {
    return !text.empty() && std::string_view("1tTyY").find(text.front()) != std::string_view::npos;
}

std::vector<std::string_view> splitTrimmed(std::string_view text, char divider) {
    constexpr std::string_view blanks = " \t\r\n";
    std::vector<std::string_view> items;
    while (true) {
        const std::size_t end = text.find(divider);
        std::string_view item = text.substr(0, end);
        const std::size_t begin = std::min(item.find_first_not_of(blanks), item.size());
        item.remove_prefix(begin);
        item = item.substr(0, item.find_last_not_of(blanks) + 1);
        items.push_back(item);
        if (end == std::string_view::npos) {
            return items;
        }
        text.remove_prefix(end + 1);
    }
}

void readReferenceDocument(const pugi::xml_document& document, std::string_view source,
                           ReferenceTables& tables) {
    // Only their presence counts: the cargo property of an aircraft comes from its registration and its
    // livery.
    TextSet cargoTypes;
    TextSet cargoOperators;
    readRequired(document, "aircrafts", "aircraft", "types", gf_decodeModel, tables.validModels);
    readRequired(document, "high_performance", "hpf", "types", gf_decodeModel, tables.highPerfModels);
    readRequired(document, "heavy", "hvy", "types", gf_decodeModel, tables.heavyModels);
    readRequired(document, "large", "lar", "types", gf_decodeModel, tables.largeModels);
    readRequired(document, "buzjet", "bzj", "types", gf_decodeModel, tables.buzjetModels);
    readRequired(document, "rotorcraft", "rot", "types", gf_decodeModel, tables.rotorcraftModels);
    readRequired(document, "cargo_types", "cargo_type", "types", gf_decodeModel, cargoTypes);
    readSimilar(document, tables);
    readRequired(document, "ICAO_airlines", "ICAO", "codes", gf_decodeAirline, tables.validAirlines);
    readRequired(document, "cargo_operators", "ICAO", "codes", gf_decodeAirline, cargoOperators);
    readPublishers(document, source, tables);
    readWingSpans(document, source, tables);
    computeCategorySpans(tables);
    readFixes(document, tables);
    readRequired(document, "simaddonsP3D", "simaddonP3D", "arpts", plain, tables.simaddonAirports);
    readThirdParties(document, tables);
    readRegistrations(document.child("dbase"), tables);
}

void readReferenceText(std::string& text, std::string_view source, ReferenceTables& tables) {
    if (const auto section = findXmlSection(text, "dbase")) {
        readInPieces(text, *section, source, tables);
        return;
    }
    pugi::xml_document document;
    requireParsed(document.load_buffer_inplace(text.data(), text.size()), source);
    readReferenceDocument(document, source, tables);
}

void readReferenceFile(const std::filesystem::path& file, ReferenceTables& tables) {
    const std::string name = platform::utf8FromPath(file);
    std::string text;
    if (const std::error_code error = readFile(file, text, largestReferenceDocument)) {
        throw UserErrorException(60, fmt::format("\"{}\" not read because of {}", name, error.message()));
    }
    readReferenceText(text, name, tables);
}

bool gf_readDbase() {
    const auto file = folders::input / "temp2.xml";
    if (!lf_fetchDatabase(file)) {
        throw SysErrorException(23, "data base could not be read from on-line?");
    }
    try {
        readReferenceFile(file, referenceTables());
    } catch (const pugi::xpath_exception& error) {
        logLine(fmt::format("gf_readDbase: {}", error.what()));
        return false;
    }
    std::error_code error;
    std::filesystem::remove(file, error);
    if (error) {
        throw std::filesystem::filesystem_error("remove", file, error);
    }
    return true;
}

} // namespace kst
