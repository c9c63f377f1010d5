#include "core/files.h"

#include "core/display.h"
#include "core/log.h"
#include "platform/paths.h"

#include <array>
#include <cerrno>
#include <fstream>
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

void addLine(std::vector<std::string>& lines, std::string_view line) {
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    lines.emplace_back(line);
}

std::vector<std::string> splitBytes(std::string_view content) {
    std::vector<std::string> lines;
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        addLine(lines, content.substr(0, end));
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    }
    return lines;
}

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

std::vector<std::string> splitUtf16(std::u16string_view text) {
    constexpr char16_t byteOrderMark = 0xFEFF;
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(1);
    }
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = text.find(u'\n');
        try {
            addLine(lines, utf8::utf16to8(text.substr(0, end)));
        } catch (const utf8::exception& failure) {
            throw ConversionError(fmt::format("{}{}", utf16Failure, failure.what()));
        }
        text.remove_prefix(end == std::u16string_view::npos ? text.size() : end + 1);
    }
    return lines;
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
        logLine(fmt::format("cannot open file {} for character encoding, err: {}",
                            platform::utf8FromPath(path), errno));
        return TextEncoding::none_found;
    }
    std::array<char, 2> mark{};
    file.read(mark.data(), mark.size());
    const std::string_view found(mark.data(), static_cast<std::size_t>(file.gcount()));
    if (found == "\xFF\xFE") {
        return TextEncoding::Unicode;
    }
    if (found == "\xFE\xFF") {
        return TextEncoding::Unicode_big_endian;
    }
    return found == "\xEF\xBB" ? TextEncoding::UTF8_with_BOM : TextEncoding::NoMark;
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
    switch (encoding) {
    case TextEncoding::Unicode:
    case TextEncoding::Unicode_big_endian:
        return splitUtf16(units(content, encoding == TextEncoding::Unicode_big_endian));
    case TextEncoding::UTF8_with_BOM: {
        constexpr std::size_t markLength = 3;
        std::vector<std::string> lines = splitBytes(content);
        if (!lines.empty()) {
            lines.front().erase(0, markLength);
        }
        return lines;
    }
    case TextEncoding::NoMark:
    case TextEncoding::UTF8_without_BOM:
    case TextEncoding::none_found:
        break;
    }
    return splitBytes(content);
}

bool gf_readExtTextFileToStringVector(const std::filesystem::path& path, std::vector<std::string>& lines) {
    lines.clear();
    try {
        const TextEncoding encoding = detectEncoding(path);
        if (encoding == TextEncoding::none_found) {
            return false;
        }
        std::string content;
        if (const std::error_code error = readFile(path, content, largestTextFile)) {
            throw std::runtime_error(fmt::format("{}: {}", platform::utf8FromPath(path), error.message()));
        }
        lines = decodeTextLines(content, encoding);
        return true;
    } catch (const ConversionError& failure) {
        showMessage(failure.what(), true);
    } catch (const std::exception& failure) {
        logLine(fmt::format("gf_readExtTextFileToStringVector {}", failure.what()));
    }
    return false;
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

std::string xmlText(const pugi::xml_document& document) {
    std::ostringstream text;
    document.save(text, "  ");
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
