#include "options.h"

#include <charconv>
#include <fmt/format.h>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace kst::standin {

namespace {

template <typename T>
T readNumber(std::string_view name, std::string_view text, T low, T high) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value >= low && value <= high)) {
        throw std::runtime_error(
            fmt::format("{} takes a number from {} to {}, not \"{}\"", name, low, high, text));
    }
    return value;
}

std::vector<std::string_view> cut(std::string_view text, char at) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(at);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

double readSeconds(std::string_view name, std::string_view text) {
    constexpr double aWeek = 7.0 * 86400.0;
    return readNumber(name, text, 0.0, aWeek);
}

std::uint16_t readPort(std::string_view name, std::string_view text) {
    return readNumber<std::uint16_t>(name, text, 1, std::numeric_limits<std::uint16_t>::max());
}

void readLink(Options& options, std::string_view text) {
    if (text == "none") {
        options.service.withLink = false;
        return;
    }
    const auto parts = cut(text, ':');
    if (parts.size() != 2) {
        throw std::runtime_error(fmt::format("--tcp takes HOST:PORT or none, not \"{}\"", text));
    }
    options.service.linkHost = parts[0];
    options.service.linkPort = readPort("--tcp", parts[1]);
}

void readTracks(Options& options, std::string_view text) {
    for (const std::string_view part : cut(text, ',')) {
        const std::size_t at = part.rfind('@');
        RecordedFile file{.path = std::filesystem::path(part.substr(0, at))};
        if (at != std::string_view::npos) {
            file.startSeconds = readSeconds("--tracks FILE@SECONDS", part.substr(at + 1));
        }
        options.recorded.files.push_back(std::move(file));
    }
}

void readCentre(Options& options, std::string_view text) {
    const auto parts = cut(text, ',');
    if (parts.size() != 2) {
        throw std::runtime_error(fmt::format("--centre takes LAT,LON, not \"{}\"", text));
    }
    options.generator.centre = {readNumber("--centre", parts[0], -89.0, 89.0),
                                readNumber("--centre", parts[1], -180.0, 180.0)};
    options.centreGiven = true;
}

void readGarbage(Options& options, std::string_view text) {
    const auto parts = cut(text, ',');
    if (parts.size() != 2) {
        throw std::runtime_error(fmt::format("--garbage takes RATE,SECONDS, not \"{}\"", text));
    }
    options.service.garbagePerSecond = readNumber("--garbage", parts[0], 0, 1000000);
    options.service.garbageSeconds = readSeconds("--garbage", parts[1]);
}

struct OptionKind {
    std::string_view name;
    std::string_view value; ///< empty: a switch
    std::string_view help;
    std::function<void(Options&, std::string_view)> read;
};

