// The window in each state that an operator meets, as the list of what is drawn: the whole of it without a
// simulator, and for each other state what is drawn more (+) and what no more (-). The lists in states/ are
// reviewed by eye; KESTRANE_RECORD=1 in the environment writes them anew.

#include "core/log.h"
#include "support/places.h"
#include "window/commandworld.h"
#include "window/painting.h"
#include "window/recordingpainter.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using platform::Colour;
using platform::Rect;

// Before any test goes into a folder of its own, which on Windows may be on another drive.
const std::filesystem::path lists = std::filesystem::absolute(test::sourceFolder() / "tests/window/states");

std::string nameOf(Colour colour) {
    static const std::pair<Colour, const char*> names[] = {{layout::black, "black"},
                                                           {layout::white, "white"},
                                                           {layout::lime, "lime"},
                                                           {layout::yellow, "yellow"},
                                                           {layout::red, "red"},
                                                           {layout::grey, "grey"},
                                                           {layout::lightBlue, "light blue"},
                                                           {layout::controlShadow, "shadow"},
                                                           {layout::messageShadow, "shadow"},
                                                           {layout::errorShadow, "shadow"}};
    for (const auto& [known, name] : names) {
        if (known == colour) {
            return name;
        }
    }
    return "?";
}

/// Writes down what is drawn. Every letter is equally wide, so the lists are the same with any font.
class WritingPainter : public platform::Painter {
public:
    void fill(const Rect& area, Colour colour) override {
        add(fmt::format("fill {},{} to {},{}", area.left, area.top, area.right, area.bottom), colour);
    }
    void line(int x1, int y1, int x2, int y2, Colour colour) override {
        add(fmt::format("line {},{} to {},{}", x1, y1, x2, y2), colour);
    }
    void text(int x, int y, std::string_view words, Colour colour) override {
        std::string shown(words);
        if (const auto at = shown.find(programVersionText()); at != std::string::npos) {
            shown.replace(at, programVersionText().size(), "(this one)");
        }
        add(fmt::format("text {},{} \"{}\"", x, y, shown), colour);
    }
    int textWidth(std::string_view words) override {
        constexpr int letterWidth = 6;
        return letterWidth * static_cast<int>(words.size());
    }

    std::vector<std::string> list;

private:
    void add(const std::string& what, Colour colour) {
        list.push_back(fmt::format("{} {}", what, nameOf(colour)));
    }
};

std::vector<std::string> drawnNow() {
    WritingPainter painter;
    paintWindow(painter, currentView(), {0, 0, layout::windowWidth, layout::windowHeight});
    return painter.list;
}

std::string without(const std::vector<std::string>& list, const std::vector<std::string>& others,
                    const char* mark) {
    std::string text;
    for (const std::string& line : list) {
        if (std::find(others.begin(), others.end(), line) == others.end()) {
            text += fmt::format("{}{}\n", mark, line);
        }
    }
    return text;
}

class States : public test::CommandWorld {
protected:
    States() {
        for (const layout::Control& control : layout::controls) {
            enableControl(control.id, control.kind == platform::ControlKind::CheckBox);
        }
        showMessage("Waiting for Prepar3Dv5 ...", false);
        plain_ = drawnNow();
    }

    /// Compares what is drawn now with the list of this name.
    void expectRecorded(const std::string& name) const {
        const std::vector<std::string> drawn = drawnNow();
        const std::string list = name == "no_simulator"
                                     ? without(drawn, {}, "")
                                     : without(plain_, drawn, "- ") + without(drawn, plain_, "+ ");
        const auto file = lists / (name + ".txt");
        if (std::getenv("KESTRANE_RECORD") != nullptr) {
            std::ofstream(file, std::ios::binary) << list;
        }
        std::ifstream recorded(file, std::ios::binary);
        EXPECT_EQ(list, std::string(std::istreambuf_iterator<char>(recorded), {}))
            << name << " is drawn in another way than recorded";
    }

    static void connectSimulator() {
        updateStatus(Band::Status, [](StatusValues& status) {
            status = test::runningView().status;
            status.userStandText.clear();
            status.rtConnected = false;
            status.airportCode.clear();
        });
        showMessage("Waiting for RealTraffic ...", false);
    }
    static void runAtZurich() {
        updateStatus(Band::Status, [](StatusValues& status) { status = test::runningView().status; });
        for (const layout::Control& control : layout::controls) {
            enableControl(control.id, true);
        }
        SCAN_LIVERIES.set(false);
        SCAN_AIRPORTS.set(false);
        clearMessage();
    }

private:
    std::vector<std::string> plain_; ///< without a simulator
};

TEST_F(States, NoSimulator) {
    expectRecorded("no_simulator");
}

TEST_F(States, WaitingForRealTraffic) {
    connectSimulator();
    expectRecorded("waiting_for_realtraffic");
}

TEST_F(States, RunningWithAParkAirport) {
    runAtZurich();
    expectRecorded("running");
}

TEST_F(States, AnError) {
    showError("99: No P3D install path detected, type full Install Path above, and press Enter");
    expectRecorded("error");
}

TEST_F(States, ARenewal) {
    runAtZurich();
    MAX_LIVE.set(60);
    parkingRunning = true;
    updateStatus(Band::Park, [](StatusValues& status) { status.staticBusyShown = true; });
    enableControl(control::FlushStatic, false);
    expectRecorded("renewal");
}

TEST_F(States, AScanInProgress) {
    enableControl(control::HighPerfAircraft, false);
    showProgress("Scanning for liveries: 812 folders, 1204 files, 3071 liveries", {0.0, 0.4});
    expectRecorded("scan");
}

} // namespace
} // namespace kst
