#include "platform/pipe.h"

#include "platform/linux/runtimefolder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include <asio/local/stream_protocol.hpp>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kst::platform {

namespace {

using Protocol = asio::local::stream_protocol;

constexpr std::string_view localPrefix = R"(\\.\pipe\)";
/// Between two attempts on a pipe whose server has too many callers waiting.
constexpr int busyWaitMs = 10;

/// The folder of this user's pipes; empty when there is none that is safe to use.
std::filesystem::path pipeFolder() {
    const std::filesystem::path session = xdgRuntimeFolder();
    return session.empty() ? fallbackRuntimeFolder() : session / "pipe";
}

/// The socket's path for a pipe of this machine; nothing for another server or a name that leaves the folder.
std::optional<std::filesystem::path> socketPath(const std::string& name) {
    std::filesystem::path path = pipeFolder();
    if (path.empty() || !name.starts_with(localPrefix)) {
        return std::nullopt;
    }
    const std::string_view rest = std::string_view(name).substr(localPrefix.size());
    for (std::size_t begin = 0; begin <= rest.size();) {
        const std::size_t end = std::min(rest.find('\\', begin), rest.size());
        const std::string_view part = rest.substr(begin, end - begin);
        if (part.empty() || part == "." || part == ".." || part.find('/') != std::string_view::npos) {
            return std::nullopt;
        }
        path /= part;
        begin = end + 1;
    }
    if (path.native().size() >= sizeof(sockaddr_un::sun_path)) {
        return std::nullopt;
    }
    return path;
}

sockaddr_un socketAddress(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    return address;
}

/// A new connection to the socket, or -1 with `errno`.
int connectSocket(const std::filesystem::path& path) {
    // Not blocking: a full queue of callers is to be reported, not waited for inside the system.
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const sockaddr_un address = socketAddress(path);
    if (socket < 0 || ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return socket;
    }
    const int error = errno;
    ::close(socket);
    errno = error;
    return -1;
}

} // namespace

asio::error_code connectPipe(PipeStream& stream, const std::string& name,
                             const std::function<bool()>& stopped) {
    const std::optional<std::filesystem::path> path = socketPath(name);
    if (!path) {
        return asio::error::host_unreachable;
    }
    while (!stopped()) {
        const int socket = connectSocket(*path);
        if (socket >= 0) {
            asio::error_code error;
            stream.assign(Protocol(), socket, error);
            return error;
        }
        if (errno != EAGAIN) {
            return {errno, asio::system_category()};
        }
        ::poll(nullptr, 0, busyWaitMs);
    }
    return asio::error::operation_aborted;
}

bool isPartOfPipeMessage(const asio::error_code&) {
    return false;
}

struct PipeListener::State {
    std::filesystem::path path;
    Protocol::acceptor acceptor;
    std::function<void(asio::error_code, PipeStream)> accepted;
};

PipeListener::PipeListener(asio::io_context& context, const std::string& name) {
    const std::optional<std::filesystem::path> path = socketPath(name);
    if (!path) {
        throw std::system_error(std::make_error_code(std::errc::invalid_argument), name);
    }
    std::filesystem::create_directories(path->parent_path());
    // A socket that nobody serves was left behind by a process that ended without removing it.
    if (const int served = connectSocket(*path); served >= 0) {
        ::close(served);
        throw std::system_error(std::make_error_code(std::errc::address_in_use), name);
    }
    std::error_code ignored;
    std::filesystem::remove(*path, ignored);
    state_ = std::make_shared<State>(State{*path, Protocol::acceptor(context), {}});
    state_->acceptor.open();
    state_->acceptor.bind(Protocol::endpoint(path->native()));
    state_->acceptor.listen();
}

PipeListener::~PipeListener() {
    std::error_code ignored;
    std::filesystem::remove(state_->path, ignored);
}

void PipeListener::asyncAccept(std::function<void(asio::error_code, PipeStream)> accepted) {
    state_->acceptor.async_accept(std::move(accepted));
}

void PipeListener::cancel() {
    asio::error_code ignored;
    state_->acceptor.cancel(ignored);
}

} // namespace kst::platform
