#include "platformui/driver.h"

#include "platform/win32/uipainter.h"
#include "platform/win32/utf16.h"

#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>

#include <windows.h>

#include <commctrl.h>
#include <initguid.h>
#include <oleacc.h>

namespace kst::test {

namespace {

constexpr std::uint64_t fnvOffset = 14695981039346656037U;
constexpr std::uint64_t fnvPrime = 1099511628211U;

/// The thread's window of this class.
HWND windowOfClass(const wchar_t* className) {
    struct Search {
        const wchar_t* className;
        HWND found;
    } search{className, nullptr};
    const auto compare = [](HWND candidate, LPARAM data) -> BOOL {
        auto& wanted = *reinterpret_cast<Search*>(data);
        wchar_t name[64] = {};
        GetClassNameW(candidate, name, 64);
        if (std::wcscmp(name, wanted.className) == 0) {
            wanted.found = candidate;
        }
        return wanted.found == nullptr ? TRUE : FALSE;
    };
    EnumThreadWindows(GetCurrentThreadId(), compare, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr) {
        throw std::runtime_error("there is no window");
    }
    return search.found;
}

HWND window() {
    return windowOfClass(L"Kestrane_P3D");
}

HWND control(int controlId) {
    const HWND found = GetDlgItem(window(), controlId);
    if (found == nullptr) {
        throw std::runtime_error("there is no control " + std::to_string(controlId));
    }
    return found;
}

/// The system gives no input to what is disabled.
void sendInput(HWND target, UINT message, WPARAM wParam, LPARAM lParam = 0) {
    if (IsWindowEnabled(target) != FALSE) {
        SendMessageW(target, message, wParam, lParam);
    }
}

void sendKey(HWND target, WPARAM key, WPARAM character) {
    sendInput(target, WM_KEYDOWN, key);
    sendInput(target, WM_CHAR, character);
    sendInput(target, WM_KEYUP, key);
}

void activate() {
    SetForegroundWindow(window());
    SetActiveWindow(window());
    settle();
}

void moveToEnd(HWND box) {
    constexpr WPARAM end = 100'000;
    SendMessageW(box, EM_SETSEL, end, static_cast<LPARAM>(end));
}

int onScreen(int layoutPixels) {
    return platform::Scale(static_cast<int>(GetDpiForWindow(window()))).device(layoutPixels);
}

int inLayout(LONG pixels) {
    return platform::Scale(static_cast<int>(GetDpiForWindow(window()))).layout(static_cast<int>(pixels));
}

void showAllThatWaits(HWND target) {
    RedrawWindow(target, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

void CALLBACK endSettling(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    platform::quitMessageLoop(0);
}

} // namespace

void settle() {
    // A timer comes after all that was posted, and after the painting.
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, endSettling);
    platform::runMessageLoop();
}

void clickControl(int controlId) {
    const HWND target = control(controlId);
    RECT area = {};
    GetClientRect(target, &area);
    const LPARAM centre = MAKELPARAM(area.right / 2, area.bottom / 2);
    sendInput(target, WM_LBUTTONDOWN, MK_LBUTTON, centre);
    sendInput(target, WM_LBUTTONUP, 0, centre);
}

void pressSpace(int controlId) {
    sendKey(control(controlId), VK_SPACE, L' ');
}

void pressEnter(int controlId) {
    sendKey(control(controlId), VK_RETURN, L'\r');
}

void typeText(int controlId, std::string_view text) {
    const HWND box = control(controlId);
    moveToEnd(box);
    for (const wchar_t letter : platform::wideFromUtf8(text)) {
        sendInput(box, WM_CHAR, letter);
    }
}

void pasteText(int controlId, std::string_view text) {
    const std::wstring wide = platform::wideFromUtf8(text);
    const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    std::memcpy(GlobalLock(memory), wide.c_str(), bytes);
    GlobalUnlock(memory);
    OpenClipboard(window());
    EmptyClipboard();
    SetClipboardData(CF_UNICODETEXT, memory);
    CloseClipboard();
    moveToEnd(control(controlId));
    sendInput(control(controlId), WM_PASTE, 0);
}

bool isChecked(int controlId) {
    return SendMessageW(control(controlId), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void toggleAccessibly(int controlId) {
    sendInput(control(controlId), BM_CLICK, 0);
}

int pressTab() {
    activate();
    const HWND focused = GetFocus() != nullptr ? GetFocus() : window();
    sendKey(focused, VK_TAB, L'\t');
    return GetDlgCtrlID(GetFocus());
}

void focusControl(int controlId) {
    activate();
    SetFocus(control(controlId));
    settle();
}

void clickCloseButton() {
    SendMessageW(window(), WM_SYSCOMMAND, SC_CLOSE, 0);
}

bool windowIsVisible() {
    return IsWindowVisible(window()) != FALSE;
}

int windowWidth() {
    RECT area = {};
    GetClientRect(window(), &area);
    return inLayout(area.right);
}

int windowHeight() {
    RECT area = {};
    GetClientRect(window(), &area);
    return inLayout(area.bottom);
}

bool windowCanBeResized() {
    constexpr LONG_PTR handles = WS_THICKFRAME | WS_MAXIMIZEBOX;
    const int before = windowWidth();
    SetWindowPos(window(), nullptr, 0, 0, onScreen(2 * before), onScreen(before), SWP_NOMOVE | SWP_NOZORDER);
    return windowWidth() != before || (GetWindowLongPtrW(window(), GWL_STYLE) & handles) != 0;
}

bool windowIsTopMost() {
    return (GetWindowLongPtrW(window(), GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

std::string shownToolTip(int controlId) {
    wchar_t text[256] = {};
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.hwnd = window();
    tool.uId = reinterpret_cast<UINT_PTR>(control(controlId));
    tool.lpszText = text;
    SendMessageW(windowOfClass(TOOLTIPS_CLASSW), TTM_GETTEXTW, 256, reinterpret_cast<LPARAM>(&tool));
    return platform::utf8FromWide(text);
}

std::string spokenName(int controlId) {
    IAccessible* object = nullptr;
    void** const target = reinterpret_cast<void**>(&object);
    if (FAILED(AccessibleObjectFromWindow(control(controlId), static_cast<DWORD>(OBJID_CLIENT),
                                          IID_IAccessible, target))) {
        return {};
    }
    VARIANT self = {};
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR name = nullptr;
    std::string result;
    if (object->get_accName(self, &name) == S_OK && name != nullptr) {
        result = platform::utf8FromWide(name);
        SysFreeString(name);
    }
    object->Release();
    return result;
}

bool namesAreTaken() {
    IAccPropServices* service = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&service)))) {
        return false;
    }
    const HRESULT result = service->SetHwndPropStr(window(), static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                                   PROPID_ACC_DESCRIPTION, L"description");
    service->Release();
    return SUCCEEDED(result);
}

platform::Colour pixelAt(int x, int y) {
    showAllThatWaits(window());
    const HDC context = GetDC(window());
    const COLORREF colour = GetPixel(context, onScreen(x), onScreen(y));
    ReleaseDC(window(), context);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour)};
}

std::uint64_t lookOf(int controlId) {
    const HWND target = control(controlId);
    showAllThatWaits(target);
    HideCaret(target);
    RECT area = {};
    GetWindowRect(target, &area);
    const int width = static_cast<int>(area.right - area.left);
    const int height = static_cast<int>(area.bottom - area.top);
    BITMAPINFO description = {};
    description.bmiHeader = {sizeof(BITMAPINFOHEADER), width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &description, DIB_RGB_COLORS, &pixels, nullptr, 0);
    const HDC source = GetWindowDC(target);
    const HDC copy = CreateCompatibleDC(source);
    const HGDIOBJ before = SelectObject(copy, bitmap);
    BitBlt(copy, 0, 0, width, height, source, 0, 0, SRCCOPY);
    GdiFlush();
    std::uint64_t hash = fnvOffset;
    for (const std::uint32_t pixel :
         std::span(static_cast<const std::uint32_t*>(pixels),
                   static_cast<std::size_t>(width) * static_cast<std::size_t>(height))) {
        hash = (hash ^ pixel) * fnvPrime;
    }
    SelectObject(copy, before);
    DeleteDC(copy);
    ReleaseDC(target, source);
    DeleteObject(bitmap);
    ShowCaret(target);
    return hash;
}

} // namespace kst::test
