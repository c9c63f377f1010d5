#include "feed/linkserver.h"

#include "core/exceptions.h"
#include "core/log.h"
#include "core/runstate.h"
#include "core/socketerrors.h"
#include "feed/feedtext.h"

#include <chrono>
#include <limits>
#include <optional>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <fmt/format.h>

namespace kst {

namespace {

using asio::ip::tcp;

enum OpenFailure : int {
    startFailed = 0,
    resolveFailed = 1,
    createFailed = 2,
    modeFailed = 3,
    optionFailed = 4,
    bindFailed = 5,
    listenFailed = 6
};

constexpr std::size_t longestReply = 8192;

/// How long a client that does not read may hold up a send.
constexpr std::chrono::milliseconds sendLimit{500};
/// How often a wait looks whether an exit is under way.
constexpr std::chrono::milliseconds waitSlice{50};

tcp::endpoint resolvePort(asio::io_context& context, const std::string& port, std::error_code& error) {
    const std::optional<std::uint32_t> number = digitsAtStart(port);
    if (number && *number > std::numeric_limits<std::uint16_t>::max()) {
        // The resolver would cut such a number to 16 bits.
        error = asio::error::service_not_found;
        return {};
    }
    tcp::resolver resolver(context);
    const auto found = resolver.resolve(tcp::v4(), "", port, tcp::resolver::passive, error);
    return error ? tcp::endpoint() : found.begin()->endpoint();
}

} // namespace

// The context runs only inside the calls of the server, under its lock.
struct LinkServer::Sockets {
    asio::io_context context{1};
    tcp::acceptor listener{context};
    tcp::socket client{context};
    bool receiving = false;
};

/// One asynchronous operation: whether it has ended, and how.
struct LinkServer::Operation {
    bool finished = false;
    std::error_code error;
    std::size_t length = 0;

