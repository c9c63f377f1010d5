#include "core/files.h"

#include "core/display.h"
#include "core/log.h"
#include "platform/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <fmt/format.h>
#include <utf8.h>

namespace kst {

namespace {

constexpr std::string_view utf16Failure = "conversion from error from utf16 to utf8: ";

/// A text that is no UTF-16; the message is for the screen as it stands.
class ConversionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Whole 16-bit units; half a unit at the end of a truncated file is dropped.
std::u16string units(std::string_view content, bool bigEndian) {
    std::u16string result(content.size() / 2, u'\0');
    for (std::size_t i = 0; i < result.size(); ++i) {
        const auto first = static_cast<unsigned char>(content[2 * i]);
        const auto second = static_cast<unsigned char>(content[2 * i + 1]);
        result[i] = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return result;
}

bool isFirstHalf(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

std::string textOfUtf16(std::u16string_view text, bool (*stopped)()) {
    constexpr char16_t byteOrderMark = 0xFEFF;
    constexpr std::size_t unitsAtATime = 64 * 1024;
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(1);
    }
    std::string converted;
    try {
        while (!text.empty() && !(stopped != nullptr && stopped())) {
            std::u16string_view part = text.substr(0, unitsAtATime);
            // The halves of a pair stay together.
            if (part.size() < text.size() && isFirstHalf(part.back())) {
                part.remove_suffix(1);
            }
            utf8::utf16to8(part.begin(), part.end(), std::back_inserter(converted));
            text.remove_prefix(part.size());
        }
    } catch (const utf8::exception& failure) {
        throw ConversionError(fmt::format("{}{}", utf16Failure, failure.what()));
    }
    return converted;
}

TextEncoding encodingOf(std::string_view content) {
    const std::string_view mark = content.substr(0, 2);
    if (mark == "\xFF\xFE") {
        return TextEncoding::Unicode;
    }
    if (mark == "\xFE\xFF") {
        return TextEncoding::Unicode_big_endian;
    }
    return mark == "\xEF\xBB" ? TextEncoding::UTF8_with_BOM : TextEncoding::NoMark;
}

/// Turns the bytes of a file into one text of UTF-8, without its mark.
void decodeText(std::string& content, TextEncoding encoding, bool (*stopped)() = nullptr) {
    switch (encoding) {
    case TextEncoding::Unicode:
    case TextEncoding::Unicode_big_endian:
        content = textOfUtf16(units(content, encoding == TextEncoding::Unicode_big_endian), stopped);
        break;
    case TextEncoding::UTF8_with_BOM: {
        // Three bytes of the first line are cut, whatever the third one is.
        constexpr std::size_t markLength = 3;
        content.erase(0, std::min(markLength, content.find('\n')));
        break;
    }
    case TextEncoding::NoMark:
    case TextEncoding::UTF8_without_BOM:
    case TextEncoding::none_found:
        break;
    }
}

void logNotOpened(const std::filesystem::path& path, int error) {
    logLine(fmt::format("cannot open file {} for character encoding, err: {}", platform::utf8FromPath(path),
                        error));
}

/// Whether the file could not be opened at all, rather than not be read.
bool couldNotOpen(const std::error_code& error) {
    return error != std::errc::is_a_directory && error != std::errc::invalid_argument &&
           error != std::errc::file_too_large && error != std::errc::io_error;
}

} // namespace

void lf_createFolders() {
    const std::filesystem::path all[] = {
        folders::output,
        folders::info,
        folders::errors,
        folders::airports,
        folders::learned,
        folders::learned / "stock",
        folders::learned / "simaddon",
        folders::learned / "thirdparty",
        folders::myOrbx,
        folders::myThirdparty,
        folders::input,
        folders::myRegcodes,
    };
    for (const std::filesystem::path& folder : all) {
        std::filesystem::create_directory(folder);
        platform::removeLeftovers(folder);
    }
}

TextEncoding detectEncoding(const std::filesystem::path& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        logNotOpened(path, errno);
        return TextEncoding::none_found;
    }
    std::array<char, 2> mark{};
    file.read(mark.data(), mark.size());
    return encodingOf(std::string_view(mark.data(), static_cast<std::size_t>(file.gcount())));
}

std::error_code readFile(const std::filesystem::path& path, std::string& content, std::size_t largest) {
    content.clear();
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return std::make_error_code(std::errc::no_such_file_or_directory);
    }
    if (error) {
        return error;
    }
    if (!std::filesystem::is_regular_file(status)) {
        // Anything else may never end, or never begin.
        return std::make_error_code(std::filesystem::is_directory(status) ? std::errc::is_a_directory
                                                                          : std::errc::invalid_argument);
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        return {errno != 0 ? errno : EIO, std::generic_category()};
    }
    // The size is a hint: a file may grow, or have none.
    std::error_code ignored;
    const std::uintmax_t expected = std::filesystem::file_size(path, ignored);
    content.reserve(ignored || expected > largest ? 0 : static_cast<std::size_t>(expected));
    std::array<char, 64 * 1024> block;
    while (file.read(block.data(), block.size()) || file.gcount() > 0) {
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
        if (content.size() > largest) {
            content.clear();
            return std::make_error_code(std::errc::file_too_large);
        }
    }
    return file.bad() ? std::make_error_code(std::errc::io_error) : std::error_code{};
}

