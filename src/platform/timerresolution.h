#pragma once

namespace kst::platform {

/// Asks the system for 1 ms timers for as long as the object lives.
class TimerResolution {
public:
    TimerResolution();
    ~TimerResolution();
    TimerResolution(const TimerResolution&) = delete;
    TimerResolution& operator=(const TimerResolution&) = delete;
};

} // namespace kst::platform
