#pragma once

// Draws the window from a copy of what it shows. Nothing here reads the program's state while drawing, so a
// paint is a pure function of its view.

#include "core/display.h"
#include "platform/ui.h"
#include "window/layout.h"

#include <array>

namespace kst {

/// What the painted labels say about a control.
struct ControlFacts {
    bool on = false;       ///< of a check box: its parameter
    bool enabled = false;  ///< the control can be used
    bool atDefault = true; ///< of a number: the value is the default
};

/// All that a paint shows.
struct WindowView {
    StatusValues status;
    MessageLine line;
    bool parkingRunning = false;
    std::array<ControlFacts, layout::controls.size()> controls{};

    const ControlFacts& control(int id) const { return controls[layout::controlIndex(id)]; }
    ControlFacts& control(int id) { return controls[layout::controlIndex(id)]; }
};

/// The view of this moment. Any thread.
WindowView currentView();

/// Draws every band that touches `dirty`. A text that cannot be drawn is logged and skipped; one that is too
/// long for its place ends in an ellipsis.
void paintWindow(platform::Painter& painter, const WindowView& view, const platform::Rect& dirty);

} // namespace kst
