#include "platform/registry.h"

#include "platform/knownfolders.h"

#include <algorithm>
#include <fstream>
#include <functional>

#include <utf8.h>

// The registry is the text file registry.ini in the roaming folder, in UTF-8. A line in brackets is a key
// with its hive, written with backslashes; the lines Name=text after it are its values. As in the registry,
// the case of names does not matter, and a key exists as well when only a key below it is written. Lines of
// any other form, and lines that begin with a semicolon, say nothing.

namespace kst::platform {

namespace {

/// Far more than anyone writes by hand.
constexpr std::size_t largestFile = 1024 * 1024;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool sameName(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view withoutBackslashAtEnd(std::string_view key) {
    while (key.ends_with('\\')) {
        key.remove_suffix(1);
    }
    return key;
}

/// The file's content; empty when it cannot be read or is too large.
std::string fileContent() {
    const std::filesystem::path path = roamingAppData() / "registry.ini";
    std::error_code error;
    const std::uintmax_t size =
        std::filesystem::is_regular_file(path, error) ? std::filesystem::file_size(path, error) : 0;
    if (error || size == 0 || size > largestFile) {
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    std::string content(static_cast<std::size_t>(size), '\0');
    file.read(content.data(), static_cast<std::streamsize>(size));
    content.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return content;
}

std::string fullKey(RegistryHive hive, std::string_view key) {
    std::string full = hive == RegistryHive::LocalMachine ? "HKEY_LOCAL_MACHINE\\" : "HKEY_CURRENT_USER\\";
    return full.append(withoutBackslashAtEnd(key));
}

/// Calls `visit` with the key and the text of each line, the text empty for the line of the key itself, until
/// it returns true. Returns whether it did.
bool anyLine(const std::function<bool(std::string_view key, std::string_view line)>& visit) {
    const std::string content = fileContent();
    std::string_view rest = content;
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (rest.starts_with(byteOrderMark)) {
        rest.remove_prefix(byteOrderMark.size());
    }
    std::string_view key;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string_view line = trimmed(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.empty() || line.starts_with(';')) {
            continue;
        }
        const bool isKey = line.starts_with('[') && line.ends_with(']');
        if (isKey) {
            key = withoutBackslashAtEnd(trimmed(line.substr(1, line.size() - 2)));
        }
        if (visit(key, isKey ? std::string_view{} : line)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool registryKeyExists(RegistryHive hive, std::string_view key) {
    const std::string wanted = fullKey(hive, key);
    return anyLine([&](std::string_view found, std::string_view) {
        return sameName(found.substr(0, wanted.size()), wanted) &&
               (found.size() == wanted.size() || found[wanted.size()] == '\\');
    });
}

std::optional<std::string> registryText(RegistryHive hive, std::string_view key, std::string_view name) {
    const std::string wanted = fullKey(hive, key);
    std::optional<std::string> value;
    anyLine([&](std::string_view found, std::string_view line) {
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || !sameName(found, wanted) ||
            !sameName(trimmed(line.substr(0, equals)), name)) {
            return false;
        }
        const std::string_view text = trimmed(line.substr(equals + 1));
        if (utf8::is_valid(text.begin(), text.end())) {
            value = text;
        }
        return true;
    });
    return value;
}

} // namespace kst::platform
