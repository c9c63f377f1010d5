#include "feed/rangetest.h"

#include "core/geodesy.h"

#include <algorithm>
#include <cmath>

namespace kst {

namespace {
constexpr double earthRadiusNm = 3437.746770784939;
// The haversine formula in doubles is least exact for points that lie opposite each other, where it is off by
// up to 1e-4 nm. The limits leave a hundred times that, so a position they tell apart is never in doubt.
constexpr double marginNm = 0.01;
} // namespace

// No point whose latitude differs by more than the range is within it, and no point on a meridian that the
// circle round the centre does not reach: that circle touches the meridians asin(sin(range) / cos(latitude))
// away, unless it holds a pole.
void RangeTest::workOutLimits() {
    latitudeLimitDeg_ = std::numeric_limits<double>::infinity();
    longitudeLimitDeg_ = std::numeric_limits<double>::infinity();
    if (!(std::abs(centre_.lat) <= 90.0)) {
        return;
    }
    const double rangeRad = (rangeNm_ + marginNm) / earthRadiusNm;
    latitudeLimitDeg_ = rangeRad * degPerRad;
    const double sinRange = std::sin(rangeRad);
    const double cosCentre = std::cos(centre_.lat * radPerDeg);
    if (rangeRad > 0 && rangeRad < pi / 2 && sinRange < cosCentre) {
        longitudeLimitDeg_ = std::asin(sinRange / cosCentre) * degPerRad;
    }
}

bool RangeTest::outside(LatLon centre, double rangeNm, LatLon position) {
    if (!(centre == centre_ && rangeNm == rangeNm_)) {
        centre_ = centre;
        rangeNm_ = rangeNm;
        workOutLimits();
    }
    if (std::abs(position.lat - centre.lat) > latitudeLimitDeg_) {
        return true;
    }
    const double apartDeg = std::abs(position.lon - centre.lon);
    if (std::min(apartDeg, 360.0 - apartDeg) > longitudeLimitDeg_) {
        return true;
    }
    return gf_distanceNm(centre, position) > rangeNm;
}

} // namespace kst
