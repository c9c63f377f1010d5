#include "userlink.h"

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>

namespace kst::standin {

namespace {

constexpr std::size_t longestCommand = 1024;
constexpr std::size_t positionFields = 7;
constexpr double perThousand = 1000.0;

bool readPosition(std::string_view fields, LinkCommand& command) {
    std::array<double, positionFields> values{};
    for (std::size_t i = 0; i < positionFields; ++i) {
        const std::size_t end = fields.find(';');
        const std::string_view field = fields.substr(0, end);
        const auto [stop, error] = std::from_chars(field.data(), field.data() + field.size(), values[i]);
        const bool last = end == std::string_view::npos;
        if (error != std::errc() || stop != field.data() + field.size() ||
            last != (i + 1 == positionFields)) {
            return false;
        }
        fields.remove_prefix(last ? fields.size() : end + 1);
    }
    command.headingDeg = values[2] * degPerRad;
    command.altFt = values[3] / perThousand;
    command.gsKt = values[4] / perThousand;
    command.position = {values[5] * degPerRad, values[6] * degPerRad};
    return true;
}

LinkCommand readCommand(std::string_view text) {
    using Kind = LinkCommand::Kind;
    LinkCommand command;
    command.text = text;
    if (text == "Qs999=version") {
        command.kind = Kind::AskVersion;
    } else if (text == "exit") {
        command.kind = Kind::Exit;
    } else if (text.starts_with("Qs121=")) {
        command.kind = readPosition(text.substr(6), command) ? Kind::UserPosition : Kind::Unreadable;
    } else if (text.starts_with("Qs123=")) {
        const char* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + 6, end, command.milliseconds);
        command.kind = error == std::errc() && stop == end ? Kind::SimulatorTime : Kind::Unreadable;
    }
    return command;
}

} // namespace

std::vector<LinkCommand> LinkCommandReader::take(std::string_view bytes) {
    rest_ += bytes;
    std::vector<LinkCommand> commands;
    std::size_t end = 0;
    while ((end = rest_.find("\r\n")) != std::string::npos) {
        commands.push_back(readCommand(std::string_view(rest_).substr(0, end)));
        rest_.erase(0, end + 2);
    }
    if (rest_.size() > longestCommand) {
        commands.emplace_back().text.swap(rest_);
    }
    return commands;
}

std::string versionReply(std::string_view version, int level) {
    const nlohmann::json reply = {{"version", version}, {"level", level}};
    return reply.dump();
}

} // namespace kst::standin
