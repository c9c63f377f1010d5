#include "window/painting.h"

#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "window/fieldtext.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

namespace kst {

namespace {

using namespace layout;
using platform::Painter;

constexpr int dataFlows = 1;  ///< reader status
constexpr int notRunning = 3; ///< reader status
constexpr std::string_view copyrightLine = "Copyright \u00a9 the Kestrane_P3D authors";

bool touches(const Rect& one, const Rect& other) {
    return one.left < other.right && other.left < one.right && one.top < other.bottom &&
           other.top < one.bottom;
}

bool readerRuns(int status) {
    return status >= dataFlows && status < notRunning;
}

void paintWhiteLine(Painter& painter, int y) {
    painter.line(0, y, windowWidth, y, white);
}

void paintHeader(Painter& painter) {
    drawField(painter, field::version, fmt::format("Version {}", programVersionText()), lime);
    drawField(painter, field::programName, programName, lime);
    drawField(painter, field::copyright, copyrightLine, lime);
}

void paintControlLines(Painter& painter) {
    for (const ControlLine& line : controlLines) {
        painter.line(0, line.y, line.right, line.y, black);
    }
    painter.line(columnLineX, columnLineTop, columnLineX, columnLineBottom, black);
}

// --- status band ---

Colour simLampColour(const StatusValues& status) {
    if (!status.simConnected) {
        return red;
    }
    return status.simRunningShown && !status.userAircraftText.empty() ? lime : yellow;
}

Colour realTrafficLampColour(const StatusValues& status) {
    if (status.rtLampDark) {
        return black;
    }
    if (!status.rtConnected) {
        return red;
    }
    return status.trafficStatus == dataFlows ? lime : yellow;
}

/// The stand is what changes, so the simulator's name gives way where both do not fit.
void paintSimulatorLine(Painter& painter, const StatusValues& status, Colour colour) {
    const std::string stand =
        status.userStandText.empty() ? std::string() : fmt::format(", user stand {}", status.userStandText);
    drawField(painter, field::simulator, status.simText, colour, stand);
}

void paintCounts(Painter& painter, const StatusValues& status) {
    if (status.liveryCount > 0) {
        drawField(painter, field::liveries, fmt::format("# liveries: {}", status.liveryCount), lime);
    } else {
        drawField(painter, field::liveries, "# liveries: ...", red);
    }
    if (status.simaddonCount > 0) {
        drawField(painter, field::simaddon, fmt::format("# {}: {}", "simaddon", status.simaddonCount),
                  status.simaddonComplete ? lime : yellow);
    } else {
        drawField(painter, field::simaddon, "# simaddon: ...", yellow);
    }
    if (status.thirdpCount > 0) {
        drawField(painter, field::thirdparty, fmt::format("# thirdp: {}", status.thirdpCount), lime);
    } else {
        drawField(painter, field::thirdparty, "# thirdp: ...", yellow);
    }
}

void paintLamps(Painter& painter, const StatusValues& status) {
    painter.fill(simLamp, simLampColour(status));
    drawField(painter, field::simLampLabel, "Sim", black);
    painter.fill(realTrafficLamp, realTrafficLampColour(status));
    drawField(painter, field::realTrafficLampLabel, "RT", black);
    painter.line(realTrafficLamp.left, lampLineTop, realTrafficLamp.left, realTrafficLamp.bottom, black);
}

void paintRealTraffic(Painter& painter, const StatusValues& status) {
    if (!status.rtConnected) {
        return;
    }
    drawField(painter, field::edition, status.rtEditionText, lime);
    if (readerRuns(status.weatherStatus)) {
        drawField(painter, field::weather, "Weather", status.weatherStatus == dataFlows ? lime : yellow);
        const std::string pressure =
            status.qnhShown < 1 ? std::string("qnh:") : fmt::format("qnh: {:4}", status.qnhShown);
        drawField(painter, field::pressure, pressure, lime);
    }
    if (readerRuns(status.trafficStatus)) {
        drawField(painter, field::traffic, "Traffic", status.trafficStatus == dataFlows ? lime : yellow);
        drawField(painter, field::liveAircraft, fmt::format("live: {:3}", status.liveShown), lime);
    }
}

void paintStatus(Painter& painter, const StatusValues& status) {
    paintLamps(painter, status);
    if (status.simConnected) {
        const Colour lamp = simLampColour(status);
        paintSimulatorLine(painter, status, lamp);
        drawField(painter, field::userAircraft, status.userAircraftText,
                  status.wingSpanKnown ? lamp : yellow);
    }
    paintCounts(painter, status);
    paintRealTraffic(painter, status);
}

// --- control band ---

Colour labelColour(const Label& label, const WindowView& view) {
    switch (label.rule) {
    case LabelRule::Black:
    case LabelRule::NextRenewal:
        return black;
    case LabelRule::YellowWhileOn:
        return view.control(label.controlId).on ? yellow : black;
    case LabelRule::YellowWhileOff:
        return view.control(label.controlId).on ? black : yellow;
    case LabelRule::GreyWhileOff:
        return view.control(label.controlId).on ? black : grey;
    case LabelRule::GreyDisabled:
        return view.control(label.controlId).enabled ? black : grey;
    case LabelRule::GreyAtDefault:
        return view.control(label.controlId).atDefault ? grey : yellow;
    case LabelRule::OfflineAirports:
        return yellow;
    case LabelRule::ParkingActive:
        return view.parkingRunning ? yellow : black;
    }
    return black;
}

bool nextRenewalStands(const WindowView& view) {
    const unsigned minutes = view.status.nextRenewalMinutes;
    return !view.status.airportCode.empty() && !view.parkingRunning &&
           !view.control(control::InitialLoadOnly).on && minutes >= fewestRenewalMinutes &&
           minutes <= mostRenewalMinutes;
}

/// The words of a label, empty when it does not stand.
std::string labelText(const Label& label, const WindowView& view) {
    const StatusValues& status = view.status;
    switch (label.rule) {
    case LabelRule::OfflineAirports:
        return status.offlineAirports == 0
                   ? std::string()
                   : fmt::format(fmt::runtime(label.text), status.offlineAirports,
                                 status.offlineAirports == 1 ? "" : "s", status.offlineFolder);
    case LabelRule::ParkingActive:
        return fmt::format(fmt::runtime(label.text), view.parkingRunning ? " active" : "");
    case LabelRule::NextRenewal:
        return nextRenewalStands(view) ? fmt::format(fmt::runtime(label.text), status.nextRenewalMinutes)
                                       : std::string();
    default:
        return std::string(label.text);
    }
}

void paintLabels(Painter& painter, const WindowView& view) {
    for (const Label& label : labels) {
        const std::string text = labelText(label, view);
        if (!text.empty()) {
            drawOnLight(painter, {label.x, label.row, labelRight(label)}, text, labelColour(label, view),
                        controlShadow);
        }
    }
}

// --- park band ---

void paintParkAirport(Painter& painter, const StatusValues& status, int codeEnd) {
    // A long stand pushes the name to the right rather than running into it.
    Field name = field::airportName;
    name.x = std::max(name.x, codeEnd + fieldGap);
    drawField(painter, name,
              fmt::format(" {}, {}{}, wk={}", status.airportName, status.publisherText,
                          status.handmadeShown ? " (h)" : "", status.trafficWeek),
              lime);
    if (status.staticBusyShown) {
        drawField(painter, field::staticBusy, "*S*", lime);
    }
    drawField(painter, field::quality, fmt::format("qf: {}", status.qualityText), lime);
    if (!status.reservedStand.empty()) {
        drawField(painter, field::reservedStand, fmt::format("reserved stand: {}", status.reservedStand),
                  status.reservedStandOk ? lime : red);
    }
    drawField(painter, field::updates, fmt::format("# updates: {:4}", status.updatesShown), lime);
}

void paintParked(Painter& painter, const StatusValues& status, bool wholeWeek) {
    drawField(painter, field::stands, fmt::format("# stands: {:3}", status.standsShown), lime);
    drawField(painter, field::parkedLive, fmt::format("parked live: {:3}", status.parkedLiveShown), lime);
    if (status.liveFitShown > 0.0F) {
        drawField(painter, field::liveFit,
                  fmt::format("average fit: {}", formatHours(static_cast<double>(status.liveFitShown))),
                  lime);
    }
    if (status.maxParkShown <= 0) {
        drawField(painter, field::maxPark, "no max park live", lime);
        return;
    }
    drawField(painter, field::parkedStatic, fmt::format("parked static: {:3}", status.parkedStaticShown),
              lime);
    if (!wholeWeek && status.staticFitShown > 0.0F) {
        drawField(painter, field::staticFit,
                  fmt::format("average fit: {}", formatHours(static_cast<double>(status.staticFitShown))),
                  lime);
    }
    drawField(painter, field::maxPark,
              fmt::format("max park: {:3} (={} %)", status.maxParkShown, status.maxParkPercentShown), lime);
}

void paintPark(Painter& painter, const WindowView& view) {
    const StatusValues& status = view.status;
    if (status.airportCode.empty()) {
        return;
    }
    const std::string code = status.headStand.empty()
                                 ? status.airportCode
                                 : fmt::format("{} ({})", status.airportCode, status.headStand);
    const int end = drawField(painter, field::airportCode, code, status.parkFileOk ? lime : yellow);
    if (status.parkFileOk) {
        paintParkAirport(painter, status, end);
        paintParked(painter, status, view.control(control::Week).on);
    }
}

// --- message band ---

void paintMessage(Painter& painter, const WindowView& view) {
    const MessageLine& line = view.line;
    const bool error = !line.error.empty();
    painter.fill(bandArea(Band::Message), error ? red : lime);
    paintWhiteLine(painter, whiteLines.back());
    const std::string& text = error ? line.error : line.message;
    if (!text.empty()) {
        drawOnLight(painter, field::message, text, yellow, error ? errorShadow : messageShadow);
    }
    Rect bar = progressBar;
    bar.left = static_cast<int>(view.status.progress.from * progressBar.right);
    bar.right = static_cast<int>(view.status.progress.to * progressBar.right);
    if (bar.right > bar.left) {
        painter.fill(bar, black);
    }
}

} // namespace

WindowView currentView() {
    WindowView view;
    view.status = statusValues();
    view.line = messageLine();
    view.parkingRunning = parkingRunning;
    for (std::size_t index = 0; index < layout::controls.size(); ++index) {
        view.controls[index].enabled = controlEnabled(layout::controls[index].id);
    }
    for (const Parameter* parameter : allParameters()) {
        const std::size_t index = controlIndex(parameter->controlId());
        if (index == view.controls.size()) {
            continue;
        }
        if (const auto* flag = dynamic_cast<const BoolParameter*>(parameter)) {
            view.controls[index].on = *flag;
        } else if (const auto* number = dynamic_cast<const IntParameter*>(parameter)) {
            view.controls[index].atDefault = *number == number->defaultValue();
        }
    }
    return view;
}

void paintWindow(Painter& painter, const WindowView& view, const Rect& dirty) {
    const auto wanted = [&](Band band) { return touches(bandArea(band), dirty); };
    for (const Band band : {Band::Header, Band::Status, Band::Control, Band::Park}) {
        if (wanted(band)) {
            painter.fill(bandArea(band), band == Band::Control ? lightBlue : black);
        }
    }
    for (const int y : whiteLines) {
        if (touches({0, y, windowWidth, y + 1}, dirty)) {
            paintWhiteLine(painter, y);
        }
    }
    if (wanted(Band::Header)) {
        paintHeader(painter);
    }
    if (wanted(Band::Status)) {
        paintStatus(painter, view.status);
    }
    if (wanted(Band::Control)) {
        paintControlLines(painter);
        paintLabels(painter, view);
    }
    if (wanted(Band::Park)) {
        paintPark(painter, view);
    }
    if (wanted(Band::Message)) {
        paintMessage(painter, view);
    }
}

} // namespace kst
