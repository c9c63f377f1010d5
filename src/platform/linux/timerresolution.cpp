#include "platform/timerresolution.h"

#include <sys/prctl.h>

namespace kst::platform {

namespace {

// Linux ends a sleep late by the thread's timer slack: 50 microseconds unless the user's session sets more.
constexpr unsigned long usualSlackNs = 50'000;

thread_local int slackBefore = -1;

} // namespace

TimerResolution::TimerResolution() {
    slackBefore = prctl(PR_GET_TIMERSLACK);
    prctl(PR_SET_TIMERSLACK, usualSlackNs);
}

TimerResolution::~TimerResolution() {
    if (slackBefore > 0) {
        prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(slackBefore));
    }
}

} // namespace kst::platform
