#pragma once

// The display's sink: takes wishes from any thread and leaves them for the user interface thread. It lives
// for the whole process and never grows, whatever arrives.

#include "core/display.h"
#include "platform/ui.h"
#include "window/layout.h"

#include <array>
#include <functional>
#include <mutex>

namespace kst {

class DisplayQueue final : public DisplaySink {
public:
    /// Posted to the window once wishes wait.
    static constexpr int controlsMessage = 1;

    /// From here on wishes go to this window; nullptr ends it. User interface thread.
    void attach(platform::Window* window);
    /// Carries out the wishes that wait. User interface thread, on `controlsMessage`.
    void apply(platform::Window& window);

    void repaint(Band band) override;
    void showParameter(const Parameter& parameter) override;
    void blankParameter(const Parameter& parameter) override;
    void enableControl(int controlId, bool enabled) override;
    void applyAlwaysOnTop() override;
    void postStartWorker() override;
    void postQuit() override;

private:
    /// What a control is to show; the last wish counts, and the value is read when it is carried out.
    struct Wish {
        const Parameter* shown = nullptr;
        bool blank = false;
        bool enabled = false; ///< its state is to be taken over
    };

    void wish(int controlId, const std::function<void(Wish&)>& change);
    void post(int message);
    void askForService();

    std::mutex mutex_; ///< guards all below
    platform::Window* window_ = nullptr;
    std::array<Wish, layout::controls.size()> wishes_{};
    bool alwaysOnTopWaits_ = false;
    bool serviceAsked_ = false;
};

} // namespace kst
