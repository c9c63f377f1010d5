#pragma once

#include "model/units.h"

#include <limits>

namespace kst {

/// Whether positions lie beyond a range round a centre. The answer is that of `gf_distanceNm(centre,
/// position) > rangeNm`, every time; most positions far away are told by two comparisons. One thread.
class RangeTest {
public:
    /// `position` within 90 degrees of latitude and 180 of longitude. `centre` and `rangeNm` may be anything:
    /// the limits are worked out anew when one of them changes.
    bool outside(LatLon centre, double rangeNm, LatLon position);

private:
    void workOutLimits();

    static constexpr double none = std::numeric_limits<double>::quiet_NaN();
    LatLon centre_{none, none};
    double rangeNm_ = none;
    double latitudeLimitDeg_ = none;
    double longitudeLimitDeg_ = none;
};

} // namespace kst
