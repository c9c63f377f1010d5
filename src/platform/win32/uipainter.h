#pragma once

// Drawing with GDI behind the platform's painter, and the scale of the layout on a display.

#include "platform/ui.h"

#include <memory>
#include <type_traits>

#include <windows.h>

namespace kst::platform {

/// From layout pixels to those of a display and back.
class Scale {
public:
    explicit Scale(int dotsPerInch = plainDotsPerInch) : dotsPerInch_(dotsPerInch) {}
    int device(int layoutPixels) const { return MulDiv(layoutPixels, dotsPerInch_, plainDotsPerInch); }
    RECT device(const Rect& area) const;
    /// The smallest area of the layout that covers these pixels.
    Rect layout(const RECT& area) const;
    /// A length, rounded up.
    int layout(int devicePixels) const;
    int dotsPerInch() const { return dotsPerInch_; }

private:
    int dotsPerInch_;
};

struct FontDeleter {
    void operator()(HFONT font) const { DeleteObject(font); }
};
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDeleter>;

/// The desktop's own family in the largest size at which a line fits `lineHeight` layout pixels and the texts
/// of the fixed layout their room.
Font makeFont(const Scale& scale, int lineHeight);

/// Draws on a device context whose origin is that of the client area.
class GdiPainter final : public Painter {
public:
    /// Takes the font into the context for as long as it lives.
    GdiPainter(HDC context, const Scale& scale, HFONT font);
    ~GdiPainter() override;
    GdiPainter(const GdiPainter&) = delete;
    GdiPainter& operator=(const GdiPainter&) = delete;

    void fill(const Rect& area, Colour colour) override;
    void line(int x1, int y1, int x2, int y2, Colour colour) override;
    void text(int x, int y, std::string_view text, Colour colour) override;
    int textWidth(std::string_view text) override;

private:
    HDC context_;
    Scale scale_;
    HGDIOBJ fontBefore_;
    int textInset_; ///< pixels of the display above a text in its line
};

constexpr COLORREF toGdi(Colour colour) {
    return RGB(colour.red, colour.green, colour.blue);
}

void fillArea(HDC context, const RECT& area, COLORREF colour);
/// A frame inside the area.
void drawFrame(HDC context, const RECT& area, int horizontalThickness, int verticalThickness,
               COLORREF colour);

} // namespace kst::platform
