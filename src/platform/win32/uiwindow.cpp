#include "platform/win32/uiwindow.h"

#include "platform/uilook.h"
#include "platform/uiplace.h"
#include "platform/win32/uiapplication.h"
#include "platform/win32/utf16.h"

#include <vector>

#include <uxtheme.h>

namespace kst::platform {

namespace {

constexpr wchar_t windowClass[] = L"Kestrane_P3D";
constexpr WORD iconResource = 100;
constexpr WORD arrowCursor = 32512; // the system's
constexpr DWORD windowStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
/// How long the end of the user's session waits for the program's orderly end.
constexpr unsigned sessionEndMilliseconds = 20'000;
constexpr wchar_t sessionEndReason[] = L"The traffic is being removed from the simulator.";

/// Free room at both sides of a text in its box, layout pixels: a number of three figures fits the narrowest.
constexpr int boxMargin = 1;

// The height of a line of text in a text box of 16 layout pixels: what its frame leaves.
constexpr int boxLineHeight = 14;

BOOL CALLBACK addWorkArea(HMONITOR monitor, HDC, RECT*, LPARAM list) noexcept {
    auto& areas = *reinterpret_cast<std::vector<Rect>*>(list);
    MONITORINFO facts = {};
    facts.cbSize = sizeof facts;
    if (GetMonitorInfoW(monitor, &facts) != FALSE) {
        const bool primary = (facts.dwFlags & MONITORINFOF_PRIMARY) != 0;
        const RECT& work = facts.rcWork;
        areas.insert(primary ? areas.begin() : areas.end(), {work.left, work.top, work.right, work.bottom});
    }
    return TRUE;
}

/// Where windows may be, that of the primary display first.
std::vector<Rect> workAreas() {
    std::vector<Rect> areas;
    EnumDisplayMonitors(nullptr, nullptr, addWorkArea, reinterpret_cast<LPARAM>(&areas));
    return areas;
}

HICON loadIcon(int widthMetric, int heightMetric) {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(iconResource),
                                         IMAGE_ICON, GetSystemMetrics(widthMetric),
                                         GetSystemMetrics(heightMetric), LR_SHARED));
}

bool registerClass(WNDPROC procedure) {
    WNDCLASSEXW description = {};
    description.cbSize = sizeof description;
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hIcon = loadIcon(SM_CXICON, SM_CYICON);
    description.hIconSm = loadIcon(SM_CXSMICON, SM_CYSMICON);
    description.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(arrowCursor));
    description.lpszClassName = windowClass;
    return RegisterClassExW(&description) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

} // namespace

Win32Window::Win32Window(std::string_view title, int x, int y, int width, int height, WindowEvents& events)
    : events_(events), width_(width), height_(height), position_{x, y} {
    if (!registerClass(procedure)) {
        return;
    }
    const SIZE provisional = outerSize(scale_);
    const Place place = reachablePlace({x, y}, static_cast<int>(provisional.cx), workAreas());
    position_ = {place.x, place.y};
    // The procedure takes the handle and the object together with the first message.
    if (CreateWindowExW(0, windowClass, wideFromUtf8(title).c_str(), windowStyle, place.x, place.y,
                        static_cast<int>(provisional.cx), static_cast<int>(provisional.cy), nullptr, nullptr,
                        GetModuleHandleW(nullptr), this) == nullptr) {
        handle_ = nullptr;
        return;
    }
    toolTips_ = std::make_unique<ToolTips>(handle_);
    takeScale(static_cast<int>(GetDpiForWindow(handle_)));
    addWakeupClient(*this);
}

Win32Window::~Win32Window() {
    removeWakeupClient(*this);
    if (handle_ != nullptr) {
        for (const auto& [id, control] : controls_) {
            spokenNames_.clear(control.handle);
        }
        toolTips_.reset();
        DestroyWindow(handle_);
    }
}

void Win32Window::addControl(const ControlDescription& control) {
    const HWND handle = createControl(handle_, control, *this);
    if (handle == nullptr) {
        return;
    }
    const Control& added = controls_[control.id] = {handle, control.kind, control.area, control.textLimit};
    toolTips_->add(handle, control.id, scale_.device(control.area), control.toolTip);
    spokenNames_.set(handle, control.accessibleName, control.toolTip);
    fitControl(control.id, added);
}

