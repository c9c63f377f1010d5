#include "engine/pass.h"

#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/spawning.h"
#include "engine/tables.h"
#include "feed/feedqueue.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace kst {

namespace {

constexpr std::size_t feedRecordsPerPass = 2;
constexpr double secondsPerMinute = 60.0;

void moveLiveAc(LiveAc& ac) {
    if (ac.track.empty()) {
        logLine(fmt::format("{} stream empty ? {}, hexid:{}, objectid:{}", "updateLiveAc", describe(ac),
                            ac.hexid, ac.objectId));
        lf_removeAc(ac, Reason::EmptyTrack);
        return;
    }
    if (updateCount.load(std::memory_order_relaxed) >= ac.track.front().dueTick) {
        nextPosMain(ac);
        ac.simState.vsFps = ac.vsTarget / secondsPerMinute;
        ac.simState.airspeedKt = !ac.track.empty() && ac.track.front().stationary ? 0.0 : ac.airspeedTarget;
    }
    if (ac.state != AcState::Live) {
        return;
    }
    if (!ac.track.empty() && !ac.track.front().stationary) {
        lf_stepAc(ac);
    }
    if (ac.objectId != 0) {
        gf_updateAircraft({ac.simState, ac.objectId});
        return;
    }
    logLine(fmt::format("{} objectid=0? hexid: {},cs:{}, reg:{}, aimo:{} sz:{}", "updateLiveAc", ac.hexid,
                        ac.callsign, ac.regcode, ac.acType, ac.track.size()));
    lf_removeAc(ac, Reason::NoObjectId);
}

void leaveTable(const LiveAc& ac) {
    // An aircraft that is refused on its way back from a respawn still holds its stand.
    releaseStand(ac);
    spawnedIds.remove(ac.hexid);
}

} // namespace

bool updateLiveAc(LiveAc& ac) {
    // A record that was given up since the last pass must not enter after all.
    if (ac.erase) {
        return true;
    }
    try {
        if (ac.state == AcState::Live) {
            moveLiveAc(ac);
        } else if (ac.state == AcState::Buffered) {
            updateBufferAc(ac);
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {} {}, sz:{}", "updateLiveAc", error.what(), describe(ac), ac.track.size()));
    }
    return ac.erase;
}

void lf_updateAllLiveAc() {
    bool anyErased = false;
    // By index, with the end read anew: a step may add to the table.
    for (std::size_t i = 0; i < liveAcs.size(); ++i) {
        if (updateLiveAc(liveAcs[i])) {
            leaveTable(liveAcs[i]);
            anyErased = true;
        }
    }
    if (anyErased) {
        std::erase_if(liveAcs, [](const LiveAc& ac) { return ac.erase; });
    }
    lf_swapPositionBuffers();
}

void lf_handleUdpMessages() {
    static std::vector<FeedMessage> records;
    takeFeedMessages(records, feedRecordsPerPass);
    for (const FeedMessage& rec : records) {
        lf_feedRecord(rec);
    }
}

void lf_queueNextSpawn() {
    if (spawnList.empty()) {
        return;
    }
    const LiveAc* ac = liveByHexid(spawnList.back());
    spawnList.pop_back();
    if (ac == nullptr || ac->state != AcState::Requested || ac->track.empty()) {
        return;
    }
    CreateRequest request;
    request.initPos.latitude = ac->simState.lat;
    request.initPos.longitude = ac->simState.lon;
    request.initPos.altitude = ac->simState.altFt;
    request.initPos.pitch = ac->simState.pitch * degPerRad;
    request.initPos.bank = ac->simState.bank * degPerRad;
    request.initPos.heading = ac->simState.heading * degPerRad;
    request.initPos.onGround = ac->track.front().airborne ? 0 : 1;
    request.tailNumber = ac->callsign;
    request.title = ac->liveryTitle;
    request.hexid = ac->hexid;
    queueLiveCreation(std::move(request));
}

double creationsReachNm(LatLon user) {
    constexpr double driftNm = 1.0;                // flown by itself until the scan shows it
    const double mostNm = LATERAL_RANGE.maximum(); // farther off nothing was asked for, or it is long lost
    double reachNm = 0.0;
    const auto cover = [&](const AcBase& ac, LatLon place) {
        if (ac.state == AcState::Requested && ac.objectId == 0) {
            const double distanceNm = gf_distanceNm(user, place);
            reachNm = distanceNm <= mostNm ? std::max(reachNm, distanceNm + driftNm) : reachNm;
        }
    };
    for (const LiveAc& ac : liveAcs) {
        cover(ac, {ac.simState.lat, ac.simState.lon});
    }
    for (const StaticAc& ac : staticAcs) {
        cover(ac, {ac.standLat, ac.standLon});
    }
    return reachNm;
}

} // namespace kst
