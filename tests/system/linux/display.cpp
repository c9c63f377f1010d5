#include "system/linux/display.h"

#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>

#include <fmt/format.h>

namespace kst::test {

namespace {

using namespace std::chrono_literals;

constexpr int captionGrip = 12; ///< from the outer edge into the caption, and into its last button
constexpr int bytesOfPixel = 3;
constexpr const char* keyPause = "15"; ///< milliseconds between two keys

int numberOf(const std::string& text, const std::string& name) {
    int value = -1;
    if (const auto at = text.find("\n" + name); at != std::string::npos) {
        const char* first = text.data() + at + 1 + name.size();
        std::from_chars(first, text.data() + text.size(), value);
    }
    return value;
}

int distance(platform::Colour one, platform::Colour other) {
    return std::abs(one.red - other.red) + std::abs(one.green - other.green) +
           std::abs(one.blue - other.blue);
}

void append(std::vector<std::string>& words, std::vector<std::string> more) {
    words.insert(words.end(), more.begin(), more.end());
}

} // namespace

Picture::Picture(const std::string& pixmap, int left, int top, int dotsPerInch)
    : left_(left), top_(top), dotsPerInch_(dotsPerInch) {
    std::istringstream head(pixmap);
    std::string kind;
    int largest = 0;
    if (!(head >> kind >> width_ >> height_ >> largest) || kind != "P6") {
        return;
    }
    const auto begin = static_cast<std::size_t>(head.tellg()) + 1;
    const auto size = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * bytesOfPixel;
    if (pixmap.size() >= begin + size) {
        bytes_ = pixmap.substr(begin, size);
    }
}

platform::Colour Picture::seen(int x, int y) const {
    x += left_;
    y += top_;
    if (empty() || x < 0 || y < 0 || x >= width_ || y >= height_) {
        return {};
    }
    const auto place =
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)) *
        bytesOfPixel;
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(bytes_[place + index]); };
    return {byte(0), byte(1), byte(2)};
}

platform::Colour Picture::at(int x, int y) const {
    const auto middle = [&](int layoutPixel) {
        return (2 * layoutPixel + 1) * dotsPerInch_ / (2 * platform::plainDotsPerInch);
    };
    return seen(middle(x), middle(y));
}

int Picture::contrast(int x, int y, platform::Colour colour) const {
    const auto first = [&](int layoutPixel) {
        return layoutPixel * dotsPerInch_ / platform::plainDotsPerInch;
    };
    int most = 0;
    for (int row = first(y); row < first(y + 1); ++row) {
        for (int column = first(x); column < first(x + 1); ++column) {
            most = std::max(most, distance(seen(column, row), colour));
        }
    }
    return most;
}

int Picture::count(const platform::Rect& area, platform::Colour colour) const {
    constexpr int farthest = 90;
    int found = 0;
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            found += !empty() && distance(at(x, y), colour) < farthest ? 1 : 0;
        }
    }
    return found;
}

Hand::Hand(const SystemWorld& world, int dotsPerInch)
    : dotsPerInch_(dotsPerInch), folder_(world.folder()), onDisplay_(host::onDisplay()) {}

std::string Hand::run(const std::vector<std::string>& words) const {
    std::vector<std::string> all = onDisplay_;
    append(all, words);
    const auto output = folder_ / "display.txt";
    std::filesystem::remove(output);
    ChildProcess process(all, {}, folder_, output);
    process.wait(20s);
    return contentOf(output);
}

std::string Hand::xdotool(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {"/usr/bin/xdotool"};
    append(all, words);
    return run(all);
}

const Place& Hand::window() {
    if (place_.width <= 0) {
        const std::string text = xdotool({"search", "--sync", "--onlyvisible", "--name", "^Kestrane_P3D$",
                                          "getwindowgeometry", "--shell"});
        place_ = {numberOf(text, "X="), numberOf(text, "Y="), numberOf(text, "WIDTH="),
                  numberOf(text, "HEIGHT=")};
    }
    return place_;
}

int Hand::pixels(int layoutPixels) const {
    return layoutPixels * dotsPerInch_ / platform::plainDotsPerInch;
}

int Hand::frame() {
    return (window().width - pixels(layout::windowWidth)) / 2;
}

int Hand::caption() {
    return window().height - pixels(layout::windowHeight) - frame();
}

std::vector<std::string> Hand::moveTo(int controlId) {
    const platform::Rect area = layout::controlArea(layout::controls[layout::controlIndex(controlId)]);
    return {"mousemove", std::to_string(window().x + frame() + pixels((area.left + area.right) / 2)),
            std::to_string(window().y + caption() + pixels((area.top + area.bottom) / 2))};
}

/// Where no tool tip comes up: one would lie over the next control.
std::vector<std::string> Hand::atRest() {
    return {"mousemove", std::to_string(window().x + window().width / 2),
            std::to_string(window().y + captionGrip)};
}

void Hand::click(int controlId) {
    clickOften(controlId, 1);
}

void Hand::clickOften(int controlId, int times) {
    std::vector<std::string> words = moveTo(controlId);
    append(words, {"click", "--repeat", std::to_string(times), "--delay", "2", "1"});
    append(words, atRest());
    xdotool(words);
}

void Hand::pointAt(int controlId) {
    xdotool(moveTo(controlId));
}

void Hand::rest() {
    xdotool(atRest());
}

void Hand::press(const std::vector<std::string>& keys) {
    std::vector<std::string> words = {"key", "--delay", keyPause};
    append(words, keys);
    xdotool(words);
}

void Hand::enter(int controlId, const std::string& text) {
    std::vector<std::string> words = moveTo(controlId);
    append(words, {"click", "1", "key", "--delay", keyPause, "Home", "shift+End", "Delete"});
    if (!text.empty()) {
        append(words, {"type", "--delay", keyPause, "--args", "1", text});
    }
    append(words, {"key", "Return"});
    append(words, atRest());
    xdotool(words);
}

void Hand::paste(int controlId) {
    std::vector<std::string> words = moveTo(controlId);
    append(words, {"click", "1", "key", "--delay", keyPause, "Home", "shift+End", "ctrl+v", "Return"});
    append(words, atRest());
    xdotool(words);
}

void Hand::drag(int rightwards, int downwards) {
    const int x = window().x + window().width / 2;
    const int y = window().y + captionGrip;
    const auto move = [&](int parts) {
        return std::vector<std::string>{"mousemove", std::to_string(x + rightwards * parts / 2),
                                        std::to_string(y + downwards * parts / 2)};
    };
    std::vector<std::string> words = move(0);
    append(words, {"mousedown", "1"});
    xdotool(words);
    xdotool(move(1));
    words = move(2);
    append(words, {"mouseup", "1"});
    xdotool(words);
    forget();
}

void Hand::clickCloseButton() {
    xdotool({"mousemove", std::to_string(window().x + window().width - captionGrip),
             std::to_string(window().y + captionGrip), "click", "1"});
}

Picture Hand::look() {
    const Place& place = window();
    const std::string area = fmt::format("{}x{}+{}+{}", place.width, place.height, place.x, place.y);
    return {run({"/usr/bin/import", "-window", "root", "-crop", area, "+repage", "-depth", "8", "ppm:-"}),
            frame(), caption(), dotsPerInch_};
}

} // namespace kst::test
