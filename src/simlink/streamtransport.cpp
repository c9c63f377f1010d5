#include "simlink/streamtransport.h"

#include "core/clock.h"
#include "platform/pipe.h"
#include "simlink/iothread.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include <asio/connect.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <fmt/format.h>

namespace kst {

namespace {

using asio::ip::tcp;

/// A host that answers nothing is given up after this time.
constexpr std::chrono::seconds connectLimit{10};
/// How often a wait for a connection looks whether it is to stop.
constexpr std::chrono::milliseconds stopCheck{10};

struct ReadFailure {
    DisconnectCode code;
    std::uint32_t detail;
};

ReadFailure classify(const asio::error_code& error, SimProtocol protocol) {
    if (error == asio::error::eof) {
        return protocol == SimProtocol::Pipe
                   ? ReadFailure{DisconnectCode::ConnectionGone, disconnectdetail::pipeBroken}
                   : ReadFailure{DisconnectCode::EndOfData, disconnectdetail::endOfData};
    }
    if (error == asio::error::operation_aborted) {
        return {DisconnectCode::Cancelled, disconnectdetail::cancelled};
    }
    if (error == asio::error::connection_reset || error == asio::error::connection_aborted ||
        error == asio::error::broken_pipe) {
        return {DisconnectCode::ConnectionGone, disconnectdetail::remoteDisconnect};
    }
    return {DisconnectCode::IoFailed, disconnectdetail::ioFailed};
}

void endStream(tcp::socket& socket) {
    asio::error_code ignored;
    socket.shutdown(tcp::socket::shutdown_both, ignored);
    socket.close(ignored);
}

void endStream(platform::PipeStream& pipe) {
    asio::error_code ignored;
    pipe.close(ignored);
}

/// Moves the bytes of a transport over a stream. Everything that touches the stream runs on the I/O thread.
template <typename Stream>
class StreamTransport final : public SimTransport {
public:
    StreamTransport(std::shared_ptr<IoThread> io, Stream&& stream, const TransportTarget& target)
        : SimTransport(target.maxReceiveSize), io_(std::move(io)), stream_(std::move(stream)),
          protocol_(target.protocol) {}

private:
    void startReceiving() override {
        asio::post(io_->context(), [this, self = shared_from_this()] { read(); });
    }

    void startSending() override {
        asio::post(io_->context(), inMemory(writeMemory_, [this, self = shared_from_this()] { write(); }));
    }

    void closeStream() override {
        asio::post(io_->context(), [this, self = shared_from_this()] { endStream(stream_); });
    }

    void read() {
        const std::span<std::byte> space = framing_.freeSpace();
        if (space.empty()) {
            disconnect(DisconnectCode::OutOfMemory, disconnectdetail::outOfMemory);
            return;
        }
        stream_.async_read_some(asio::buffer(space.data(), space.size()),
                                inMemory(readMemory_, [this, self = shared_from_this()](
                                                          const asio::error_code& error, std::size_t count) {
                                    if (error && !platform::isPartOfPipeMessage(error)) {
                                        const ReadFailure failure = classify(error, protocol_);
                                        disconnect(failure.code, failure.detail);
                                    } else if (onReceived(count)) {
                                        read();
                                    }
                                }));
    }

    void write() {
        std::span<const std::byte> packet;
        if (!nextToSend(packet)) {
            return;
        }
        asio::async_write(stream_, asio::buffer(packet.data(), packet.size()),
                          inMemory(writeMemory_, [this, self = shared_from_this()](
                                                     const asio::error_code& error, std::size_t) {
                              // The outstanding read reports why; here it only stops.
                              if (!error) {
                                  write();
                              }
                          }));
    }

    std::shared_ptr<IoThread> io_; ///< outlives the stream
    Stream stream_;
    SimProtocol protocol_;
    HandlerMemory readMemory_;
    HandlerMemory writeMemory_;
};

/// A TCP connection in the making, shared by the caller and the operations under way.
struct SocketAttempt : std::enable_shared_from_this<SocketAttempt> {
    std::shared_ptr<IoThread> io = IoThread::shared();
    tcp::resolver resolver{io->context()};
    tcp::socket socket{io->context()};
    std::mutex lock;
    std::condition_variable changed;
    bool done = false;
    bool connected = false;

    void start(const TransportTarget& target) {
        const tcp family = target.protocol == SimProtocol::IPv6 ? tcp::v6() : tcp::v4();
        asio::post(io->context(), [self = shared_from_this(), family, target] {
            self->resolver.async_resolve(
                family, target.address, target.port,
                [self](const asio::error_code& error, const tcp::resolver::results_type& found) {
                    if (error) {
                        self->finish(false);
                        return;
                    }
                    asio::async_connect(self->socket, found,
                                        [self](const asio::error_code& failure, const tcp::endpoint&) {
                                            self->finish(!failure);
                                        });
                });
        });
    }

    void finish(bool success) {
        const std::lock_guard guard(lock);
        done = true;
        connected = success;
        changed.notify_all();
    }

    /// Waits for the end of the attempt; gives it up when it takes too long or is to stop.
    bool wait(const std::function<bool()>& stopped) {
        const auto deadline = monotonicNow() + connectLimit;
        std::unique_lock guard(lock);
        while (!done && !stopped() && monotonicNow() < deadline) {
            changed.wait_for(guard, stopCheck);
        }
        if (!done) {
            asio::post(io->context(), [self = shared_from_this()] {
                asio::error_code ignored;
                self->resolver.cancel();
                self->socket.close(ignored);
            });
        }
        return done && connected;
    }
};

std::shared_ptr<SimTransport> connectSocket(const TransportTarget& target,
                                            const std::function<bool()>& stopped) {
    const auto attempt = std::make_shared<SocketAttempt>();
    attempt->start(target);
    if (!attempt->wait(stopped)) {
        return nullptr;
    }
    if (target.disableNagle) {
        asio::error_code ignored;
        attempt->socket.set_option(tcp::no_delay(true), ignored);
    }
    return std::make_shared<StreamTransport<tcp::socket>>(attempt->io, std::move(attempt->socket), target);
}

std::shared_ptr<SimTransport> connectNamedPipe(const TransportTarget& target,
                                               const std::function<bool()>& stopped) {
    std::shared_ptr<IoThread> io = IoThread::shared();
    platform::PipeStream stream(io->context());
    if (platform::connectPipe(stream, pipeName(target), stopped)) {
        return nullptr;
    }
    return std::make_shared<StreamTransport<platform::PipeStream>>(io, std::move(stream), target);
}

} // namespace

std::string pipeName(const TransportTarget& target) {
    const std::string server = target.address.empty() ? "." : target.address;
    return target.port.empty() ? fmt::format("\\\\{}\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect", server)
                               : fmt::format("\\\\{}\\pipe\\{}", server, target.port);
}

std::shared_ptr<SimTransport> connectTransport(const TransportTarget& target,
                                               const std::function<bool()>& stopped) {
    return target.protocol == SimProtocol::Pipe ? connectNamedPipe(target, stopped)
                                                : connectSocket(target, stopped);
}

} // namespace kst
