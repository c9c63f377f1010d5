// The process entry on Windows: the toolkit, then the program.

#include "platform/entry.h"
#include "platform/ui.h"

#include <memory>

#include <windows.h>

namespace {

/// Ctrl+C and the like, should the program run in a console.
BOOL WINAPI askToClose(DWORD) {
    kst::platform::requestClose();
    return TRUE;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    // A drive without a disk is an error to tell, not a question of the system.
    SetErrorMode(SEM_FAILCRITICALERRORS);
    SetConsoleCtrlHandler(askToClose, TRUE);
    const std::unique_ptr<kst::platform::Toolkit> toolkit = kst::platform::startToolkit();
    return kst::programMain();
}