    void finish(const std::error_code& result, std::size_t bytes = 0) {
        finished = true;
        error = result;
        length = bytes;
    }
};

LinkServer::LinkServer() = default;
LinkServer::~LinkServer() = default;

void LinkServer::closeClient() {
    std::error_code ignored;
    connected_ = false;
    sockets_->client.shutdown(tcp::socket::shutdown_both, ignored);
    sockets_->client.close(ignored);
}

void LinkServer::closeListener() {
    std::error_code ignored;
    port_ = 0;
    sockets_->listener.close(ignored);
}

void LinkServer::failOpen(int code, const std::string& text) {
    closeListener();
    throw SysErrorException(code, text);
}

void LinkServer::open(const std::string& port) {
    const std::lock_guard guard(lock_);
    if (!sockets_) {
        try {
            sockets_ = std::make_unique<Sockets>();
        } catch (const std::system_error& e) {
            throw SysErrorException(
                startFailed, fmt::format("WSAStartup failed with error {}", socketErrorText(e.code())));
        }
    }
    closeClient();
    closeListener();
    std::error_code error;
    tcp::acceptor& listener = sockets_->listener;
    const tcp::endpoint endpoint = resolvePort(sockets_->context, port, error);
    if (error) {
        failOpen(resolveFailed, fmt::format("getaddrinfo failed with error {}", socketErrorText(error)));
    }
    listener.open(tcp::v4(), error);
    if (error) {
        failOpen(createFailed, fmt::format("socket failed with error {}", socketErrorText(error)));
    }
    listener.non_blocking(false, error);
    if (error) {
        failOpen(modeFailed, fmt::format("ioctlsocket failed with error {}", socketErrorText(error)));
    }
    listener.set_option(tcp::acceptor::reuse_address(true), error);
    if (error) {
        failOpen(optionFailed, "setsockopt(SO_REUSEADDR) failed");
    }
    listener.bind(endpoint, error);
    if (error) {
        failOpen(bindFailed,
                 fmt::format("Bind failed at port {} with error {}", port, socketErrorText(error)));
    }
    listener.listen(tcp::acceptor::max_listen_connections, error);
    if (error) {
        failOpen(listenFailed, fmt::format("listen failed with error {}", socketErrorText(error)));
    }
    port_ = listener.local_endpoint(error).port();
}

/// Runs until the operation has ended. `cancel` ends it once an exit or a close is under way.
template <class Cancel>
void LinkServer::waitFor(const Operation& operation, Cancel cancel) {
    waiting_ = true;
    while (!operation.finished) {
        if (stopAsked() || closing_) {
            cancel();
        }
        sockets_->context.run_for(waitSlice);
    }
    waiting_ = false;
}

/// A cancel that came too late for its wait must not end the next one.
void LinkServer::dropLateCancels() {
    sockets_->context.restart();
    sockets_->context.poll();
    sockets_->context.restart();
}

bool LinkServer::waitForClient() {
    const std::lock_guard guard(lock_);
    if (connected_ || port_ == 0) {
        return false;
    }
    dropLateCancels();
    Sockets& s = *sockets_;
    Operation accepted;
    s.listener.async_accept(s.client, [&](const std::error_code& error) { accepted.finish(error); });
    waitFor(accepted, [&] {
        std::error_code ignored;
        s.listener.cancel(ignored);
    });
    if (accepted.error) {
        closeClient();
        return false;
    }
    std::error_code error;
    s.client.set_option(tcp::no_delay(true), error);
    if (error) {
        const std::string text =
            fmt::format("{} setsockopt failed with error {}", timeOfDay(), socketErrorText(error));
        logLine(fmt::format("waitForClient interrupted: {}", text));
        closeClient();
        return false;
    }
    connected_ = true;
    return true;
}

std::string LinkServer::receive() {
    const std::lock_guard guard(lock_);
    if (!sockets_) {
        return {};
    }
    dropLateCancels();
    Sockets& s = *sockets_;
    std::string reply(longestReply, '\0');
    Operation received;
    s.receiving = true;
    s.client.async_read_some(asio::buffer(reply), [&](const std::error_code& error, std::size_t length) {
        received.finish(error, length);
    });
    waitFor(received, [&] {
        std::error_code ignored;
        s.client.cancel(ignored);
    });
    s.receiving = false;
    if (received.error && received.error != asio::error::eof &&
        received.error != asio::error::operation_aborted) {
        logLine(fmt::format("receive: {}", socketErrorText(received.error)));
    }
    reply.resize(received.length);
    return reply;
}

/// With the lock held.
std::error_code LinkServer::sendBounded(std::string_view text) {
    Sockets& s = *sockets_;
    Operation sent;
    s.context.restart();
    asio::async_write(s.client, asio::buffer(text),
                      [&](const std::error_code& error, std::size_t length) { sent.finish(error, length); });
    s.context.run_for(sendLimit);
    if (sent.finished) {
        return sent.error;
    }
    std::error_code ignored;
    s.client.cancel(ignored);
    while (!sent.finished) {
        s.context.run_one();
    }
    return asio::error::timed_out;
}

std::error_code LinkServer::send(std::string_view text) {
    const std::lock_guard guard(lock_);
    if (!connected_) {
        return asio::error::not_connected;
    }
    const std::error_code error = sendBounded(text);
    if (error) {
        closeClient();
    }
    return error;
}

void LinkServer::cancelWait() {
    if (!waiting_) {
        return;
    }
    // Only the thread that runs the context may touch the sockets.
    asio::post(sockets_->context, [this] {
        std::error_code ignored;
        sockets_->listener.cancel(ignored);
        if (sockets_->receiving) {
            sockets_->client.cancel(ignored);
        }
    });
}

void LinkServer::close(std::string_view farewell) {
    closing_ = true;
    cancelWait();
    const std::lock_guard guard(lock_);
    if (sockets_) {
        if (connected_) {
            sendBounded(farewell);
        }
        closeListener();
        closeClient();
    }
    closing_ = false;
}

} // namespace kst
