#include "support/virtualtime.h"

namespace kst::test {

namespace {
constexpr std::chrono::seconds firstWallTime{1709546400};
}

VirtualTime::VirtualTime() {
    setTimeSource(this);
}

VirtualTime::~VirtualTime() {
    setTimeSource(nullptr);
}

std::chrono::system_clock::time_point VirtualTime::wall() {
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(firstWallTime + monotonic()));
}

void VirtualTime::sleepUntil(std::chrono::nanoseconds deadline) {
    std::chrono::nanoseconds seen = now_.load();
    while (seen < deadline && !now_.compare_exchange_weak(seen, deadline)) {
    }
}

void VirtualTime::advance(std::chrono::nanoseconds by) {
    sleepUntil(monotonic() + by);
}

} // namespace kst::test
