#include "simlink/sessionstate.h"

namespace kst {

std::mutex simLock;
std::atomic<SimHandle> simHandle{noSimHandle};
std::vector<ExpectedCreation> expectedCreations;
std::vector<std::uint32_t> createdOids;
std::atomic<std::uint32_t> userObjectIdNow{firstUserObjectId};
std::atomic<float> simFrameRateNow{0.0F};
std::atomic<std::uint32_t> simFrameCount{0};
std::mutex userAircraftLock;
UserAircraft userAircraft;
std::atomic<int> simVersion{0};
std::atomic<bool> simQuitSeen{false};

LatLon lastUserPosition() {
    const std::lock_guard lock(userAircraftLock);
    return userAircraft.snapshot.position();
}

} // namespace kst
