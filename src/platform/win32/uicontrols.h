#pragma once

// The controls of the window as the system's own BUTTON and EDIT. Each reports to its window and never
// changes by itself what the program decides.

#include "platform/ui.h"
#include "platform/win32/uipainter.h"

#include <windows.h>

#include <commctrl.h>

namespace kst::platform {

/// The window as its controls see it.
class ControlHost {
public:
    virtual ~ControlHost() = default;
    virtual void enterPressed(int controlId) = 0;
    /// Gives the keyboard to the next control, or to the one before.
    virtual void moveFocus(HWND from, bool backwards) = 0;
    virtual const Scale& scale() const = 0;
};

/// A control below `parent`, which must be told of `WM_NOTIFY` and `WM_COMMAND`. Its window text is the
/// caption, for a check box the name that a screen reader says. Null when the system refuses.
HWND createControl(HWND parent, const ControlDescription& control, ControlHost& host);

/// Answer to `WM_NOTIFY` with `NM_CUSTOMDRAW`: draws a check box of any size with its mark and its focus.
LRESULT drawCheckBox(const NMCUSTOMDRAW& stage, const Scale& scale);

/// Text of a text box in UTF-16, as the window keeps it.
std::wstring windowText(HWND control);

/// What fits into `limit` UTF-16 code units, no surrogate pair torn apart. No limit is 0.
std::wstring_view withinLimit(std::wstring_view text, int limit);

} // namespace kst::platform
