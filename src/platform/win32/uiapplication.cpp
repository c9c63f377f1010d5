#include "platform/win32/uiapplication.h"

#include "platform/ui.h"
#include "platform/uiwakeup.h"

#include <atomic>
#include <system_error>

#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <uxtheme.h>

namespace kst::platform {

namespace {

constexpr wchar_t bellClass[] = L"KestraneBell";
constexpr UINT bellMessage = WM_APP;

// A window that is never seen, for the message that wakes the loop: unlike a message to the thread it also
// arrives while the system runs a loop of its own, as for a menu or while the window is dragged.
std::atomic<HWND> bell{nullptr};
std::atomic<bool> workWaits{false};

void answerBell() {
    if (workWaits.exchange(false)) {
        serveWakeupClients();
    }
}

LRESULT CALLBACK bellProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == bellMessage) {
        answerBell();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

[[noreturn]] void fail(const char* what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

void dispatch(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
    // When the queue of messages was full, the one that wakes was lost; then this loop was busy, and serves.
    answerBell();
}

class Win32Toolkit final : public Toolkit {
public:
    Win32Toolkit() : comReady_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        INITCOMMONCONTROLSEX controls = {sizeof(INITCOMMONCONTROLSEX),
                                         ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
        InitCommonControlsEx(&controls);
        BufferedPaintInit();

        WNDCLASSEXW description = {};
        description.cbSize = sizeof description;
        description.lpfnWndProc = bellProcedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = bellClass;
        if (RegisterClassExW(&description) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
            fail("RegisterClassExW");
        }
        const HWND window = CreateWindowExW(0, bellClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                            description.hInstance, nullptr);
        if (window == nullptr) {
            fail("CreateWindowExW");
        }
        bell.store(window);
        if (workWaits.load()) {
            PostMessageW(window, bellMessage, 0, 0);
        }
    }
    ~Win32Toolkit() override {
        DestroyWindow(bell.exchange(nullptr));
        BufferedPaintUnInit();
        if (comReady_) {
            CoUninitialize();
        }
    }
    Win32Toolkit(const Win32Toolkit&) = delete;
    Win32Toolkit& operator=(const Win32Toolkit&) = delete;

private:
    bool comReady_;
};

} // namespace

void ringWakeup() noexcept {
    if (workWaits.exchange(true)) {
        return;
    }
    if (const HWND window = bell.load(); window != nullptr) {
        PostMessageW(window, bellMessage, 0, 0);
    }
}

void runNestedMessageLoop(unsigned limitMilliseconds) {
    const ULONGLONG end = GetTickCount64() + limitMilliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
        MSG message = {};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (message.message == WM_QUIT) {
                PostQuitMessage(static_cast<int>(message.wParam));
                return;
            }
            dispatch(message);
        }
    }
}

std::unique_ptr<Toolkit> startToolkit() {
    return std::make_unique<Win32Toolkit>();
}

int runMessageLoop() {
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        dispatch(message);
    }
    return static_cast<int>(message.wParam);
}

void quitMessageLoop(int result) {
    PostQuitMessage(result);
}

} // namespace kst::platform
