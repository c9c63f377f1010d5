#pragma once

// The TCP server behind the link to RealTraffic: one listener, one client at a time, every wait can be ended.

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>

namespace kst {

/// One thread works with it (the worker); `cancelWait`, `close` and the queries may be called on any thread.
/// Waits also end by themselves once an exit is under way.
class LinkServer {
public:
    LinkServer();
    ~LinkServer();
    LinkServer(const LinkServer&) = delete;
    LinkServer& operator=(const LinkServer&) = delete;

    /// Listens on all interfaces at `port`, a decimal number or the name of a service; 0 takes a free one.
    /// What was open before is closed. Throws SysErrorException 0 to 6.
    void open(const std::string& port);

    /// Blocks until a client has connected. False at once while one is connected, when the wait was ended,
    /// and when the listener is closed.
    bool waitForClient();

    /// Blocks for one read of at most 8192 bytes. Empty when the client left, on an error, which is logged,
    /// and when the wait was ended.
    std::string receive();

    /// Sends all of the text, or says why not: a client that does not read counts as lost after half a
    /// second. On failure the client is closed.
    std::error_code send(std::string_view text);

    /// Ends a wait that is going on; without one it does nothing.
    void cancelWait();

    /// Ends a wait, sends `farewell` if a client is connected, and closes client and listener.
    void close(std::string_view farewell);

    bool connected() const { return connected_; }
    /// The port bound, 0 while the listener is closed.
    int port() const { return port_; }

private:
    struct Sockets;
    struct Operation;

    template <class Cancel>
    void waitFor(const Operation& operation, Cancel cancel);
    void dropLateCancels();
    std::error_code sendBounded(std::string_view text);
    void closeClient();
    void closeListener();
    [[noreturn]] void failOpen(int code, const std::string& text);

    std::mutex lock_; ///< guards the sockets; held through waits, which `closing_` ends
    std::atomic<bool> connected_{false};
    std::atomic<bool> waiting_{false};
    std::atomic<bool> closing_{false};
    std::atomic<int> port_{0};
    std::unique_ptr<Sockets> sockets_;
};

} // namespace kst
