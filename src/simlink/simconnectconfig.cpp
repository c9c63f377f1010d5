#include "simlink/simconnectconfig.h"

#include "core/files.h"
#include "platform/knownfolders.h"
#include "platform/paths.h"
#include "platform/registry.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kst {

namespace {

/// A configuration file is a few lines; nothing beyond this is read.
constexpr std::size_t mostFileBytes = 1 << 20;
constexpr std::string_view blanks = " \t\r\n\v\f";

using Entries = std::vector<std::pair<std::string_view, std::string_view>>;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view unquoted(std::string_view text) {
    if (text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'')) {
        return text.substr(1, text.size() - 2);
    }
    return text;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameText(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

/// The lines of the first section of that name, split at '='; nothing when there is no such section.
std::optional<Entries> sectionEntries(std::string_view text, std::string_view section) {
    std::optional<Entries> entries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == ';') {
            continue;
        }
        if (line.front() == '[') {
            if (entries) {
                break;
            }
            const std::size_t close = line.find(']');
            if (close != std::string_view::npos && sameText(trimmed(line.substr(1, close - 1)), section)) {
                entries.emplace();
            }
            continue;
        }
        if (entries) {
            const std::size_t equals = std::min(line.find('='), line.size());
            entries->emplace_back(trimmed(line.substr(0, equals)),
                                  unquoted(trimmed(line.substr(std::min(equals + 1, line.size())))));
        }
    }
    return entries;
}

std::optional<std::string_view> value(const Entries& entries, std::string_view key) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return sameText(e.first, key); });
    return found == entries.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::int32_t> number(std::optional<std::string_view> text) {
    std::int32_t result = 0;
    if (!text || std::from_chars(text->data(), text->data() + text->size(), result).ec != std::errc{}) {
        return std::nullopt;
    }
    return result;
}

std::optional<SimProtocol> protocolOf(std::string_view text) {
    if (sameText(text, "Auto") || sameText(text, "Pipe")) {
        return SimProtocol::Pipe;
    }
    if (sameText(text, "IPv4")) {
        return SimProtocol::IPv4;
    }
    if (sameText(text, "IPv6")) {
        return SimProtocol::IPv6;
    }
    return std::nullopt;
}

/// The file's text as plain bytes; UTF-16 and a byte order mark are undone. Empty when there is none.
std::string readConfigText(const std::filesystem::path& path) {
    std::ifstream file(platform::caseInsensitivePath(path), std::ios::binary);
    std::string text(mostFileBytes, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    } else if (text.starts_with("\xFF\xFE")) {
        try {
            std::string joined;
            for (const std::string& line : decodeTextLines(text, TextEncoding::Unicode)) {
                joined += line + '\n';
            }
            text = std::move(joined);
        } catch (const std::runtime_error&) {
            text.clear();
        }
    }
    return text;
}

} // namespace

std::string simConnectSection(std::uint32_t index) {
    return index == 0 ? "SimConnect" : "SimConnect." + std::to_string(index);
}

void applySimConnectText(std::string_view text, std::uint32_t index,
                         const std::function<std::string(SimProtocol)>& registryPort,
                         SimConnectConfig& config) {
    const std::optional<Entries> entries = sectionEntries(text, simConnectSection(index));
    if (!entries) {
        return;
    }
    if (const auto name = value(*entries, "Protocol")) {
        if (const auto protocol = protocolOf(*name)) {
            config.protocol = *protocol;
            if (*protocol != SimProtocol::Pipe && !config.port.empty()) {
                config.port = registryPort(*protocol);
            }
        }
    }
    if (const auto address = value(*entries, "Address")) {
        config.address = *address;
    }
    if (const auto port = value(*entries, "Port")) {
        config.port = *port;
    }
    if (const auto limit = number(value(*entries, "MaxReceiveSize")); limit && *limit > 0) {
        config.maxReceiveSize = std::max(config.maxReceiveSize, static_cast<std::uint32_t>(*limit));
    }
    if (const auto disable = number(value(*entries, "DisableNagle"))) {
        config.disableNagle = *disable != 0;
    }
}

bool hasSimConnectSection(std::string_view text, std::uint32_t index) {
    const std::optional<Entries> entries = sectionEntries(text, simConnectSection(index));
    return entries && !entries->empty();
}

std::vector<std::filesystem::path> simConnectConfigFiles() {
    constexpr std::string_view fileName = "SimConnect.cfg";
    std::vector<std::filesystem::path> files;
    for (const auto& folder : {platform::publicDocuments(), platform::userDocuments()}) {
        if (!folder.empty()) {
            files.push_back(folder / fileName);
        }
    }
    files.emplace_back(fileName);
    return files;
}

std::string registeredSimPort(SimProtocol protocol) {
    return platform::registryText(
               platform::RegistryHive::CurrentUser, "SOFTWARE\\Lockheed Martin\\Prepar3D v5",
               protocol == SimProtocol::IPv6 ? "SimConnect_Port_IPv6" : "SimConnect_Port_IPv4")
        .value_or("");
}

bool readSimConnectConfig(std::uint32_t index, SimConnectConfig& config) {
    if (index == noConfigIndex) {
        return true;
    }
    bool found = index == 0;
    for (const std::filesystem::path& path : simConnectConfigFiles()) {
        const std::string text = readConfigText(path);
        found = found || hasSimConnectSection(text, index);
        applySimConnectText(text, index, registeredSimPort, config);
    }
    return found;
}

} // namespace kst
