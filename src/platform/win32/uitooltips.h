#pragma once

// One sentence beside each control, for the eye and for screen readers.

#include "platform/ui.h"
#include "platform/win32/uipainter.h"

#include <windows.h>

struct IAccPropServices;

namespace kst::platform {

/// The tool tips of a window. A control that takes no input shows its tip as well.
class ToolTips {
public:
    explicit ToolTips(HWND window);
    ~ToolTips();
    ToolTips(const ToolTips&) = delete;
    ToolTips& operator=(const ToolTips&) = delete;
    void add(HWND control, int controlId, const RECT& area, std::string_view text);
    /// The control lies elsewhere now.
    void move(int controlId, const RECT& area);
    void rescale(const Scale& scale, HFONT font);

private:
    HWND window_;
    HWND tips_; ///< owned by no window: not every system lets one with topmost companions be topmost itself
};

/// Tells screen readers what the system cannot know of a control. Where the system has no such service, they
/// say what they find by themselves.
class SpokenNames {
public:
    SpokenNames();
    ~SpokenNames();
    SpokenNames(const SpokenNames&) = delete;
    SpokenNames& operator=(const SpokenNames&) = delete;
    void set(HWND control, std::string_view name, std::string_view description);
    /// To be called before the control goes.
    void clear(HWND control);

private:
    IAccPropServices* service_ = nullptr;
};

} // namespace kst::platform
