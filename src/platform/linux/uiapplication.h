#pragma once

// What the Qt windows share: the bell that other threads and signal handlers ring to get the user interface
// thread's attention.

namespace kst::platform {

/// Whoever takes work from outside the user interface thread: a window.
class WakeupClient {
public:
    virtual ~WakeupClient() = default;
    /// Serve what is pending. User interface thread.
    virtual void serve() = 0;
    /// The process was asked to close. User interface thread.
    virtual void serveCloseRequest() = 0;
};

/// User interface thread.
void addWakeupClient(WakeupClient& client);
void removeWakeupClient(WakeupClient& client);

/// Has every client's `serve` called soon. Any thread, also from a signal handler.
void ringWakeup() noexcept;

} // namespace kst::platform
