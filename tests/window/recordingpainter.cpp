#include "window/recordingpainter.h"

#include <algorithm>

namespace kst::test {

using platform::Colour;
using platform::Rect;

namespace {

bool holds(const Rect& area, int x, int y) {
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

bool within(const Rect& inner, const Rect& outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

bool isShadow(Colour colour) {
    return colour == layout::controlShadow || colour == layout::messageShadow ||
           colour == layout::errorShadow;
}

} // namespace

void RecordingPainter::fill(const Rect& area, Colour colour) {
    fills_.push_back({area, colour});
}

void RecordingPainter::line(int x1, int y1, int x2, int y2, Colour colour) {
    fills_.push_back({{x1, y1, std::max(x2, x1 + 1), std::max(y2, y1 + 1)}, colour});
}

void RecordingPainter::text(int x, int y, std::string_view text, Colour colour) {
    const PaintedText painted{x, y, std::string(text), colour, textWidth(text)};
    if (isShadow(colour)) {
        shadows_.push_back(painted.area());
    } else {
        texts_.push_back(painted);
    }
}

Colour RecordingPainter::colourAt(int x, int y) const {
    const auto found = std::find_if(fills_.rbegin(), fills_.rend(),
                                    [&](const Fill& fill) { return holds(fill.area, x, y); });
    return found == fills_.rend() ? Colour{1, 2, 3} : found->colour;
}

std::optional<PaintedText> RecordingPainter::textAt(int x, int y) const {
    const auto found = std::find_if(texts_.begin(), texts_.end(), [&](const PaintedText& text) {
        return text.x == x && text.y == y && !text.text.empty();
    });
    return found == texts_.end() ? std::nullopt : std::optional(*found);
}

std::string RecordingPainter::wordsAt(int x, int y) const {
    const auto found = textAt(x, y);
    return found ? found->text : std::string();
}

std::optional<PaintedText> RecordingPainter::find(std::string_view words) const {
    const auto found = std::find_if(texts_.begin(), texts_.end(),
                                    [&](const PaintedText& text) { return text.text == words; });
    return found == texts_.end() ? std::nullopt : std::optional(*found);
}

bool RecordingPainter::staysWithin(const Rect& area) const {
    return std::all_of(fills_.begin(), fills_.end(),
                       [&](const Fill& fill) { return within(fill.area, area); }) &&
           std::all_of(texts_.begin(), texts_.end(),
                       [&](const PaintedText& text) { return within(text.area(), area); }) &&
           std::all_of(shadows_.begin(), shadows_.end(),
                       [&](const Rect& shadow) { return within(shadow, area); });
}

RecordingPainter painted(const WindowView& view, int dotsPerInch) {
    RecordingPainter painter(dotsPerInch);
    paintWindow(painter, view, {0, 0, layout::windowWidth, layout::windowHeight});
    return painter;
}

WindowView startView() {
    WindowView view;
    for (std::size_t index = 0; index < layout::controls.size(); ++index) {
        view.controls[index].enabled = layout::controls[index].kind == platform::ControlKind::CheckBox;
    }
    return view;
}

WindowView runningView() {
    WindowView view = startView();
    StatusValues& status = view.status;
    status.simConnected = true;
    status.simRunningShown = true;
    status.simText = "Prepar3D v5 (5.4.9.28482)";
    status.userAircraftText = "A320 Swiss HB-JLT";
    status.userStandText = "B 35";
    status.liveryCount = 48211;
    status.simaddonCount = 212;
    status.thirdpCount = 37;
    status.rtLampDark = false;
    status.rtConnected = true;
    status.rtEditionText = "RT10 edition: Professional";
    status.weatherStatus = 1;
    status.trafficStatus = 1;
    status.qnhShown = 987;
    status.liveShown = 43;
    status.airportCode = "LSZH";
    status.airportName = "Zurich";
    status.publisherText = "OpenStreetMap";
    status.trafficWeek = 12;
    status.handmadeShown = true;
    status.parkFileOk = true;
    status.qualityText = "62";
    status.headStand = "B 35";
    status.reservedStand = "B 35";
    status.reservedStandOk = true;
    status.updatesShown = 17;
    status.standsShown = 164;
    status.parkedLiveShown = 7;
    status.parkedStaticShown = 31;
    status.liveFitShown = 1.5F;
    status.staticFitShown = 4.0F;
    status.maxParkShown = 49;
    status.maxParkPercentShown = 30;
    status.nextRenewalMinutes = 12;
    return view;
}

bool overlap(const Rect& one, const Rect& other) {
    return one.left < other.right && other.left < one.right && one.top < other.bottom &&
           other.top < one.bottom;
}

} // namespace kst::test
