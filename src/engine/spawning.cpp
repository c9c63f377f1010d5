#include "engine/spawning.h"

#include "catalogue/matching.h"
#include "core/clock.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/parkinglink.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/standconflicts.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "engine/unmatched.h"
#include "parking/stands.h"

#include <fmt/format.h>
#include <stdexcept>

namespace kst {

namespace {

constexpr double standAirportDistanceNm = 5.0;
constexpr double rollingOntoStandKt = 5.0;
constexpr double rollingOntoStandNm = 35.0 * nmPerMetre;
constexpr double nearStandNm = 55.0 * nmPerMetre;
constexpr double pitchOnGround = 0.010471975511965976; // 0.6 degrees nose down

/// What the search for a stand came to.
enum class StandOutcome {
    Taxi,      ///< no stand: the aircraft enters on a taxiway
    Undecided, ///< it stands where the user is, or is to be: it enters without a stand
    Parked,    ///< it has the stand
    Refused,   ///< another live aircraft keeps the stand
    Waits      ///< it stands where no stand is free; it is tried again with its next point
};

void markStationary(LiveAc& ac) {
    TrackPoint& front = ac.track.at(0);
    TrackPoint& second = ac.track.at(1);
    front.stationary = second.stationary;
    if (!second.stationary) {
        return;
    }
    front.gsKt = 0.0;
    second.gsKt = 0.0;
    if (ac.track.size() > 2 && ac.track[2].stationary) {
        ac.track[2].gsKt = 0.0;
    }
}

bool findLivery(LiveAc& ac) {
    if (ac.liveryTitle.empty()) {
        if (const auto cached = liveryCache.find(ac.hexid); cached != liveryCache.end()) {
            if (gf_isFailedTitle(cached->second)) {
                liveryCache.erase(cached);
            } else {
                ac.liveryTitle = cached->second;
            }
        }
    }
    if (ac.liveryTitle.empty()) {
        gf_matchLivery(ac);
        if (!ac.liveryTitle.empty()) {
            liveryCache[ac.hexid] = ac.liveryTitle;
        }
    }
    return !ac.liveryTitle.empty();
}

/// Whether live aircraft on the stand and on its neighbours let the newcomer have it.
Reason refusalByLive(LiveAc& ac, const ParkPos& stand) {
    StandClaim claim{stand, ac, stand.sid};
    for (LiveAc& other : liveAcs) {
        if (lf_clearForStand(claim, other)) {
            break;
        }
    }
    if (!claim.mayStay) {
        return Reason::StandTaken;
    }
    for (const std::uint32_t neighbour : stand.neighbours) {
        claim.occupied = neighbour;
        for (LiveAc& other : liveAcs) {
            if (lf_clearForNeighbour(claim, other)) {
                break;
            }
        }
        if (!claim.mayStay) {
            return Reason::NeighbourStandTaken;
        }
    }
    return Reason::None;
}

void occupyStand(LiveAc& ac, ParkPos& stand) {
    TrackPoint& front = ac.track.front();
    front.stationary = true;
    front.gsKt = 0.0;
    ac.standLat = stand.latitude;
    ac.standLon = stand.longitude;
    ac.standHeading = stand.heading;
    ac.sid = stand.sid;
    ac.standCargo = stand.cargo;
    setPhase(ac, AcPhase::Parked);
    stand.liveParked = true;
    ac.parkedSince = wallTicks100ns();
    ac.lastParkDist = 0.0;
    ac.awayCount = 0;
    lf_markCargoStand(ac);
    ac.track.resize(1);
    front.lat = stand.latitude;
    front.lon = stand.longitude;
    front.trackDeg = stand.heading * degPerRad;
    if (lf_addRealParkPosOption(ac.sid, ac, false, nowDayHH(), false)) {
        lf_noteLearner(ac.hexid, nowDayHH());
    }
    lf_checkMaxPark(1);
}

StandOutcome takeStand(LiveAc& ac) {
    const TrackPoint& front = ac.track.front();
    const auto airport = parkAirportPlace();
    if (parkPositions().empty() || !airport ||
        gf_distanceNm(front.position(), airport->position) > standAirportDistanceNm) {
        return StandOutcome::Taxi;
    }
    const TrackPoint& second = ac.track.at(1);
    const TrackPoint& back = ac.track.back();
    if (!front.stationary && (second.gsKt > rollingOntoStandKt ||
                              gf_distanceNm(front.position(), back.position()) > rollingOntoStandNm)) {
        return StandOutcome::Taxi;
    }
    const LatLon place = front.stationary ? front.position() : back.position();
    ParkPos* stand = lf_searchStandNearby(place, ac, nearStandNm, front.stationary);
    if (stand == nullptr) {
        return second.stationary ? StandOutcome::Waits : StandOutcome::Taxi;
    }
    if (stand->id == lf_reservedStand() || stand->id == lf_userStand(userData.position())) {
        return StandOutcome::Undecided;
    }
    if (const Reason refusal = refusalByLive(ac, *stand); refusal != Reason::None) {
        refuseTarget(ac, refusal);
        return StandOutcome::Refused;
    }
    checkStandOrExcludedIsOccupiedByStaticAndRemove(ac, *stand);
    occupyStand(ac, *stand);
    return StandOutcome::Parked;
}

/// The first phase of a new target. False when it does not enter now.
bool decidePhase(LiveAc& ac) {
    if (ac.track.front().airborne) {
        setPhase(ac, AcPhase::Air);
        return true;
    }
    switch (takeStand(ac)) {
    case StandOutcome::Taxi:
        setPhase(ac, AcPhase::Taxi);
        return true;
    case StandOutcome::Waits:
        holdTarget(ac, Reason::NoFreeStand);
        return false;
    case StandOutcome::Refused:
        return false;
    case StandOutcome::Undecided:
    case StandOutcome::Parked:
        break;
    }
    return true;
}

double firstHeading(const LiveAc& ac) {
    const TrackPoint& front = ac.track.front();
    if (ac.respawnHeading) {
        return *ac.respawnHeading;
    }
    if (ac.phase == AcPhase::Parked) {
        return ac.standHeading;
    }
    if (ac.track.size() > 1 && !ac.track[1].stationary) {
        return gf_bearing(front.position(), ac.track[1].position());
    }
    return front.trackDeg * radPerDeg;
}

void setFirstState(LiveAc& ac) {
    const TrackPoint& front = ac.track.front();
    SimState& state = ac.simState;
    state.lat = front.lat;
    state.lon = front.lon;
    state.altFt = front.altFt;
    state.vsFps = front.vsFpm;
    state.airspeedKt = front.tasKt;
    state.bank = front.roll.value_or(0.0);
    state.pitch = front.airborne ? climbLawPitch(front.vsFpm) : pitchOnGround;
    state.heading = wrapHeading(firstHeading(ac));
    ac.dHeading = 0.0;
}

void enterSimulator(LiveAc& ac) {
    spawnedIds.push_back(ac.hexid);
    setFirstState(ac);
    ac.state = AcState::Requested;
    ac.heldForUser = false;
    ac.reason = Reason::None;
    spawnList.push_back(ac.hexid);
    if (!ac.callsign.ends_with('_')) {
        lf_removeGhostOf(ac.callsign);
    }
}

} // namespace

void spawnLiveAc(LiveAc& ac) {
    try {
        markStationary(ac);
        if (ac.phase == AcPhase::Unknown) {
            if (!findLivery(ac)) {
                unmatchedTargets.insert(unmatchedKey(ac));
                refuseTarget(ac, Reason::NoLivery);
                return;
            }
            if (!decidePhase(ac)) {
                return;
            }
        }
        enterSimulator(ac);
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "spawnLiveAc", error.what()));
    }
}

} // namespace kst