std::vector<std::string> decodeTextLines(std::string_view content, TextEncoding encoding) {
    std::string text(content);
    const bool utf8WithMark = encoding == TextEncoding::UTF8_with_BOM && !text.empty();
    decodeText(text, encoding);
    std::vector<std::string> lines;
    std::string_view rest = text;
    while (!rest.empty()) {
        lines.emplace_back(takeTextLine(rest));
    }
    if (utf8WithMark && lines.empty()) {
        lines.emplace_back();
    }
    return lines;
}

std::string_view takeTextLine(std::string_view& rest) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

namespace {

/// Reads the bytes of a text file and runs `decode` on them; says on the screen or in the log what failed.
template <class Decode>
TextRead readText(const std::filesystem::path& path, Decode decode) {
    try {
        std::string content;
        if (const std::error_code error = readFile(path, content, largestTextFile)) {
            if (couldNotOpen(error)) {
                logNotOpened(path, error.value());
                return TextRead::NotOpened;
            }
            throw std::runtime_error(fmt::format("{}: {}", platform::utf8FromPath(path), error.message()));
        }
        const TextEncoding encoding = encodingOf(content);
        decode(std::move(content), encoding);
        return TextRead::Done;
    } catch (const ConversionError& failure) {
        showMessage(failure.what(), true);
    } catch (const std::exception& failure) {
        logLine(fmt::format("gf_readExtTextFileToStringVector {}", failure.what()));
    }
    return TextRead::Failed;
}

} // namespace

TextRead readTextFile(const std::filesystem::path& path, std::string& text, bool (*stopped)()) {
    text.clear();
    return readText(path, [&](std::string content, TextEncoding encoding) {
        decodeText(content, encoding, stopped);
        text = std::move(content);
    });
}

bool gf_readExtTextFileToStringVector(const std::filesystem::path& path, std::vector<std::string>& lines) {
    lines.clear();
    return readText(path, [&](const std::string& content, TextEncoding encoding) {
               lines = decodeTextLines(content, encoding);
           }) == TextRead::Done;
}

bool writeTextFile(std::string_view text, const std::filesystem::path& path, bool newline) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) {
        return false;
    }
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (newline) {
        file.put('\n');
    }
    file.flush();
    return true;
}

bool replaceFile(const std::filesystem::path& path, std::string_view content) {
    return !platform::replaceFileContent(path, content);
}

std::string xmlText(const pugi::xml_document& document, const char* indent) {
    std::ostringstream text;
    document.save(text, indent);
    return std::move(text).str();
}

bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path) {
    const std::string name = platform::utf8FromPath(path);
    if (!replaceFile(path, xmlText(document))) {
        logLine(fmt::format("could not save to \"{}\"", name));
        return false;
    }
    logLine(fmt::format("\"{}\" saved", name));
    return true;
}

std::size_t countFiles(const std::filesystem::path& folder) {
    std::size_t count = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    while (!error && entry != std::filesystem::directory_iterator{}) {
        std::error_code ignored;
        count += entry->is_regular_file(ignored) ? 1 : 0;
        entry.increment(error);
    }
    return count;
}

} // namespace kst
