#pragma once

// One window of fixed size with real controls on a painted background. The interface says what is wanted, not
// how a system does it. All of it is called on the user interface thread, except where told.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kst::platform {

struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

/// What a paint may use. Coordinates are those of the fixed layout; the window scales them to the display.
class Painter {
public:
    virtual ~Painter() = default;
    virtual void fill(const Rect& area, Colour colour) = 0;
    virtual void line(int x1, int y1, int x2, int y2, Colour colour) = 0;
    /// Text (UTF-8) with its top left corner at (x, y), no background of its own.
    virtual void text(int x, int y, std::string_view text, Colour colour) = 0;
    /// Width of the text in layout pixels, in the font in use.
    virtual int textWidth(std::string_view text) = 0;
};

enum class ControlKind { CheckBox, TextBox, PushButton };

/// One control: everything that is fixed about it.
struct ControlDescription {
    int id = 0;
    ControlKind kind = ControlKind::CheckBox;
    Rect area;                  ///< layout pixels
    std::string accessibleName; ///< what a screen reader says
    std::string toolTip;        ///< one sentence: what the control does
    std::string caption;        ///< of a push button
    bool enabled = false;       ///< at creation
};

/// What the window tells its owner. Called on the user interface thread.
class WindowEvents {
public:
    virtual ~WindowEvents() = default;
    /// Draw everything that touches `dirty`.
    virtual void paint(Painter& painter, const Rect& dirty) = 0;
    /// A check box or push button was clicked. The check mark has not changed: the owner sets it.
    virtual void clicked(int controlId) = 0;
    /// Enter was pressed in a text box.
    virtual void entered(int controlId) = 0;
    /// The close button was clicked. The window stays until `quit`.
    virtual void closeRequested() = 0;
    /// A number that was posted with `post`.
    virtual void posted(int message) = 0;
};

/// The window. Created hidden; controls are added before it is shown.
class Window {
public:
    virtual ~Window() = default;
    virtual void addControl(const ControlDescription& control) = 0;
    virtual void show() = 0;
    virtual void setChecked(int controlId, bool checked) = 0;
    virtual void setText(int controlId, std::string_view text) = 0;
    virtual std::string text(int controlId) const = 0;
    virtual void setEnabled(int controlId, bool enabled) = 0;
    virtual void setTopMost(bool topMost) = 0;
    /// Screen position of the outer frame, unscaled screen pixels.
    virtual int x() const = 0;
    virtual int y() const = 0;

    /// Any thread: ask for a paint of the area. Never blocks, never paints at once.
    virtual void invalidate(const Rect& area) = 0;
    /// Any thread: has `WindowEvents::posted` called with this number later.
    virtual void post(int message) = 0;
};

/// Creates the window with its client area of `width` x `height` layout pixels at the screen position (x, y).
/// `title` is UTF-8, `events` outlives the window. Null when the system refuses.
std::unique_ptr<Window> createWindow(std::string_view title, int x, int y, int width, int height,
                                     WindowEvents& events);

/// Runs the message loop until `quitMessageLoop`; returns the value given to it.
int runMessageLoop();
/// Ends the message loop. User interface thread.
void quitMessageLoop(int result);

/// A painter that draws nothing but measures with the window's font, for tests of the layout.
std::unique_ptr<Painter> createMeasuringPainter();

} // namespace kst::platform
