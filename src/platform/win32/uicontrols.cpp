#include "platform/win32/uicontrols.h"

#include "platform/uilook.h"
#include "platform/win32/utf16.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kst::platform {

namespace {

// The frame of a text box, layout pixels: its upper and lower side leave a line of text all the room there
// is.
constexpr int boxFrameSide = 2;
constexpr int boxFrameTop = 1;

constexpr int tabCharacter = 9;
constexpr int enterCharacter = 13;

bool isKeyDown(int key) {
    return GetKeyState(key) < 0;
}

bool isNavigation(UINT message, WPARAM key) {
    return message == WM_KEYDOWN && key == VK_TAB && !isKeyDown(VK_CONTROL);
}

void drawBoxFrame(HWND box, const Scale& scale) {
    RECT area = {};
    GetWindowRect(box, &area);
    OffsetRect(&area, -area.left, -area.top);
    const bool focused = GetFocus() == box;
    const bool enabled = IsWindowEnabled(box) != FALSE;
    const HDC context = GetWindowDC(box);
    const int top = scale.device(boxFrameTop);
    const int side = scale.device(boxFrameSide);
    if (focused) {
        drawFrame(context, area, side, top, toGdi(look::focus));
    } else {
        RECT inner = area;
        InflateRect(&inner, -scale.device(1), -top);
        drawFrame(context, inner, side - scale.device(1), 0,
                  toGdi(enabled ? textBoxColour : look::disabledBoxFill));
        drawFrame(context, area, scale.device(1), top, toGdi(enabled ? look::frame : look::disabledFrame));
    }
    ReleaseDC(box, context);
}

LRESULT CALLBACK textBoxProcedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                  DWORD_PTR data) noexcept {
    auto& host = *reinterpret_cast<ControlHost*>(data);
    if (isNavigation(message, wParam)) {
        host.moveFocus(box, isKeyDown(VK_SHIFT));
        return 0;
    }
    switch (message) {
    case WM_CHAR:
        // The system's own box answers both with a beep.
        if (wParam == enterCharacter && IsWindowEnabled(box) != FALSE) {
            host.enterPressed(GetDlgCtrlID(box));
            return 0;
        }
        if (wParam == enterCharacter || wParam == tabCharacter) {
            return 0;
        }
        break;
    case WM_NCCALCSIZE: {
        const LRESULT result = DefSubclassProc(box, message, wParam, lParam);
        // With either parameter the message carries the rectangle first.
        InflateRect(reinterpret_cast<RECT*>(lParam), -host.scale().device(boxFrameSide),
                    -host.scale().device(boxFrameTop));
        return result;
    }
    case WM_NCPAINT:
        drawBoxFrame(box, host.scale());
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case WM_ENABLE: {
        const LRESULT result = DefSubclassProc(box, message, wParam, lParam);
        RedrawWindow(box, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
        return result;
    }
    default:
        break;
    }
    return DefSubclassProc(box, message, wParam, lParam);
}

LRESULT CALLBACK buttonProcedure(HWND button, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                 DWORD_PTR data) noexcept {
    auto& host = *reinterpret_cast<ControlHost*>(data);
    if (isNavigation(message, wParam)) {
        host.moveFocus(button, isKeyDown(VK_SHIFT));
        return 0;
    }
    const bool pushButton = (GetWindowLongPtrW(button, GWL_STYLE) & BS_TYPEMASK) == BS_PUSHBUTTON;
    if (message == WM_KEYDOWN && wParam == VK_RETURN && pushButton && IsWindowEnabled(button) != FALSE) {
        SendMessageW(GetParent(button), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED),
                     reinterpret_cast<LPARAM>(button));
        return 0;
    }
    return DefSubclassProc(button, message, wParam, lParam);
}

