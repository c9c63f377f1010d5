#pragma once

// Named pipes behind one interface: real named pipes on Windows, local stream sockets on Linux. The names are
// the Windows names, "\\.\pipe\A\B" ("\\SERVER\pipe\..." for another machine, which only Windows reaches).

#include <asio/error_code.hpp>
#include <asio/io_context.hpp>

#ifdef ASIO_HAS_WINDOWS_STREAM_HANDLE
#include <asio/windows/stream_handle.hpp>
#else
#include <asio/local/stream_protocol.hpp>
#endif

#include <functional>
#include <memory>
#include <string>

namespace kst::platform {

/// An asynchronous byte stream: async_read_some, async_write_some, cancel, close.
#ifdef ASIO_HAS_WINDOWS_STREAM_HANDLE
using PipeStream = asio::windows::stream_handle;
#else
using PipeStream = asio::local::stream_protocol::socket;
#endif

/// Connects to a pipe's server. A pipe that is busy is waited for up to 5 s at a time and tried again; any
/// other failure gives up. Blocks the caller; ends early once `stopped()` is true.
asio::error_code connectPipe(PipeStream& stream, const std::string& name,
                             const std::function<bool()>& stopped);

/// Whether a read that ended with this error delivered a part of a message, the rest of which the next read
/// brings: a pipe that keeps messages apart reports a buffer that was too small that way.
bool isPartOfPipeMessage(const asio::error_code& error);

/// A pipe's server side: accepts one client after the other. Used by the stand-in simulator.
class PipeListener {
public:
    /// Throws std::system_error when the name cannot be served.
    PipeListener(asio::io_context& context, const std::string& name);
    ~PipeListener();
    PipeListener(const PipeListener&) = delete;
    PipeListener& operator=(const PipeListener&) = delete;
    /// Calls `accepted` on the context's thread with the next client's stream, or with an error.
    void asyncAccept(std::function<void(asio::error_code, PipeStream)> accepted);
    /// Ends a waiting accept. Call it on the context's thread.
    void cancel();

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace kst::platform
