#include "platform/uiwakeup.h"

#include <algorithm>
#include <atomic>

namespace kst::platform {

namespace {

std::vector<WakeupClient*> clients;

std::atomic<bool> closeAsked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

} // namespace

void addWakeupClient(WakeupClient& client) {
    clients.push_back(&client);
    ringWakeup();
}

void removeWakeupClient(WakeupClient& client) {
    std::erase(clients, &client);
}

void serveWakeupClients() {
    // A client may come or go while another is served.
    const std::vector<WakeupClient*> present = clients;
    for (WakeupClient* client : present) {
        if (std::find(clients.begin(), clients.end(), client) != clients.end()) {
            client->serve();
        }
    }
    if (!clients.empty() && closeAsked.exchange(false)) {
        clients.front()->serveCloseRequest();
    }
}

void requestClose() noexcept {
    closeAsked.store(true);
    ringWakeup();
}

void PostedMessages::post(int message) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(message);
    }
    ringWakeup();
}

void PostedMessages::deliver(WindowEvents& events) {
    std::vector<int> messages;
    {
        const std::lock_guard lock(mutex_);
        messages.swap(waiting_);
    }
    for (const int message : messages) {
        events.posted(message);
    }
}

} // namespace kst::platform
