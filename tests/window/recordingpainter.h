#pragma once

#include "platform/ui.h"
#include "window/layout.h"
#include "window/painting.h"

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace kst::platform {

inline void PrintTo(const Rect& area, std::ostream* out) {
    *out << "(" << area.left << "," << area.top << ")-(" << area.right << "," << area.bottom << ")";
}

inline void PrintTo(const Colour& colour, std::ostream* out) {
    *out << "rgb(" << int{colour.red} << "," << int{colour.green} << "," << int{colour.blue} << ")";
}

} // namespace kst::platform

namespace kst::test {

struct PaintedText {
    int x = 0;
    int y = 0;
    std::string text;
    platform::Colour colour;
    int width = 0;

    platform::Rect area() const { return {x, y, x + width, y + platform::textLineHeight}; }
};

/// Measures with the real font and keeps what was drawn, as a person sees it: shadows are no texts.
class RecordingPainter : public platform::Painter {
public:
    explicit RecordingPainter(int dotsPerInch = platform::plainDotsPerInch)
        : measure_(platform::createMeasuringPainter(dotsPerInch)) {}
    void fill(const platform::Rect& area, platform::Colour colour) override;
    void line(int x1, int y1, int x2, int y2, platform::Colour colour) override;
    void text(int x, int y, std::string_view text, platform::Colour colour) override;
    int textWidth(std::string_view text) override { return measure_->textWidth(text); }

    const std::vector<PaintedText>& texts() const { return texts_; }
    /// The colour of this point, letters apart.
    platform::Colour colourAt(int x, int y) const;
    /// The text that begins at this point.
    std::optional<PaintedText> textAt(int x, int y) const;
    /// The words that begin at this point, empty where none do.
    std::string wordsAt(int x, int y) const;
    /// The first text with these words.
    std::optional<PaintedText> find(std::string_view words) const;
    /// Everything painted, letters included, lies in this area.
    bool staysWithin(const platform::Rect& area) const;

private:
    struct Fill {
        platform::Rect area;
        platform::Colour colour;
    };

    std::unique_ptr<platform::Painter> measure_;
    std::vector<Fill> fills_;
    std::vector<PaintedText> texts_;
    std::vector<platform::Rect> shadows_;
};

/// The whole window, painted.
RecordingPainter painted(const WindowView& view, int dotsPerInch = platform::plainDotsPerInch);

/// A view with every control as at the start of a run.
WindowView startView();
/// A view of a run: simulator and RealTraffic connected, at LSZH with its file loaded.
WindowView runningView();

bool overlap(const platform::Rect& one, const platform::Rect& other);

} // namespace kst::test
