#include "window/window.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/ui.h"
#include "window/commands.h"
#include "window/controltexts.h"
#include "window/displayqueue.h"
#include "window/layout.h"
#include "window/painting.h"

#include <memory>
#include <string>
#include <utility>

namespace kst {

namespace {

bool onLimit(const IntParameter& parameter) {
    return parameter == parameter.minimum() || parameter == parameter.maximum();
}

/// Takes a coordinate straight from the file, for the store is read later. One that sits on a limit comes
/// from a window that was out of sight: the default goes back.
void readCoordinate(IntParameter& coordinate) {
    const std::string text = storedParameterText(coordinate.name());
    if (text.empty()) {
        coordinate.setDefault();
        return;
    }
    coordinate.setFromText(text);
    if (onLimit(coordinate)) {
        coordinate.setDefault();
        saveParameter(coordinate);
    }
}

/// Saves a coordinate; one on a limit, as of a minimised window, leaves the value from before.
void saveCoordinate(IntParameter& coordinate, int position) {
    const int before = coordinate;
    coordinate.set(position);
    if (onLimit(coordinate)) {
        coordinate.set(before);
    }
    saveParameter(coordinate);
}

DisplayQueue& displayQueue() {
    // Never destroyed: a thread that outlives the window may still write to the display.
    static auto* const queue = new DisplayQueue;
    return *queue;
}

platform::ControlDescription describe(const layout::Control& control) {
    platform::ControlDescription description;
    description.id = control.id;
    description.kind = control.kind;
    description.area = layout::controlArea(control);
    description.accessibleName = accessibleName(control.id);
    description.toolTip = toolTip(control.id);
    description.caption = buttonCaption(control.id);
    description.textLimit =
        control.id == control::AllInstallPath ? layout::installPathLimit : layout::textBoxLimit;
    description.enabled = control.kind == platform::ControlKind::CheckBox;
    return description;
}

class MainWindow final : public platform::WindowEvents {
public:
    explicit MainWindow(WindowHooks hooks) : hooks_(std::move(hooks)) {}
    ~MainWindow() override {
        setDisplaySink(nullptr);
        displayQueue().attach(nullptr);
    }
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    bool create();

    void paint(platform::Painter& painter, const platform::Rect& dirty) override {
        paintWindow(painter, currentView(), dirty);
    }
    void clicked(int controlId) override { lf_HandleWMCOMMAND(controlId); }
    void entered(int controlId) override { lf_enterTextBox(controlId, window_->text(controlId)); }
    void closeRequested() override { hooks_.closeRequested(); }
    void posted(int message) override;

private:
    void createControls();
    void quit();

    WindowHooks hooks_;
    std::unique_ptr<platform::Window> window_;
};

bool MainWindow::create() {
    readCoordinate(MAIN_WINDOW_X);
    readCoordinate(MAIN_WINDOW_Y);
    window_ = platform::createWindow(programName, MAIN_WINDOW_X, MAIN_WINDOW_Y, layout::windowWidth,
                                     layout::windowHeight, *this);
    if (!window_) {
        return false;
    }
    createControls();
    displayQueue().attach(window_.get());
    setDisplaySink(&displayQueue());
    repaint(Band::Control);
    window_->show();
    return true;
}

void MainWindow::createControls() {
    for (const layout::Control& control : layout::controls) {
        const platform::ControlDescription description = describe(control);
        window_->addControl(description);
        enableControl(description.id, description.enabled);
    }
    for (const Parameter* parameter : allParameters()) {
        if (const auto* flag = dynamic_cast<const BoolParameter*>(parameter)) {
            window_->setChecked(flag->controlId(), *flag);
        }
    }
}

void MainWindow::posted(int message) {
    switch (message) {
    case startWorkerMessage:
        hooks_.startWorker();
        break;
    case quitMessage:
        quit();
        break;
    case DisplayQueue::controlsMessage:
        displayQueue().apply(*window_);
        break;
    default:
        break;
    }
}

void MainWindow::quit() {
    saveCoordinate(MAIN_WINDOW_X, window_->x());
    saveCoordinate(MAIN_WINDOW_Y, window_->y());
    logLine(nowText());
    flushLog();
    platform::quitMessageLoop(0);
}

std::unique_ptr<MainWindow> mainWindow;

} // namespace

bool createMainWindow(WindowHooks hooks) {
    auto window = std::make_unique<MainWindow>(std::move(hooks));
    if (!window->create()) {
        return false;
    }
    mainWindow = std::move(window);
    return true;
}

int runMainWindow() {
    return platform::runMessageLoop();
}

void destroyMainWindow() {
    mainWindow.reset();
}

} // namespace kst
