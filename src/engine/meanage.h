#pragma once

#include "core/runstate.h"
#include "model/aircraft.h"

namespace kst {

/// Mean age of what stands parked, counted from each arrival to now.
class MeanAge {
public:
    void add(DayHH stamp) {
        sum_ += halfHoursSince(stamp, now_);
        ++count_;
    }
    /// In hours, 0 with nothing added.
    float hours() const {
        return count_ > 0 ? static_cast<float>(sum_) / (2.0F * static_cast<float>(count_)) : 0.0F;
    }
    int count() const { return count_; }

private:
    DayHH now_ = nowDayHH();
    int sum_ = 0;
    int count_ = 0;
};

/// Whether the simulator has an object of this aircraft.
inline bool isInSimulator(const AcBase& ac) {
    return ac.state == AcState::Live || ac.state == AcState::Removing;
}

} // namespace kst
