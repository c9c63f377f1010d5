#pragma once

// What the windows of the process share: the bell that other threads ring to get the user interface thread's
// attention.

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

/// Has every client's `serve` called soon. Any thread; never waits.
void ringWakeup() noexcept;

/// Runs the message loop inside a message, until `quitMessageLoop` or the time is over. The loop outside then
/// ends as well.
void runNestedMessageLoop(unsigned limitMilliseconds);

} // namespace kst::platform
