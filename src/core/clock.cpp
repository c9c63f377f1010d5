#include "core/clock.h"

#include "core/runstate.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace kst {

namespace {

class SystemTime : public TimeSource {
public:
    std::chrono::nanoseconds monotonic() override {
        return std::chrono::steady_clock::now().time_since_epoch();
    }
    std::chrono::system_clock::time_point wall() override { return std::chrono::system_clock::now(); }
    void sleepUntil(std::chrono::nanoseconds deadline) override {
        std::this_thread::sleep_until(std::chrono::steady_clock::time_point(
            std::chrono::duration_cast<std::chrono::steady_clock::duration>(deadline)));
    }
};

SystemTime systemTime;
std::atomic<TimeSource*> timeSource{&systemTime};

} // namespace

void setTimeSource(TimeSource* source) {
    timeSource = source != nullptr ? source : &systemTime;
}

std::chrono::nanoseconds monotonicNow() {
    return timeSource.load()->monotonic();
}

std::chrono::system_clock::time_point wallNow() {
    return timeSource.load()->wall();
}

void sleepUntil(std::chrono::nanoseconds deadline) {
    timeSource.load()->sleepUntil(deadline);
}

void sleepFor(std::chrono::milliseconds duration) {
    sleepUntil(monotonicNow() + duration);
}

bool sleepUnlessStopped(std::chrono::milliseconds duration) {
    constexpr std::chrono::milliseconds slice{10};
    const auto deadline = monotonicNow() + duration;
    while (!stopAsked()) {
        const auto now = monotonicNow();
        if (now >= deadline) {
            return true;
        }
        sleepUntil(std::min<std::chrono::nanoseconds>(deadline, now + slice));
    }
    return false;
}

std::int64_t wallTicks100ns() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    return std::chrono::duration_cast<Ticks>(wallNow().time_since_epoch()).count();
}

} // namespace kst