void Win32Window::show() {
    // Whoever comes by keyboard sees where it is, from the first key on.
    SendMessageW(handle_, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    ShowWindow(handle_, SW_SHOWDEFAULT);
}

void Win32Window::setChecked(int controlId, bool checked) {
    if (const Control* box = find(controlId, ControlKind::CheckBox)) {
        SendMessageW(box->handle, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }
}

void Win32Window::setText(int controlId, std::string_view text) {
    const Control* box = find(controlId, ControlKind::TextBox);
    if (box == nullptr) {
        return;
    }
    const std::wstring wide = wideFromUtf8(text);
    const std::wstring wanted(withinLimit(wide, box->textLimit));
    // The same text again would lose the operator's cursor.
    if (windowText(box->handle) != wanted) {
        SetWindowTextW(box->handle, wanted.c_str());
    }
}

std::string Win32Window::text(int controlId) const {
    const Control* box = find(controlId, ControlKind::TextBox);
    return box == nullptr ? std::string() : utf8FromWide(windowText(box->handle));
}

void Win32Window::setEnabled(int controlId, bool enabled) {
    const auto found = controls_.find(controlId);
    if (found == controls_.end()) {
        return;
    }
    const HWND control = found->second.handle;
    const bool hadFocus = GetFocus() == control;
    EnableWindow(control, enabled ? TRUE : FALSE);
    if (!enabled && hadFocus) {
        focused_ = control;
        SetFocus(handle_);
    } else if (enabled && focused_ == control && GetFocus() == handle_) {
        SetFocus(control);
    }
}

void Win32Window::setTopMost(bool topMost) {
    SetWindowPos(handle_, topMost ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void Win32Window::invalidate(const Rect& area) {
    const RECT pixels = Scale(dotsPerInch_.load()).device(area);
    InvalidateRect(handle_, &pixels, FALSE);
}

void Win32Window::moveFocus(HWND from, bool backwards) {
    const HWND next = GetNextDlgTabItem(handle_, from, backwards ? TRUE : FALSE);
    if (next == nullptr || next == from) {
        return;
    }
    SetFocus(next);
    if (find(GetDlgCtrlID(next), ControlKind::TextBox) != nullptr) {
        SendMessageW(next, EM_SETSEL, 0, -1);
    }
}

LRESULT CALLBACK Win32Window::procedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* const created =
            static_cast<Win32Window*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        created->handle_ = handle;
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    }
    auto* const window = reinterpret_cast<Win32Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
    return window == nullptr ? DefWindowProcW(handle, message, wParam, lParam)
                             : window->answer(message, wParam, lParam);
}

/// What the operator does, and what is to be drawn.
LRESULT Win32Window::answer(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        paint();
        return 0;
    case WM_ERASEBKGND:
        // Every pixel is painted by the owner: nothing to erase first, so nothing flickers.
        return 1;
    case WM_PRINTCLIENT: {
        RECT area = {};
        GetClipBox(reinterpret_cast<HDC>(wParam), &area);
        draw(reinterpret_cast<HDC>(wParam), area);
        return 0;
    }
    case WM_COMMAND:
        command(wParam, lParam);
        return 0;
    case WM_NOTIFY:
        return notify(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_CTLCOLOREDIT:
        return colourBox(reinterpret_cast<HDC>(wParam), true);
    case WM_CTLCOLORSTATIC:
        return colourBox(reinterpret_cast<HDC>(wParam), false);
    case WM_KEYDOWN:
        if (wParam == VK_TAB) {
            moveFocus(nullptr, GetKeyState(VK_SHIFT) < 0);
            return 0;
        }
        break;
    case WM_CLOSE:
        events_.closeRequested();
        return 0;
    default:
        break;
    }
    return answerOnState(message, wParam, lParam);
}

/// What the system does to the window.
LRESULT Win32Window::answerOnState(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_ACTIVATE:
        keepFocus(wParam);
        break;
    case WM_SETFOCUS:
        if (focused_ != nullptr && IsWindowEnabled(focused_) != FALSE) {
            SetFocus(focused_);
        }
        return 0;
    case WM_WINDOWPOSCHANGED:
        if (IsIconic(handle_) == FALSE) {
            const auto& placed = *reinterpret_cast<const WINDOWPOS*>(lParam);
            if ((placed.flags & SWP_NOMOVE) == 0) {
                position_ = {placed.x, placed.y};
            }
        }
        break;
    case WM_GETMINMAXINFO: {
        const SIZE size = outerSize(scale_);
        auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
        limits.ptMinTrackSize = limits.ptMaxTrackSize = {size.cx, size.cy};
        return 0;
    }
    case WM_GETDPISCALEDSIZE:
        *reinterpret_cast<SIZE*>(lParam) = outerSize(Scale(static_cast<int>(wParam)));
        return TRUE;
    case WM_DPICHANGED: {
        const auto& suggested = *reinterpret_cast<const RECT*>(lParam);
        position_ = {suggested.left, suggested.top};
        takeScale(LOWORD(wParam));
        return 0;
    }
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        if (wParam != FALSE) {
            endOfSession();
        }
        return 0;
    default:
        break;
    }
    return DefWindowProcW(handle_, message, wParam, lParam);
}

LRESULT Win32Window::colourBox(HDC context, bool enabled) const {
    const COLORREF background = toGdi(enabled ? textBoxColour : look::disabledBoxFill);
    SetTextColor(context, toGdi(enabled ? look::boxText : look::disabledBoxText));
    SetBkColor(context, background);
    SetDCBrushColor(context, background);
    return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
}

void Win32Window::command(WPARAM wParam, LPARAM lParam) {
    const int id = LOWORD(wParam);
    if (HIWORD(wParam) != BN_CLICKED || lParam == 0) {
        return;
    }
    if (find(id, ControlKind::CheckBox) != nullptr || find(id, ControlKind::PushButton) != nullptr) {
        events_.clicked(id);
    }
}

LRESULT Win32Window::notify(const NMHDR& header) const {
    if (header.code == NM_CUSTOMDRAW &&
        find(static_cast<int>(header.idFrom), ControlKind::CheckBox) != nullptr) {
        return drawCheckBox(reinterpret_cast<const NMCUSTOMDRAW&>(header), scale_);
    }
    return 0;
}

void Win32Window::paint() {
    PAINTSTRUCT job = {};
    const HDC display = BeginPaint(handle_, &job);
    if (IsRectEmpty(&job.rcPaint) == FALSE) {
        HDC buffer = nullptr;
        const HPAINTBUFFER buffered =
            BeginBufferedPaint(display, &job.rcPaint, BPBF_COMPATIBLEBITMAP, nullptr, &buffer);
        draw(buffered == nullptr ? display : buffer, job.rcPaint);
        if (buffered != nullptr) {
            EndBufferedPaint(buffered, TRUE);
        }
    }
    EndPaint(handle_, &job);
}

void Win32Window::draw(HDC context, const RECT& area) {
    GdiPainter painter(context, scale_, font_.get());
    events_.paint(painter, scale_.layout(area));
}

/// The system ends the process when this returns, so everything that must be saved is saved before.
void Win32Window::endOfSession() {
    ShutdownBlockReasonCreate(handle_, sessionEndReason);
    events_.closeRequested();
    runNestedMessageLoop(sessionEndMilliseconds);
}

void Win32Window::keepFocus(WPARAM activation) {
    if (LOWORD(activation) == WA_INACTIVE) {
        const HWND focus = GetFocus();
        if (focus != nullptr && IsChild(handle_, focus) != FALSE) {
            focused_ = focus;
        }
    }
}

/// Everything takes the size that it has on a display of this fineness.
void Win32Window::takeScale(int dotsPerInch) {
    scale_ = Scale(dotsPerInch);
    dotsPerInch_.store(dotsPerInch);
    Font font = makeFont(scale_, textLineHeight);
    Font boxFont = makeFont(scale_, boxLineHeight);
    font_.swap(font);
    boxFont_.swap(boxFont);
    toolTips_->rescale(scale_, font_.get());
    const SIZE size = outerSize(scale_);
    SetWindowPos(handle_, nullptr, position_.x, position_.y, static_cast<int>(size.cx),
                 static_cast<int>(size.cy), SWP_NOZORDER | SWP_NOACTIVATE);
    for (const auto& [id, control] : controls_) {
        fitControl(id, control);
    }
    InvalidateRect(handle_, nullptr, FALSE);
}

void Win32Window::fitControl(int controlId, const Control& control) {
    const RECT area = scale_.device(control.area);
    const Font& font = control.kind == ControlKind::TextBox ? boxFont_ : font_;
    SendMessageW(control.handle, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
    SetWindowPos(control.handle, nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    if (control.kind == ControlKind::TextBox) {
        // With a new font the box takes margins of its own, which differ from one fineness to the next.
        SendMessageW(control.handle, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                     MAKELPARAM(scale_.device(boxMargin), scale_.device(boxMargin)));
    }
    toolTips_->move(controlId, area);
}

SIZE Win32Window::outerSize(const Scale& scale) const {
    RECT frame = scale.device(Rect{0, 0, width_, height_});
    AdjustWindowRectExForDpi(&frame, windowStyle, FALSE, 0, static_cast<UINT>(scale.dotsPerInch()));
    return {frame.right - frame.left, frame.bottom - frame.top};
}

const Win32Window::Control* Win32Window::find(int controlId, ControlKind kind) const {
    const auto found = controls_.find(controlId);
    return found == controls_.end() || found->second.kind != kind ? nullptr : &found->second;
}

std::unique_ptr<Window> createWindow(std::string_view title, int x, int y, int width, int height,
                                     WindowEvents& events) {
    auto window = std::make_unique<Win32Window>(title, x, y, width, height, events);
    return window->created() ? std::move(window) : nullptr;
}

} // namespace kst::platform
