#pragma once

#include "core/clock.h"

namespace kst {

/// Keeps something from happening more often than once per interval, for example the repaint of a progress
/// text. One thread.
class Pacer {
public:
    explicit Pacer(std::chrono::milliseconds interval)
        : interval_(interval), next_(monotonicNow() + interval) {}

    /// True once an interval has gone by since the construction or the last true answer.
    bool due() {
        const std::chrono::nanoseconds now = monotonicNow();
        if (now < next_) {
            return false;
        }
        next_ = now + interval_;
        return true;
    }

private:
    std::chrono::milliseconds interval_;
    std::chrono::nanoseconds next_;
};

} // namespace kst
