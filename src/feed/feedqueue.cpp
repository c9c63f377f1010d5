#include "feed/feedqueue.h"

#include "core/log.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "model/units.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <optional>

#include <fmt/format.h>

namespace kst {

namespace {

std::mutex feedLock;
std::deque<FeedMessage> feedQueue;
bool feedOpen = false;
bool overflowing = false;

// A feed that brings more than the worker takes makes its records wait. The log tells it once a minute.
constexpr std::int32_t longWaitTicks = 5 * ticksPerSecond;
constexpr std::int32_t tellAgainTicks = 60 * ticksPerSecond;
std::optional<std::int32_t> slowToldAt;

/// From one tick to a later one, also where the count has wrapped in between.
std::int32_t ticksSince(std::int32_t earlier, std::int32_t now) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(now) - static_cast<std::uint32_t>(earlier));
}

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
    std::unique_lock lock(feedLock);
    const std::size_t count = std::min(limit, feedQueue.size());
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(std::move(feedQueue.front()));
        feedQueue.pop_front();
    }
    if (feedQueue.size() < feedQueueLimit / 2) {
        overflowing = false;
    }
    const std::size_t waiting = feedQueue.size();
    const std::int32_t now = updateCount.load(std::memory_order_relaxed);
    const std::int32_t waitTicks =
        waiting == 0 ? 0 : ticksSince(feedQueue.front().expiry, now) + playDelayTicks;
    lock.unlock();
    if (waitTicks > longWaitTicks && (!slowToldAt || ticksSince(*slowToldAt, now) >= tellAgainTicks)) {
        slowToldAt = now;
        logLine(
            fmt::format("the feed is faster than it can be followed: {} records wait, the oldest for {} s",
                        waiting, waitTicks / ticksPerSecond));
    }
    return count;
}

void resetFeedQueue() {
    const std::lock_guard lock(feedLock);
    feedQueue.clear();
    feedOpen = false;
    overflowing = false;
    slowToldAt.reset();
}

} // namespace kst
