#include "window/layout.h"

#include <algorithm>

namespace kst::layout {

int labelRight(const Label& label) {
    const int bottom = label.row + platform::textLineHeight;
    int right = windowWidth;
    const auto limit = [&](int x, int top, int lower) {
        if (x > label.x && top < bottom && lower > label.row) {
            right = std::min(right, x);
        }
    };
    limit(columnLineX, columnLineTop, columnLineBottom);
    for (const Control& control : controls) {
        const Rect area = controlArea(control);
        limit(area.left, area.top, area.bottom);
    }
    for (const Label& other : labels) {
        limit(other.x, other.row, other.row + platform::textLineHeight);
    }
    // Some neighbours stand close by design: one pixel between them is enough.
    return right - 1;
}

} // namespace kst::layout
