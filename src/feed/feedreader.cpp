#include "feed/feedreader.h"

#include "core/clock.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "core/socketerrors.h"

#include <algorithm>
#include <cstring>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <asio/post.hpp>
#include <fmt/format.h>

namespace kst {

namespace {
using asio::ip::udp;

enum SocketFailure : int { startFailed = 30, createFailed = 31, bindFailed = 32 };

// A receive that fails at once, again and again, must not keep a processor busy.
constexpr std::chrono::milliseconds pauseAfterError{10};
} // namespace

struct FeedReader::Socket {
    asio::io_context context{1};
    udp::socket udpSocket{context};
    udp::endpoint sender;
};

FeedReader::FeedReader(bool countsTraffic) : countsTraffic_(countsTraffic) {}

FeedReader::~FeedReader() = default;

void FeedReader::openSocket(int port) {
    stop = false;
    localFeed = realTrafficHere;
    lastLine.clear();
    try {
        socket_ = std::make_unique<Socket>();
    } catch (const std::system_error& e) {
        throw SysErrorException(startFailed, fmt::format("WSA startup error: {}", socketErrorText(e.code())));
    }
    std::error_code error;
    udp::socket& udpSocket = socket_->udpSocket;
    udpSocket.open(udp::v4(), error);
    if (error) {
        throw SysErrorException(
            createFailed, fmt::format("failed to create the socket with error: {}", socketErrorText(error)));
    }
    const asio::ip::address_v4 address =
        localFeed ? asio::ip::address_v4::loopback() : asio::ip::address_v4::any();
    udpSocket.bind(udp::endpoint(address, static_cast<std::uint16_t>(port)), error);
    if (error) {
        throw SysErrorException(
            bindFailed, fmt::format("bind to stream socket failed with error: {}", socketErrorText(error)));
    }
    port_ = udpSocket.local_endpoint(error).port();
}

void FeedReader::receiveLoop() {
    receiveNext();
    socket_->context.run();
    std::error_code ignored;
    socket_->udpSocket.close(ignored);
    port_ = 0;
    stopped();
}

void FeedReader::receiveNext() {
    if (stop) {
        return;
    }
    socket_->udpSocket.async_receive_from(asio::buffer(buffer), socket_->sender,
                                          [this](const std::error_code& error, std::size_t length) {
                                              if (!error) {
                                                  handleDatagram(std::min(length, bufferSize));
                                              } else if (error != asio::error::operation_aborted) {
                                                  sleepFor(pauseAfterError);
                                              }
                                              receiveNext();
                                          });
}

void FeedReader::requestStop() {
    stop = true;
    if (socket_) {
        // Only the thread that runs the context may touch the socket.
        asio::post(socket_->context, [this] {
            std::error_code ignored;
            socket_->udpSocket.cancel(ignored);
        });
    }
}

void FeedReader::handleDatagram(std::size_t length) {
    if (length == 0) {
        return;
    }
    if (countsTraffic_) {
        countHappening(Happening::LinesHeard);
    }
    if (length >= bufferSize) {
        logLine(fmt::format("buffer overrun: {} bytes", length));
        if (countsTraffic_) {
            countReason(Reason::LineTooLong);
        }
        return;
    }
    buffer[length] = '\0';
    line = buffer.data();
    lineLength = std::strlen(line);
    received.fetch_add(1, std::memory_order_relaxed);
    if (!localFeed) {
        if (lineText() == lastLine) {
            if (countsTraffic_) {
                countReason(Reason::LineRepeated);
            }
            return;
        }
        lastLine.assign(line, lineLength);
    }
    processLine();
}

void FeedReader::resetCounters() {
    received = 0;
    receivedAtLastCheck = 0;
}

bool FeedReader::movedSinceLastCheck() {
    const std::uint32_t now = received;
    return receivedAtLastCheck.exchange(now) != now;
}

} // namespace kst
