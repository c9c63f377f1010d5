#include "platform/timerresolution.h"

#include <windows.h>

#include <mmsystem.h>

namespace kst::platform {

namespace {
constexpr UINT periodMs = 1;
}

TimerResolution::TimerResolution() {
    timeBeginPeriod(periodMs);
}

TimerResolution::~TimerResolution() {
    timeEndPeriod(periodMs);
}

} // namespace kst::platform
