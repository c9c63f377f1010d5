#include "platform/singleinstance.h"

#include "platform/win32/utf16.h"

#include <string_view>

#include <windows.h>

namespace kst::platform {

struct SingleInstance::State {
    HANDLE mutex = nullptr;
    bool acquired = false;
};

SingleInstance::SingleInstance(const std::string& name) : state_(std::make_unique<State>()) {
    constexpr std::string_view session = "Local\\";
    const std::string full = name.starts_with(session) ? name : std::string(session) + name;
    SetLastError(ERROR_SUCCESS);
    state_->mutex = CreateMutexW(nullptr, FALSE, wideFromUtf8(full).c_str());
    // A process with more rights may not let this one open its mutex. Where none can be had for any other
    // reason, the program rather starts than not.
    const DWORD error = GetLastError();
    state_->acquired = error != ERROR_ALREADY_EXISTS && error != ERROR_ACCESS_DENIED;
}

SingleInstance::~SingleInstance() {
    if (state_->mutex != nullptr) {
        CloseHandle(state_->mutex);
    }
}

bool SingleInstance::acquired() const {
    return state_->acquired;
}

} // namespace kst::platform
