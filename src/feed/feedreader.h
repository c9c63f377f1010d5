#pragma once

// What both readers of the feed have in common: one UDP socket, one thread that receives, one line at a time.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kst {

/// Base of the two readers. The thread body calls `openSocket` and `receiveLoop`; any other thread may call
/// `requestStop` once `openSocket` has returned, and read the counters.
class FeedReader {
public:
    /// A datagram of this many bytes or more is too long.
    static constexpr std::size_t bufferSize = 16'384;

    /// With `countsTraffic` the datagrams and those dropped here are counted (core/reasoncounts.h).
    explicit FeedReader(bool countsTraffic);
    virtual ~FeedReader();
    FeedReader(const FeedReader&) = delete;
    FeedReader& operator=(const FeedReader&) = delete;

    /// Works on the line received. Throws nothing that a line can cause.
    virtual void processLine() = 0;
    /// The thread is leaving its receive loop.
    virtual void stopped() = 0;

    /// Binds the UDP socket, on 127.0.0.1 when RealTraffic is at this PC, else on all interfaces; port 0
    /// takes a free one. Throws SysErrorException 30 to 32.
    void openSocket(int port);
    /// Receives until `requestStop`, then closes the socket and calls `stopped`.
    void receiveLoop();
    /// Asks the reader to stop and ends its receive. Any thread.
    void requestStop();
    /// The port bound, 0 while the socket is closed. Any thread.
    int port() const { return port_.load(); }

    /// Takes one datagram of `length` bytes that stands in `buffer`: what the receive loop does with each.
    void handleDatagram(std::size_t length);
    /// Puts both counters back. Any thread.
    void resetCounters();
    /// Whether datagrams came since the last check. Worker.
    bool movedSinceLastCheck();

    const char* line = nullptr; ///< the received line, in `buffer`
    std::size_t lineLength = 0; ///< up to the first zero byte
    std::atomic<bool> stop{false};
    std::atomic<std::uint32_t> received{0}; ///< datagrams accepted since the reset
    std::atomic<std::uint32_t> receivedAtLastCheck{0};
    std::atomic<bool> silentAtLastCheck{false};
    /// Takes any datagram whole. One that is cut counts as an error on some systems, and Asio then completes
    /// the receive twice.
    std::array<char, 65'536> buffer{};
    std::string lastLine;  ///< for the test whether a datagram came twice
    bool localFeed = true; ///< RealTraffic is at this PC: nothing comes twice, no line is kept

protected:
    std::string_view lineText() const { return {line, lineLength}; }

private:
    struct Socket;
    void receiveNext();

    const bool countsTraffic_;
    std::atomic<int> port_{0};
    std::unique_ptr<Socket> socket_;
};

} // namespace kst
