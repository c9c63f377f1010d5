#include "feed/feedqueue.h"

#include "core/log.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "model/units.h"

#include <algorithm>
#include <deque>
#include <mutex>

#include <fmt/format.h>

namespace kst {

namespace {

std::mutex feedLock;
std::deque<FeedMessage> feedQueue;
bool feedOpen = false;
bool overflowing = false;

// The tick count may pass the largest 32-bit number in a process that runs for months; it then wraps.
std::int32_t dueTick() {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(updateCount.load(std::memory_order_relaxed)) +
                                     static_cast<std::uint32_t>(playDelayTicks));
}

} // namespace

void setFeedOpen(bool open) {
    const std::lock_guard lock(feedLock);
    feedOpen = open;
}

bool pushFeedMessage(FeedMessage&& message) {
    bool lost = false;
    bool firstLost = false;
    {
        const std::lock_guard lock(feedLock);
        if (!feedOpen) {
            return false;
        }
        message.expiry = dueTick();
        if (feedQueue.size() >= feedQueueLimit) {
            feedQueue.pop_front();
            lost = true;
            firstLost = !overflowing;
            overflowing = true;
        }
        feedQueue.push_back(std::move(message));
    }
    if (lost) {
        countReason(Reason::FeedQueueFull);
    }
    if (firstLost) {
        logLine(fmt::format("feed queue is full, {} records wait, the oldest are lost", feedQueueLimit));
    }
    return true;
}

std::size_t takeFeedMessages(std::vector<FeedMessage>& out, std::size_t limit) {
    out.clear();
    const std::lock_guard lock(feedLock);
    const std::size_t count = std::min(limit, feedQueue.size());
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(std::move(feedQueue.front()));
        feedQueue.pop_front();
    }
    if (feedQueue.size() < feedQueueLimit / 2) {
        overflowing = false;
    }
    return count;
}

void resetFeedQueue() {
    const std::lock_guard lock(feedLock);
    feedQueue.clear();
    feedOpen = false;
    overflowing = false;
}

} // namespace kst
