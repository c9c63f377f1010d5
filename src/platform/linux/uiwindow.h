#pragma once

// The Qt window behind platform::Window.

#include "platform/linux/uiapplication.h"
#include "platform/ui.h"

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
    void post(int message) override;

private:
    void serve() override;
    void serveCloseRequest() override;
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

    WindowEvents& events_;
    // The widgets belong to their parent, this window.
    std::unordered_map<int, QWidget*> controls_;
    std::unordered_map<int, CheckBox*> checkBoxes_;
    std::unordered_map<int, TextBox*> textBoxes_;

    std::mutex pendingMutex_; ///< guards what other threads leave here
    std::vector<Rect> pendingAreas_;
    std::vector<int> pendingMessages_;
};

} // namespace kst::platform
