#pragma once

// The Win32 window behind platform::Window.

#include "platform/ui.h"
#include "platform/uiwakeup.h"
#include "platform/win32/uicontrols.h"
#include "platform/win32/uipainter.h"
#include "platform/win32/uitooltips.h"

#include <atomic>
#include <memory>
#include <unordered_map>

#include <windows.h>

namespace kst::platform {

class Win32Window final : public Window, private WakeupClient, private ControlHost {
public:
    Win32Window(std::string_view title, int x, int y, int width, int height, WindowEvents& events);
    ~Win32Window() override;
    Win32Window(const Win32Window&) = delete;
    Win32Window& operator=(const Win32Window&) = delete;

    /// The system has made the window.
    bool created() const { return handle_ != nullptr; }

    void addControl(const ControlDescription& control) override;
    void show() override;
    void setChecked(int controlId, bool checked) override;
    void setText(int controlId, std::string_view text) override;
    std::string text(int controlId) const override;
    void setEnabled(int controlId, bool enabled) override;
    void setTopMost(bool topMost) override;
    int x() const override { return position_.x; }
    int y() const override { return position_.y; }
    void invalidate(const Rect& area) override;
    void post(int message) override { messages_.post(message); }

private:
    struct Control {
        HWND handle;
        ControlKind kind;
        Rect area;
        int textLimit;
    };

    void serve() override { messages_.deliver(events_); }
    void serveCloseRequest() override { events_.closeRequested(); }
    void enterPressed(int controlId) override { events_.entered(controlId); }
    void moveFocus(HWND from, bool backwards) override;
    const Scale& scale() const override { return scale_; }

    static LRESULT CALLBACK procedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT answer(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT answerOnState(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT colourBox(HDC context, bool enabled) const;
    void command(WPARAM wParam, LPARAM lParam);
    LRESULT notify(const NMHDR& header) const;
    void paint();
    void draw(HDC context, const RECT& area);
    void endOfSession();
    void keepFocus(WPARAM activation);
    void takeScale(int dotsPerInch);
    void fitControl(int controlId, const Control& control);
    SIZE outerSize(const Scale& scale) const;
    const Control* find(int controlId, ControlKind kind) const;

    WindowEvents& events_;
    int width_; ///< layout pixels, as the height
    int height_;
    HWND handle_ = nullptr;
    HWND focused_ = nullptr; ///< had the keyboard before the window was left or the control disabled
    POINT position_;         ///< of the outer frame; stays while the window is minimised
    Scale scale_;
    std::atomic<int> dotsPerInch_{plainDotsPerInch}; ///< of `scale_`, for the other threads
    Font font_;
    Font boxFont_; ///< one that fits inside the frame of a text box
    std::unique_ptr<ToolTips> toolTips_;
    SpokenNames spokenNames_;
    std::unordered_map<int, Control> controls_;
    PostedMessages messages_;
};

} // namespace kst::platform
