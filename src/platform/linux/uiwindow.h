#pragma once

// The Qt window behind platform::Window.

#include "platform/ui.h"
#include "platform/uiwakeup.h"

#include <mutex>
#include <unordered_map>
#include <vector>

#include <QWidget>

namespace kst::platform {

class CheckBox;
class TextBox;

class QtWindow final : private QWidget, public Window, private WakeupClient {
public:
    QtWindow(std::string_view title, int x, int y, int width, int height, WindowEvents& events);
    ~QtWindow() override;

    void addControl(const ControlDescription& control) override;
    void show() override;
    void setChecked(int controlId, bool checked) override;
    void setText(int controlId, std::string_view text) override;
    std::string text(int controlId) const override;
    void setEnabled(int controlId, bool enabled) override;
    void setTopMost(bool topMost) override;
    int x() const override;
    int y() const override;
    void invalidate(const Rect& area) override;
    void post(int message) override { messages_.post(message); }

private:
    void serve() override;
    void serveCloseRequest() override { events_.closeRequested(); }
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

    WindowEvents& events_;
    // The widgets belong to their parent, this window.
    std::unordered_map<int, QWidget*> controls_;
    std::unordered_map<int, CheckBox*> checkBoxes_;
    std::unordered_map<int, TextBox*> textBoxes_;
    QWidget* focused_ = nullptr; ///< the control that had the keyboard before it was disabled

    PostedMessages messages_;
    std::mutex areasMutex_; ///< guards what other threads want to have painted
    std::vector<Rect> dirtyAreas_;
};

} // namespace kst::platform