const std::vector<OptionKind>& optionKinds() {
    static const std::vector<OptionKind> kinds = {
        {"--tcp", "HOST:PORT", "where the program waits for the link (127.0.0.1:10747); none: no link",
         readLink},
        {"--to", "ADDRESS", "where the datagrams go (127.0.0.1)",
         [](Options& o, std::string_view text) { o.service.sendTo = text; }},
        {"--traffic", "PORT", "UDP port of the traffic (49005)",
         [](Options& o, std::string_view text) { o.service.trafficPort = readPort("--traffic", text); }},
        {"--weather", "PORT", "UDP port of the weather (49004)",
         [](Options& o, std::string_view text) { o.service.weatherPort = readPort("--weather", text); }},
        {"--tracks", "FILE[@SECONDS][,...]", "recorded tracks, each from its beginning or from SECONDS on",
         readTracks},
        {"--start", "SECONDS",
         "leave out this much at the beginning of each file that names no start of its own",
         [](Options& o, std::string_view text) {
             for (RecordedFile& file : o.recorded.files) {
                 file.startSeconds =
                     file.startSeconds > 0.0 ? file.startSeconds : readSeconds("--start", text);
             }
         }},
        {"--speed", "FACTOR", "recorded seconds in one second (1)",
         [](Options& o, std::string_view text) {
             o.recorded.speed = readNumber("--speed", text, 0.01, 1000.0);
         }},
        {"--close-gaps", "SECONDS", "shorten a silence of all targets to this",
         [](Options& o, std::string_view text) {
             o.recorded.longestGapSeconds = readSeconds("--close-gaps", text);
         }},
        {"--loop", "", "begin anew at the end, after two minutes of silence",
         [](Options& o, std::string_view) { o.recorded.loop = true; }},
        {"--generator", "N", "N drawn flights instead of recorded ones",
         [](Options& o, std::string_view text) {
             o.generator.aircraft = readNumber("--generator", text, 1, 100000);
             o.generate = true;
         }},
        {"--centre", "LAT,LON", "centre of the drawn flights (the user's first position)", readCentre},
        {"--spread", "NM", "radius of the drawn flights (80)",
         [](Options& o, std::string_view text) {
             o.generator.radiusNm = readNumber("--spread", text, 30.0, 1000.0);
         }},
        {"--seed", "N", "of the drawn flights and the garbage (1)",
         [](Options& o, std::string_view text) {
             o.generator.seed = readNumber<std::uint32_t>("--seed", text, 0, 0xFFFFFFFFU);
             o.service.seed = o.generator.seed;
         }},
        {"--radius", "NM", "send only what is this near to the user (120), 0: all",
         [](Options& o, std::string_view text) {
             o.service.radiusNm = readNumber("--radius", text, 0.0, 20000.0);
         }},
        {"--qnh", "HPA", "pressure of the weather datagram (1013)",
         [](Options& o, std::string_view text) { o.service.qnhHpa = readNumber("--qnh", text, 0, 100000); }},
        {"--level", "N", "edition in the version reply (2, the professional one)",
         [](Options& o, std::string_view text) { o.service.level = readNumber("--level", text, 0, 100); }},
        {"--garbage", "RATE,SECONDS", "datagrams of garbage a second, for so long", readGarbage},
        {"--garbage-from", "SECONDS", "when the garbage begins (10)",
         [](Options& o, std::string_view text) {
             o.service.garbageFromSeconds = readSeconds("--garbage-from", text);
         }},
        {"--drop-link-after", "SECONDS", "drop the link after so much traffic",
         [](Options& o, std::string_view text) {
             o.service.dropLinkAfterSeconds = readSeconds("--drop-link-after", text);
         }},
        {"--restore-after", "SECONDS", "connect again so long after the drop (10)",
         [](Options& o, std::string_view text) {
             o.service.restoreAfterSeconds = readSeconds("--restore-after", text);
         }},
        {"--sent", "FILE", "record of every line sent",
         [](Options& o, std::string_view text) { o.sent = text; }},
        {"--seconds", "N", "end after so long (0: when asked to)",
         [](Options& o, std::string_view text) { o.seconds = readSeconds("--seconds", text); }},
        {"--help", "", "this list", [](Options& o, std::string_view) { o.help = true; }},
    };
    return kinds;
}

const OptionKind& kindOf(const std::string& name) {
    for (const OptionKind& kind : optionKinds()) {
        if (kind.name == name) {
            return kind;
        }
    }
    throw std::runtime_error(fmt::format("unknown option {}, see --help", name));
}

} // namespace

Options readOptions(const std::vector<std::string>& arguments) {
    Options options;
    // --start changes files that --tracks names, whichever stands first.
    std::vector<std::pair<const OptionKind*, std::string_view>> later;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const OptionKind& kind = kindOf(arguments[i]);
        std::string_view value;
        if (!kind.value.empty()) {
            if (++i == arguments.size()) {
                throw std::runtime_error(fmt::format("{} takes {}", kind.name, kind.value));
            }
            value = arguments[i];
        }
        if (kind.name == "--start") {
            later.emplace_back(&kind, value);
        } else {
            kind.read(options, value);
        }
    }
    for (const auto& [kind, value] : later) {
        kind->read(options, value);
    }
    if (!options.help && options.generate != options.recorded.files.empty()) {
        throw std::runtime_error("give either --tracks or --generator, see --help");
    }
    return options;
}

std::string optionsHelp() {
    std::string text =
        "Stands in for RealTraffic: sends recorded or drawn traffic to the traffic program.\n\n";
    for (const OptionKind& kind : optionKinds()) {
        text += fmt::format("  {:<40} {}\n", fmt::format("{} {}", kind.name, kind.value), kind.help);
    }
    return text;
}

} // namespace kst::standin
