#include "window/fieldtext.h"

#include "core/log.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <vector>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::string_view ellipsis = "\u2026";
/// More than any place of the window can hold: what lies beyond is not even looked at.
constexpr std::size_t longestPaintedText = 1024;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The text in one line and of bounded length, cut between characters.
std::string oneLine(std::string_view text) {
    std::size_t length = std::min(text.size(), longestPaintedText);
    while (length < text.size() && length > 0 && continuesCharacter(text[length])) {
        --length;
    }
    std::string line(text.substr(0, length));
    std::replace_if(
        line.begin(), line.end(),
        [](char byte) { return static_cast<unsigned char>(byte) < 0x20U || byte == '\x7f'; }, ' ');
    return line;
}

} // namespace

std::string fittedText(platform::Painter& painter, std::string_view text, int width) {
    std::string line = oneLine(text);
    if (line.size() == text.size() && painter.textWidth(line) <= width) {
        return line;
    }
    std::vector<std::size_t> ends; // where each character begins is where the one before it ends
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (!continuesCharacter(line[at])) {
            ends.push_back(at);
        }
    }
    const auto shortened = [&](std::size_t end) { return line.substr(0, end).append(ellipsis); };
    const auto tooLong = std::partition_point(ends.begin(), ends.end(), [&](std::size_t end) {
        return painter.textWidth(shortened(end)) <= width;
    });
    return tooLong == ends.begin() ? std::string() : shortened(*std::prev(tooLong));
}

int drawField(platform::Painter& painter, const layout::Field& field, std::string_view text,
              platform::Colour colour, std::string_view tail) {
    try {
        const int room = field.right - field.x;
        const std::string end = fittedText(painter, tail, room / 2);
        const std::string shown = fittedText(painter, text, room - painter.textWidth(end)) + end;
        painter.text(field.x, field.y, shown, colour);
        return field.x + painter.textWidth(shown);
    } catch (const std::system_error& error) {
        logLine(fmt::format("{} conversion exception {}, error code: {}", oneLine(text), error.what(),
                            error.code().value()));
    } catch (const std::exception& error) {
        logLine(fmt::format("{} {}", oneLine(text), error.what()));
    }
    return field.x;
}

void drawOnLight(platform::Painter& painter, const layout::Field& field, std::string_view text,
                 platform::Colour colour, platform::Colour shadow) {
    if (colour == layout::yellow) {
        using layout::shadowOffset;
        drawField(painter, {field.x + shadowOffset, field.y + shadowOffset, field.right + shadowOffset}, text,
                  shadow);
    }
    drawField(painter, field, text, colour);
}

} // namespace kst
