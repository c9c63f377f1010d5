#pragma once

// How other threads reach the user interface thread: they leave what they want and ring a bell, which each
// system has in its own form.

#include "platform/ui.h"

#include <mutex>
#include <vector>

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

/// Has `serveWakeupClients` called soon. Any thread, also from a signal handler. Defined for each system.
void ringWakeup() noexcept;
/// The bell was heard: has every client's `serve` called, then passes on a request to close. User interface
/// thread.
void serveWakeupClients();

/// Numbers that any thread posts to the owner of a window.
class PostedMessages {
public:
    /// Any thread.
    void post(int message);
    /// Hands over what waits, in the order of the calls. User interface thread.
    void deliver(WindowEvents& events);

private:
    std::mutex mutex_; ///< guards what waits
    std::vector<int> waiting_;
};

} // namespace kst::platform
