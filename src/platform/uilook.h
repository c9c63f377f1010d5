#pragma once

// How the window looks on every system: what its controls and its font share.

#include "platform/ui.h"

#include <array>
#include <string_view>

namespace kst::platform::look {

inline constexpr Colour focus{0, 60, 150};
inline constexpr Colour frame{40, 40, 40};
inline constexpr Colour checkBoxFill{255, 255, 255};
inline constexpr Colour pressedFill{215, 228, 242};
inline constexpr Colour mark{0, 0, 0};
inline constexpr Colour boxText{0, 0, 0};

// Of a control that takes no input.
inline constexpr Colour disabledFrame{125, 140, 155};
inline constexpr Colour disabledCheckBoxFill{190, 212, 234};
inline constexpr Colour disabledBoxFill{176, 204, 232};
inline constexpr Colour disabledBoxText{90, 105, 120};

/// Frame of a check box, layout pixels.
inline constexpr int plainFrame = 1;
inline constexpr int focusFrame = 2;

/// The corners of a check mark, in shares of the box from its upper left.
struct Share {
    double x;
    double y;
};
inline constexpr std::array<Share, 3> checkMark{{{0.23, 0.51}, {0.42, 0.70}, {0.76, 0.27}}};

// The desktop's own font in the largest size at which a line fits its height and the sample this width: the
// positions of the layout leave each text the room that it takes then. Layout pixels.
inline constexpr std::string_view fontSample = "abcdefghijklmnopqrstuvwxyz 0123456789";
inline constexpr int widestFontSample = 262;
inline constexpr int largestFontPixels = 13;
inline constexpr int smallestFontPixels = 9;

/// Width at which the sentence of a tool tip goes on in the next line, layout pixels.
inline constexpr int widestToolTip = 420;

} // namespace kst::platform::look
