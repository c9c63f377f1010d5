#pragma once

#include "core/clock.h"

#include <atomic>

namespace kst::test {

/// Virtual time for one test: sleeping advances it at once. It begins at 2024-03-04 10:00:00 UTC, a Monday.
class VirtualTime : public TimeSource {
public:
    VirtualTime();
    ~VirtualTime() override;
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    std::chrono::nanoseconds monotonic() override { return now_.load(); }
    std::chrono::system_clock::time_point wall() override;
    void sleepUntil(std::chrono::nanoseconds deadline) override;
    void advance(std::chrono::nanoseconds by);

private:
    std::atomic<std::chrono::nanoseconds> now_{std::chrono::nanoseconds{0}};
};

} // namespace kst::test
