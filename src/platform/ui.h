#pragma once

// One window of fixed size with real controls on a painted background. The interface says what is wanted, not
// how a system does it. All of it is called on the user interface thread, except where told. Layout pixels
// are those of a display of 96 dots per inch; on a finer one the window is scaled as a whole.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

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

/// Height of a line of text in layout pixels: every implementation takes a font that fits it.
inline constexpr int textLineHeight = 16;

/// Background of the text boxes.
inline constexpr Colour textBoxColour{153, 204, 255};

/// A text that is not UTF-8 was to be drawn or measured. `code()` holds `std::errc::illegal_byte_sequence`.
class TextConversionError : public std::system_error {
public:
    TextConversionError() : std::system_error(std::make_error_code(std::errc::illegal_byte_sequence)) {}
};

/// What a paint may use. Coordinates are those of the fixed layout; the window scales them to the display.
class Painter {
public:
    virtual ~Painter() = default;
    virtual void fill(const Rect& area, Colour colour) = 0;
    /// A horizontal or vertical line, one layout pixel thick, without its last point.
    virtual void line(int x1, int y1, int x2, int y2, Colour colour) = 0;
    /// One line of text (UTF-8), `textLineHeight` high, with its top left corner at (x, y) and no background
    /// of its own. Throws TextConversionError when it is not UTF-8.
    virtual void text(int x, int y, std::string_view text, Colour colour) = 0;
    /// Width of the text in layout pixels, in the font in use. Throws as `text` does.
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
    int textLimit = 0;          ///< of a text box: UTF-16 code units that it takes
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
    /// Enter was pressed in a text box. The key goes no further.
    virtual void entered(int controlId) = 0;
    /// The close button was clicked, or `requestClose` was called. The window stays.
    virtual void closeRequested() = 0;
    /// A number that was posted with `post`.
    virtual void posted(int message) = 0;
};

/// The window. Created hidden; controls are added before it is shown. The keyboard goes through the controls
/// in the order in which they were added. Calls that name a control which was not added do nothing.
class Window {
public:
    virtual ~Window() = default;
    virtual void addControl(const ControlDescription& control) = 0;
    virtual void show() = 0;
    virtual void setChecked(int controlId, bool checked) = 0;
    /// Text of a text box, UTF-8; what is not UTF-8 is shown as replacement characters.
    virtual void setText(int controlId, std::string_view text) = 0;
    virtual std::string text(int controlId) const = 0;
    /// A control that is disabled while it has the keyboard gets it back with its enabling: no other control
    /// is handed keys that were not meant for it.
    virtual void setEnabled(int controlId, bool enabled) = 0;
    /// Keeps the window above the others, neither moved nor resized.
    virtual void setTopMost(bool topMost) = 0;
    /// Position of the outer frame in the system's desktop coordinates, as given to `createWindow`.
    virtual int x() const = 0;
    virtual int y() const = 0;

    /// Any thread: ask for a paint of the area. Never waits for the user interface, never paints at once.
    virtual void invalidate(const Rect& area) = 0;
    /// Any thread: has `WindowEvents::posted` called with this number later, in the order of the calls.
    virtual void post(int message) = 0;
};

/// The window system's toolkit. One for the whole process, made before anything below is called.
class Toolkit {
public:
    virtual ~Toolkit() = default;
};

/// Starts the toolkit on the calling thread, which becomes the user interface thread.
std::unique_ptr<Toolkit> startToolkit();

/// Creates the window with its client area of `width` x `height` layout pixels at the position (x, y) of the
/// desktop; a place that no display shows any more gives way to one that is visible. `title` is UTF-8,
/// `events` outlives the window. Null when the system refuses.
std::unique_ptr<Window> createWindow(std::string_view title, int x, int y, int width, int height,
                                     WindowEvents& events);

/// Runs the message loop until `quitMessageLoop`; returns the value given to it.
int runMessageLoop();
/// Ends the message loop. User interface thread.
void quitMessageLoop(int result);

/// Has `WindowEvents::closeRequested` called later, as by the close button. Any thread; also from a signal
/// handler. Asked before there is a window, the first window gets it.
void requestClose() noexcept;

/// Dots per inch of a display on which a layout pixel is one pixel.
inline constexpr int plainDotsPerInch = 96;

/// A painter that draws nothing but measures with the window's font as it is on a display of this fineness,
/// for tests of the layout.
std::unique_ptr<Painter> createMeasuringPainter(int dotsPerInch = plainDotsPerInch);

} // namespace kst::platform
