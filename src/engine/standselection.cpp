#include "engine/standselection.h"

namespace kst {

ParkPos* lf_searchStandNearby(LatLon /*position*/, const LiveAc& /*ac*/, double /*maxDistanceNm*/,
                              bool /*useOptions*/) {
    return nullptr;
}

const std::string& lf_userStand(LatLon /*position*/) {
    static const std::string none;
    return none;
}

ParkPos* lf_searchSoftStand(DayHH /*dayhh*/, const LiveAc& /*ac*/, bool /*mayLookAhead*/) {
    return nullptr;
}

void lf_learnSoft(LiveAc& /*ac*/, bool /*force*/) {}

bool lf_addRealParkPosOption(std::uint32_t /*sid*/, const LiveAc& /*ac*/, bool /*extend*/, DayHH /*dayhh*/,
                             bool /*leaving*/) {
    return false;
}

bool lf_addSoftParkPosOption(std::uint32_t /*sid*/, const LiveAc& /*ac*/, bool /*extend*/, DayHH /*dayhh*/) {
    return false;
}

bool lf_mayLearn(DayHH /*dayhh*/, std::uint32_t /*hexid*/, bool /*force*/) {
    return false;
}

void lf_noteLearner(std::uint32_t /*hexid*/, DayHH /*dayhh*/) {}

void lf_markCargoStand(const LiveAc& /*ac*/) {}

void lf_searchForCoupledCsAroundThisTime(DayHH /*dayhh*/, LiveAc& /*ac*/) {}

void resetStandSelection() {}

} // namespace kst
