#include "platform/pipe.h"

#include "platform/win32/utf16.h"

#include <system_error>
#include <utility>

#include <asio/windows/overlapped_ptr.hpp>

#include <windows.h>

namespace kst::platform {

namespace {

/// How long a busy pipe is waited for before `stopped` is asked again. Five seconds of these waits are one
/// wait of the system: each ends with another attempt.
constexpr DWORD busySliceMs = 50;

/// What the system keeps of each direction until the other side reads.
constexpr DWORD bufferBytes = 64 * 1024;

asio::error_code lastError() {
    return {static_cast<int>(GetLastError()), asio::error::get_system_category()};
}

} // namespace

asio::error_code connectPipe(PipeStream& stream, const std::string& name,
                             const std::function<bool()>& stopped) {
    const std::wstring wideName = wideFromUtf8(name);
    while (!stopped()) {
        const HANDLE pipe = CreateFileW(wideName.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
        if (pipe != INVALID_HANDLE_VALUE) {
            asio::error_code error;
            stream.assign(pipe, error);
            if (error) {
                CloseHandle(pipe);
            }
            return error;
        }
        if (GetLastError() != ERROR_PIPE_BUSY) {
            return lastError();
        }
        WaitNamedPipeW(wideName.c_str(), busySliceMs);
    }
    return asio::error::operation_aborted;
}

bool isPartOfPipeMessage(const asio::error_code& error) {
    return error.category() == asio::error::get_system_category() && error.value() == ERROR_MORE_DATA;
}

/// There is always one instance of the pipe that waits for a caller: a caller finds the name as long as the
/// listener lives.
struct PipeListener::State {
    State(asio::io_context& context, const std::string& pipeName)
        : name(wideFromUtf8(pipeName)), waiting(context) {}

    /// Makes the next instance; `first` is FILE_FLAG_FIRST_PIPE_INSTANCE where the name must be free.
    asio::error_code makeInstance(DWORD first);

    std::wstring name;
    PipeStream waiting;
};

asio::error_code PipeListener::State::makeInstance(DWORD first) {
    const HANDLE pipe = CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_REJECT_REMOTE_CLIENTS,
                                         PIPE_UNLIMITED_INSTANCES, bufferBytes, bufferBytes, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) {
        return lastError();
    }
    waiting = PipeStream(waiting.get_executor());
    asio::error_code error;
    waiting.assign(pipe, error);
    return error;
}

PipeListener::PipeListener(asio::io_context& context, const std::string& name)
    : state_(std::make_shared<State>(context, name)) {
    if (const asio::error_code error = state_->makeInstance(FILE_FLAG_FIRST_PIPE_INSTANCE)) {
        throw std::system_error(error, name);
    }
}

PipeListener::~PipeListener() {
    asio::error_code ignored;
    state_->waiting.close(ignored);
}

void PipeListener::asyncAccept(std::function<void(asio::error_code, PipeStream)> accepted) {
    // The listener may be gone by the time that the accept ends.
    const auto finish = [state = state_, accepted = std::move(accepted)](asio::error_code error,
                                                                         std::size_t) {
        PipeStream connected(state->waiting.get_executor());
        if (!error) {
            connected = std::move(state->waiting);
            error = state->makeInstance(0);
        }
        accepted(error, std::move(connected));
    };
    asio::windows::overlapped_ptr overlapped(state_->waiting.get_executor(), finish);
    const BOOL connected = ConnectNamedPipe(state_->waiting.native_handle(), overlapped.get());
    const asio::error_code error = connected ? asio::error_code() : lastError();
    if (error.value() == ERROR_IO_PENDING) {
        overlapped.release();
    } else {
        // A caller that came since the instance was made is connected already.
        overlapped.complete(error.value() == ERROR_PIPE_CONNECTED ? asio::error_code() : error, 0);
    }
}

void PipeListener::cancel() {
    asio::error_code ignored;
    state_->waiting.cancel(ignored);
}

} // namespace kst::platform
