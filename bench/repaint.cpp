// What one status change costs: the repaint of its band, by the real window with its controls. Wanted: below
// 1 % of a core at one change a second ("% of a core"). Beside it the floor, measured in the same run: the
// same repaint when all that is drawn is the band's background.

#include "bench/support/besidefloor.h"
#include "core/display.h"
#include "platform/ui.h"
#include "window/layout.h"
#include "window/painting.h"

#include <memory>

namespace {

using namespace kst;

/// The window's owner, who draws all or only the background.
class Owner : public platform::WindowEvents {
public:
    void paint(platform::Painter& painter, const platform::Rect& dirty) override {
        ++paints;
        if (bare) {
            painter.fill(dirty, layout::black);
        } else {
            paintWindow(painter, currentView(), dirty);
        }
    }
    void clicked(int) override {}
    void entered(int) override {}
    void closeRequested() override {}
    void posted(int) override { platform::quitMessageLoop(0); }

    bool bare = false;
    int paints = 0;
};

/// A running program's values, in every field.
void fillStatus() {
    updateStatus(Band::Status, [](StatusValues& status) {
        status.simConnected = status.simRunningShown = status.rtConnected = status.parkFileOk = true;
        status.rtLampDark = false;
        status.simText = "Lockheed Martin Prepar3D v5 (5.4.9.28482)";
        status.userAircraftText = "A320 Swiss HB-JLT";
        status.userStandText = status.headStand = status.reservedStand = "B 35";
        status.liveryCount = 48211;
        status.simaddonCount = 212;
        status.thirdpCount = 37;
        status.rtEditionText = "RT10 edition: Professional";
        status.weatherStatus = status.trafficStatus = 1;
        status.qnhShown = 987;
        status.airportCode = "LSZH";
        status.airportName = "Zurich";
        status.publisherText = "OpenStreetMap";
        status.qualityText = "62";
        status.standsShown = 164;
        status.maxParkShown = 49;
        status.liveFitShown = status.staticFitShown = 1.5F;
    });
    showMessage("live stayers: 7, Parking adjustments: 3 to be removed, 4 to be added", false);
}

std::unique_ptr<platform::Window> makeWindow(Owner& owner) {
    auto window = platform::createWindow("repaint", 0, 0, layout::windowWidth, layout::windowHeight, owner);
    for (const layout::Control& control : layout::controls) {
        platform::ControlDescription description;
        description.id = control.id;
        description.kind = control.kind;
        description.area = layout::controlArea(control);
        description.enabled = true;
        window->addControl(description);
    }
    window->show();
    return window;
}

void repaint(benchmark::State& state, Band band) {
    static const auto toolkit = platform::startToolkit();
    Owner owner;
    const auto window = makeWindow(owner);
    fillStatus();
    std::uint64_t count = 0;
    const auto change = [&] {
        updateStatus(band, [&](StatusValues& status) { status.liveShown = ++count % 1000; });
        window->invalidate(layout::bandArea(band));
        window->post(1);
        platform::runMessageLoop();
    };
    change();
    BesideFloor times(state);
    owner.paints = 0;
    for (auto _ : state) {
        const double taken = processorSeconds(change);
        owner.bare = true;
        times.add(taken, processorSeconds(change));
        owner.bare = false;
    }
    times.report("us", 1e6);
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["% of a core"] = 100.0 * times.work() / rounds;
    state.counters["paints"] = owner.paints / rounds / 2.0;
}

BENCHMARK_CAPTURE(repaint, status, Band::Status)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(repaint, controls, Band::Control)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(repaint, parkAirport, Band::Park)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(repaint, message, Band::Message)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
