// What a test that runs outside Windows asks about the window of the program.
//   windowprobe                  prints the window and each control, a line each
//   windowprobe clipboard FILE   puts the text of the file (UTF-8) on the clipboard

#include "platform/win32/utf16.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <windows.h>

#include <commctrl.h>

namespace {

using kst::platform::utf8FromWide;
using kst::platform::wideFromUtf8;

std::wstring textOf(HWND window) {
    const auto length = static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
    std::wstring text(length + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

BOOL CALLBACK printControl(HWND control, LPARAM) {
    const bool checked = SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
    RECT area = {};
    GetWindowRect(control, &area);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&area), 2);
    std::printf("%d %d %d %ld %ld %ld %ld %s\n", GetDlgCtrlID(control),
                IsWindowEnabled(control) != FALSE ? 1 : 0, checked ? 1 : 0, area.left, area.top, area.right,
                area.bottom, utf8FromWide(textOf(control)).c_str());
    return TRUE;
}

BOOL CALLBACK printShownTip(HWND candidate, LPARAM) {
    wchar_t name[64] = {};
    GetClassNameW(candidate, name, 64);
    if (std::wcscmp(name, TOOLTIPS_CLASSW) == 0 && IsWindowVisible(candidate) != FALSE) {
        std::printf("tip %s\n", utf8FromWide(textOf(candidate)).c_str());
    }
    return TRUE;
}

int printWindow() {
    const HWND window = FindWindowW(L"Kestrane_P3D", nullptr);
    if (window == nullptr) {
        return 1;
    }
    RECT client = {};
    GetClientRect(window, &client);
    std::printf("topmost %d\n", (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0 ? 1 : 0);
    std::printf("client %ld %ld\n", client.right, client.bottom);
    EnumChildWindows(window, printControl, 0);
    EnumWindows(printShownTip, 0);
    return 0;
}

int setClipboard(const wchar_t* path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::wstring text = wideFromUtf8(bytes);
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (memory == nullptr || OpenClipboard(nullptr) == FALSE) {
        return 1;
    }
    std::memcpy(GlobalLock(memory), text.c_str(), size);
    GlobalUnlock(memory);
    EmptyClipboard();
    const bool taken = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
    CloseClipboard();
    return taken ? 0 : 1;
}

} // namespace

int wmain(int count, wchar_t** words) {
    return count == 3 && std::wcscmp(words[1], L"clipboard") == 0 ? setClipboard(words[2]) : printWindow();
}
