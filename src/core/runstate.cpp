#include "core/runstate.h"

namespace kst {

namespace {
constexpr int firstRangeNm = 40;
}

std::atomic<bool> simRunning{false};
std::atomic<bool> tickDue{false};
std::atomic<bool> exitRequested{false};
std::atomic<bool> userClosed{false};
std::atomic<ExitReason> exitReason{ExitReason::NotYetSet};
std::atomic<bool> readerError{false};
std::atomic<bool> restartPending{false};
std::atomic<std::uint32_t> tickCount{0};
std::atomic<std::int32_t> updateCount{0};
std::atomic<std::uint64_t> nowStamp{DayHH{}.packed()};
std::atomic<bool> latchedSimError{false};
UserData userData;
std::atomic<bool> userOnGround{false};
std::atomic<bool> userGroundKnown{false};
std::atomic<double> workingRangeNm{firstRangeNm};
std::atomic<double> requestRangeM{firstRangeNm * metresPerNm};
std::atomic<int> rememberedRangeNm{firstRangeNm};
std::atomic<bool> closeAirportMode{false};
bool flareActive = false;
std::atomic<bool> parkRenewalDue{false};
std::atomic<bool> flushStaticDue{false};
std::atomic<bool> reReadParkDue{false};
std::atomic<bool> blockCallsignDue{false};
std::atomic<bool> clearUnmatchedDue{false};
bool parkRenewalPhase = false;
std::atomic<bool> parametersChanged{false};
std::atomic<bool> parkingRunning{false};
std::atomic<bool> realTrafficHere{true};
std::atomic<bool> waitingForRealTraffic{true};
std::atomic<bool> timeFollowing{false};
std::atomic<double> lastTimestamp{0.0};
std::atomic<std::int64_t> simEpochSeconds{0};
std::atomic<int> qnh{standardQnh};

DayHH nowDayHH() {
    return DayHH::unpacked(nowStamp.load());
}

void resetRunState() {
    simRunning = false;
    tickDue = false;
    userClosed = false;
    readerError = false;
    tickCount = 0;
    nowStamp = DayHH{}.packed();
    latchedSimError = false;
    userData = {};
    userOnGround = false;
    userGroundKnown = false;
    workingRangeNm = firstRangeNm;
    requestRangeM = firstRangeNm * metresPerNm;
    closeAirportMode = false;
    flareActive = false;
    parkRenewalDue = false;
    flushStaticDue = false;
    reReadParkDue = false;
    blockCallsignDue = false;
    clearUnmatchedDue = false;
    parkRenewalPhase = false;
    parametersChanged = false;
    parkingRunning = false;
    waitingForRealTraffic = true;
    timeFollowing = false;
    lastTimestamp = 0.0;
    simEpochSeconds = 0;
    qnh = standardQnh;
}

} // namespace kst
