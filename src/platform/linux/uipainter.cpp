#include "platform/linux/uipainter.h"

#include "platform/uilook.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QStringDecoder>

namespace kst::platform {

namespace {

QString toQt(std::string_view text) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString result = decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    if (decoder.hasError()) {
        throw TextConversionError();
    }
    return result;
}

QFont chooseFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setBold(false);
    font.setItalic(false);
    const QString sample = toQt(look::fontSample);
    for (int pixels = look::largestFontPixels; pixels >= look::smallestFontPixels; --pixels) {
        font.setPixelSize(pixels);
        const QFontMetricsF metrics(font);
        if (metrics.height() <= textLineHeight &&
            metrics.horizontalAdvance(sample) <= look::widestFontSample) {
            break;
        }
    }
    return font;
}

int measure(const QFontMetricsF& metrics, std::string_view text) {
    return static_cast<int>(std::ceil(metrics.horizontalAdvance(toQt(text))));
}

/// A surface of no window, as fine as a display.
class MeasuringPainter final : public Painter {
public:
    explicit MeasuringPainter(int dotsPerInch) : surface_(1, 1, QImage::Format_RGB32) {
        surface_.setDevicePixelRatio(static_cast<double>(dotsPerInch) / plainDotsPerInch);
        metrics_.emplace(windowFont(), &surface_);
    }
    void fill(const Rect&, Colour) override {}
    void line(int, int, int, int, Colour) override {}
    void text(int, int, std::string_view, Colour) override {}
    int textWidth(std::string_view text) override { return measure(*metrics_, text); }

private:
    QImage surface_;
    std::optional<QFontMetricsF> metrics_;
};

} // namespace

const QFont& windowFont() {
    static const QFont font = chooseFont();
    return font;
}

QtPainter::QtPainter(QPainter& painter) : painter_(painter), metrics_(windowFont()) {
    painter_.setFont(windowFont());
}

void QtPainter::fill(const Rect& area, Colour colour) {
    painter_.fillRect(area.left, area.top, area.right - area.left, area.bottom - area.top, toQt(colour));
}

void QtPainter::line(int x1, int y1, int x2, int y2, Colour colour) {
    const int width = std::max(1, std::abs(x2 - x1));
    const int height = std::max(1, std::abs(y2 - y1));
    painter_.fillRect(std::min(x1, x2), std::min(y1, y2), width, height, toQt(colour));
}

void QtPainter::text(int x, int y, std::string_view text, Colour colour) {
    const double baseline = y + (textLineHeight - metrics_.height()) / 2.0 + metrics_.ascent();
    painter_.setPen(toQt(colour));
    painter_.drawText(QPointF(x, std::round(baseline)), toQt(text));
}

int QtPainter::textWidth(std::string_view text) {
    return measure(metrics_, text);
}

std::unique_ptr<Painter> createMeasuringPainter(int dotsPerInch) {
    return std::make_unique<MeasuringPainter>(dotsPerInch);
}

} // namespace kst::platform
