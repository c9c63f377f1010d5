#pragma once

// Drawing with Qt behind the platform's painter.

#include "platform/ui.h"

#include <QColor>
#include <QFont>
#include <QFontMetricsF>

class QPainter;

namespace kst::platform {

inline QColor toQt(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

/// The window's font: the desktop's own family in the largest size at which a line fits its height and the
/// texts of the fixed layout their room.
const QFont& windowFont();

/// Draws on a QPainter whose coordinates are layout pixels.
class QtPainter final : public Painter {
public:
    explicit QtPainter(QPainter& painter);
    void fill(const Rect& area, Colour colour) override;
    void line(int x1, int y1, int x2, int y2, Colour colour) override;
    void text(int x, int y, std::string_view text, Colour colour) override;
    int textWidth(std::string_view text) override;

private:
    QPainter& painter_;
    QFontMetricsF metrics_;
};

} // namespace kst::platform
