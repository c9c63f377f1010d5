#include "platform/win32/uipainter.h"

#include "platform/uilook.h"
#include "platform/win32/utf16.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace kst::platform {

namespace {

/// A device context of no window, for measuring. It has the display's colours: without, letters have hard
/// edges, and other widths.
class MemoryContext {
public:
    MemoryContext() {
        const HDC display = GetDC(nullptr);
        context_ = CreateCompatibleDC(display);
        surface_ = CreateCompatibleBitmap(display, 1, 1);
        before_ = SelectObject(context_, surface_);
        ReleaseDC(nullptr, display);
    }
    ~MemoryContext() {
        SelectObject(context_, before_);
        DeleteObject(surface_);
        DeleteDC(context_);
    }
    MemoryContext(const MemoryContext&) = delete;
    MemoryContext& operator=(const MemoryContext&) = delete;
    HDC get() const { return context_; }

private:
    HDC context_ = nullptr;
    HBITMAP surface_ = nullptr;
    HGDIOBJ before_ = nullptr;
};

LOGFONTW desktopFont(int dotsPerInch) {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    LOGFONTW font = {};
    if (SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                   static_cast<UINT>(dotsPerInch)) != FALSE) {
        font = metrics.lfMessageFont;
    } else {
        constexpr std::wstring_view family = L"Segoe UI";
        std::copy(family.begin(), family.end(), std::begin(font.lfFaceName));
        font.lfCharSet = DEFAULT_CHARSET;
    }
    font.lfWeight = FW_NORMAL;
    font.lfItalic = FALSE;
    font.lfWidth = 0;
    return font;
}

int lineHeightOf(HDC context) {
    TEXTMETRICW metrics = {};
    GetTextMetricsW(context, &metrics);
    return static_cast<int>(metrics.tmHeight);
}

int widthOf(HDC context, std::wstring_view text) {
    SIZE size = {};
    GetTextExtentPoint32W(context, text.data(), static_cast<int>(text.size()), &size);
    return static_cast<int>(size.cx);
}

std::wstring convert(std::string_view text) {
    std::optional<std::wstring> result = strictWideFromUtf8(text);
    if (!result) {
        throw TextConversionError();
    }
    return *std::move(result);
}

class MeasuringPainter final : public Painter {
public:
    explicit MeasuringPainter(int dotsPerInch) : scale_(dotsPerInch) {}
    void fill(const Rect&, Colour) override {}
    void line(int, int, int, int, Colour) override {}
    void text(int, int, std::string_view, Colour) override {}
    int textWidth(std::string_view text) override { return painter_.textWidth(text); }

private:
    Scale scale_;
    MemoryContext context_;
    Font font_ = makeFont(scale_, textLineHeight);
    GdiPainter painter_{context_.get(), scale_, font_.get()};
};

} // namespace

RECT Scale::device(const Rect& area) const {
    return {device(area.left), device(area.top), device(area.right), device(area.bottom)};
}

Rect Scale::layout(const RECT& area) const {
    const auto floor = [this](LONG pixels) {
        return static_cast<int>(pixels) * plainDotsPerInch / dotsPerInch_;
    };
    return {floor(area.left), floor(area.top), layout(static_cast<int>(area.right)),
            layout(static_cast<int>(area.bottom))};
}

int Scale::layout(int devicePixels) const {
    return (devicePixels * plainDotsPerInch + dotsPerInch_ - 1) / dotsPerInch_;
}

Font makeFont(const Scale& scale, int lineHeight) {
    const MemoryContext context;
    LOGFONTW description = desktopFont(scale.dotsPerInch());
    Font font;
    const std::wstring sample = wideFromUtf8(look::fontSample);
    const int smallest = scale.device(look::smallestFontPixels);
    for (int pixels = scale.device(look::largestFontPixels); pixels >= smallest; --pixels) {
        description.lfHeight = -pixels;
        font.reset(CreateFontIndirectW(&description));
        const HGDIOBJ before = SelectObject(context.get(), font.get());
        const bool fits = lineHeightOf(context.get()) <= scale.device(lineHeight) &&
                          widthOf(context.get(), sample) <= scale.device(look::widestFontSample);
        SelectObject(context.get(), before);
        if (fits) {
            break;
        }
    }
    return font;
}

GdiPainter::GdiPainter(HDC context, const Scale& scale, HFONT font)
    : context_(context), scale_(scale), fontBefore_(SelectObject(context, font)),
      textInset_((scale.device(textLineHeight) - lineHeightOf(context)) / 2) {
    SetBkMode(context_, TRANSPARENT);
}

GdiPainter::~GdiPainter() {
    SelectObject(context_, fontBefore_);
}

void GdiPainter::fill(const Rect& area, Colour colour) {
    fillArea(context_, scale_.device(area), toGdi(colour));
}

void GdiPainter::line(int x1, int y1, int x2, int y2, Colour colour) {
    const int left = std::min(x1, x2);
    const int top = std::min(y1, y2);
    fill({left, top, left + std::max(1, std::abs(x2 - x1)), top + std::max(1, std::abs(y2 - y1))}, colour);
}

void GdiPainter::text(int x, int y, std::string_view text, Colour colour) {
    const std::wstring wide = convert(text);
    SetTextColor(context_, toGdi(colour));
    TextOutW(context_, scale_.device(x), scale_.device(y) + textInset_, wide.data(),
             static_cast<int>(wide.size()));
}

int GdiPainter::textWidth(std::string_view text) {
    return scale_.layout(widthOf(context_, convert(text)));
}

void fillArea(HDC context, const RECT& area, COLORREF colour) {
    SetDCBrushColor(context, colour);
    FillRect(context, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void drawFrame(HDC context, const RECT& area, int horizontalThickness, int verticalThickness,
               COLORREF colour) {
    const LONG innerLeft = area.left + horizontalThickness;
    const LONG innerRight = area.right - horizontalThickness;
    fillArea(context, {area.left, area.top, area.right, area.top + verticalThickness}, colour);
    fillArea(context, {area.left, area.bottom - verticalThickness, area.right, area.bottom}, colour);
    fillArea(context, {area.left, area.top, innerLeft, area.bottom}, colour);
    fillArea(context, {innerRight, area.top, area.right, area.bottom}, colour);
}

std::unique_ptr<Painter> createMeasuringPainter(int dotsPerInch) {
    return std::make_unique<MeasuringPainter>(dotsPerInch);
}

} // namespace kst::platform