void drawMark(HDC context, const RECT& area, int thickness, COLORREF colour) {
    std::array<POINT, look::checkMark.size()> mark{};
    std::transform(look::checkMark.begin(), look::checkMark.end(), mark.begin(), [&](const look::Share& at) {
        return POINT{area.left + std::lround(at.x * (area.right - area.left)),
                     area.top + std::lround(at.y * (area.bottom - area.top))};
    });
    const LOGBRUSH brush = {BS_SOLID, colour, 0};
    const HPEN pen = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_SQUARE | PS_JOIN_MITER,
                                  static_cast<DWORD>(thickness), &brush, 0, nullptr);
    const HGDIOBJ before = SelectObject(context, pen);
    Polyline(context, mark.data(), static_cast<int>(mark.size()));
    SelectObject(context, before);
    DeleteObject(pen);
}

} // namespace

HWND createControl(HWND parent, const ControlDescription& control, ControlHost& host) {
    const wchar_t* windowClass = WC_BUTTONW;
    DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    std::wstring text;
    switch (control.kind) {
    case ControlKind::CheckBox:
        // Without the automatic mark: the owner sets it.
        style |= BS_CHECKBOX;
        text = wideFromUtf8(control.accessibleName);
        break;
    case ControlKind::TextBox:
        windowClass = WC_EDITW;
        style |= ES_AUTOHSCROLL;
        break;
    case ControlKind::PushButton:
        style |= BS_PUSHBUTTON;
        text = wideFromUtf8(control.caption);
        break;
    }
    if (!control.enabled) {
        style |= WS_DISABLED;
    }
    const RECT area = host.scale().device(control.area);
    const HWND handle =
        CreateWindowExW(0, windowClass, text.c_str(), style, area.left, area.top, area.right - area.left,
                        area.bottom - area.top, parent, reinterpret_cast<HMENU>(INT_PTR{control.id}),
                        GetModuleHandleW(nullptr), nullptr);
    if (handle == nullptr) {
        return nullptr;
    }
    const bool textBox = control.kind == ControlKind::TextBox;
    SetWindowSubclass(handle, textBox ? textBoxProcedure : buttonProcedure, 0,
                      reinterpret_cast<DWORD_PTR>(&host));
    if (textBox) {
        if (control.textLimit > 0) {
            SendMessageW(handle, EM_SETLIMITTEXT, static_cast<WPARAM>(control.textLimit), 0);
        }
        // Has the frame's room taken from the client area.
        SetWindowPos(handle, nullptr, 0, 0, 0, 0,
                     SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    return handle;
}

LRESULT drawCheckBox(const NMCUSTOMDRAW& stage, const Scale& scale) {
    if (stage.dwDrawStage != CDDS_PREPAINT) {
        return CDRF_DODEFAULT;
    }
    const HWND box = stage.hdr.hwndFrom;
    const bool enabled = IsWindowEnabled(box) != FALSE;
    const bool focused = GetFocus() == box;
    const bool pressed = (SendMessageW(box, BM_GETSTATE, 0, 0) & BST_PUSHED) != 0;
    RECT area = {};
    GetClientRect(box, &area);
    const int border = scale.device(focused ? look::focusFrame : look::plainFrame);
    fillArea(stage.hdc, area,
             toGdi(!enabled  ? look::disabledCheckBoxFill
                   : pressed ? look::pressedFill
                             : look::checkBoxFill));
    drawFrame(stage.hdc, area, border, border,
              toGdi(!enabled  ? look::disabledFrame
                    : focused ? look::focus
                              : look::frame));
    if (SendMessageW(box, BM_GETCHECK, 0, 0) == BST_CHECKED) {
        drawMark(stage.hdc, area, scale.device(2), toGdi(enabled ? look::mark : look::disabledFrame));
    }
    return CDRF_SKIPDEFAULT;
}

std::wstring windowText(HWND control) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)), L'\0');
    // The room of the closing null is the string's own.
    const int length = GetWindowTextW(control, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::wstring_view withinLimit(std::wstring_view text, int limit) {
    const auto most = static_cast<std::size_t>(limit);
    if (limit <= 0 || text.size() <= most) {
        return text;
    }
    return text.substr(0, IS_HIGH_SURROGATE(text[most - 1]) ? most - 1 : most);
}

} // namespace kst::platform
