#pragma once

// The one place where the program reads a clock or sleeps. Tests replace the source by virtual time.

#include <chrono>

namespace kst {

/// Where time comes from. One source at a time; it outlives its use.
class TimeSource {
public:
    virtual ~TimeSource() = default;
    /// Time since an arbitrary start, never running backwards.
    virtual std::chrono::nanoseconds monotonic() = 0;
    /// Wall clock, UTC.
    virtual std::chrono::system_clock::time_point wall() = 0;
    /// Blocks the calling thread until `monotonic()` has reached `deadline`.
    virtual void sleepUntil(std::chrono::nanoseconds deadline) = 0;
};

/// Replaces the system's clocks; nullptr puts them back. Call it before any other thread runs.
void setTimeSource(TimeSource* source);

std::chrono::nanoseconds monotonicNow();
std::chrono::system_clock::time_point wallNow();
void sleepUntil(std::chrono::nanoseconds deadline);
void sleepFor(std::chrono::milliseconds duration);

/// Sleeps as `sleepFor` but ends within a few milliseconds once `stopAsked()` (core/runstate.h) holds.
/// Returns false in that case.
bool sleepUnlessStopped(std::chrono::milliseconds duration);

/// The system clock in 100 ns units since 1970, the unit of `LiveAc::parkedSince`.
std::int64_t wallTicks100ns();

} // namespace kst
