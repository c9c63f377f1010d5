#pragma once

// The display on which the program's window appears, its mouse and its keyboard, as a person has them.

#include "core/display.h"
#include "platform/ui.h"
#include "window/layout.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kst::test {

class SystemWorld;

/// Where the window stands on the display, frame included.
struct Place {
    int x = -1;
    int y = -1;
    int width = 0;
    int height = 0;
};

/// What the window showed at one moment, in layout pixels.
class Picture {
public:
    Picture() = default;
    /// From a portable pixmap (P6) of a display of this fineness; the client area begins at its pixel
    /// (left, top). Empty when it is none.
    Picture(const std::string& pixmap, int left, int top, int dotsPerInch = platform::plainDotsPerInch);
    bool empty() const { return bytes_.empty(); }
    /// The colour in the middle of a layout pixel.
    platform::Colour at(int x, int y) const;
    /// How far the colours of a layout pixel are from this one, at the most.
    int contrast(int x, int y, platform::Colour colour) const;
    /// How many pixels of the area are close to the colour: letters have soft edges.
    int count(const platform::Rect& area, platform::Colour colour) const;
    friend bool operator==(const Picture&, const Picture&) = default;

private:
    /// The colour of a pixel of the display.
    platform::Colour seen(int x, int y) const;

    std::string bytes_;
    int width_ = 0;
    int height_ = 0;
    int left_ = 0;
    int top_ = 0;
    int dotsPerInch_ = platform::plainDotsPerInch;
};

/// One person at the display. The window is looked for once it is needed, and again after `forget`.
class Hand {
public:
    explicit Hand(const SystemWorld& world, int dotsPerInch = platform::plainDotsPerInch);

    /// The window with the program's name as its title, once it is shown.
    const Place& window();
    void forget() { place_ = {}; }

    void click(int controlId);
    void clickOften(int controlId, int times);
    void pointAt(int controlId);
    /// Takes the mouse to where no tool tip comes up.
    void rest();
    void press(const std::vector<std::string>& keys);
    /// Replaces what is in the box and presses Enter.
    void enter(int controlId, const std::string& text);
    /// Clicks into the box and replaces what is in it by the clipboard's text; then Enter.
    void paste(int controlId);
    /// Takes the window by its caption.
    void drag(int rightwards, int downwards);
    void clickCloseButton();
    Picture look();

private:
    std::string run(const std::vector<std::string>& words) const;
    std::string xdotool(const std::vector<std::string>& words) const;
    std::vector<std::string> moveTo(int controlId);
    std::vector<std::string> atRest();
    int frame();
    int caption();
    int pixels(int layoutPixels) const;

    int dotsPerInch_;
    std::filesystem::path folder_;
    std::vector<std::string> onDisplay_;
    Place place_;
};

} // namespace kst::test
