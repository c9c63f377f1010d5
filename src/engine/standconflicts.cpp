#include "engine/standconflicts.h"

#include "catalogue/reference.h"
#include "core/clock.h"
#include "core/display.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/conflicts.h"
#include "engine/meanage.h"
#include "engine/parked.h"
#include "engine/parkinglink.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/stands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

// Share by which the half spans are widened before two aircraft on adjacent stands count as touching.
constexpr double neighbourMargin = 1.1;

// How far from the end of its track an aircraft that has landed, or any other, looks for a stand.
constexpr double searchingRadiusNm = 55.0 * nmPerMetre;
constexpr double stoppedRadiusNm = 20.0 * nmPerMetre;

std::string_view stem(std::string_view callsign) {
    return callsign.substr(0, callsign.empty() ? 0 : callsign.size() - 1);
}

bool isPlaced(const ParkPos& stand) {
    return stand.latitude != 0.0 || stand.longitude != 0.0;
}

bool touchAcross(double halfSpansNm, const ParkPos& a, const ParkPos& b) {
    return halfSpansNm * neighbourMargin >= gf_distanceNm(a.position(), b.position());
}

/// The aircraft on the stand gives way to the newcomer.
void giveWay(LiveAc& ac, const std::string& text) {
    if (LOG) {
        logLine(text);
    }
    lf_removeAc(ac, Reason::ConflictWithLive);
}

void removeStaticOnStand(const LiveAc& ac, const ParkPos& stand) {
    const auto found = std::ranges::find(staticAcs, stand.sid, &StaticAc::sid);
    if (found == staticAcs.end()) {
        return;
    }
    const bool same =
        found->primaryCallsign == ac.callsign || (!ac.regcode.empty() && found->regcode == ac.regcode);
    const std::string text =
        fmt::format("{:8}: {:8} {} makes way for{} {} {}", stand.id, found->callsign, found->regcode,
                    same ? " the same live version" : "", ac.callsign, ac.regcode);
    if (found->state == AcState::Live) {
        if (LOG) {
            logLine(text);
        }
        lf_removeAc(*found, Reason::ConflictWithLive);
    } else if (found->state == AcState::Requested) {
        noteReason(*found, Reason::ConflictWithLive);
        if (!lf_cancelStaticCreation(found->callsign)) {
            found->removeWhenCreated = true;
        } else if (LOG) {
            logLine("queued " + text);
        }
    }
}

void removeStaticOnNeighbour(const LiveAc& ac, const ParkPos& stand, const ParkPos& neighbour) {
    const double halfSpan = gf_halfWingSpan(ac.acType);
    const auto found = std::ranges::find_if(staticAcs, [&](const StaticAc& parked) {
        return parked.sid == neighbour.sid && parked.state == AcState::Live &&
               touchAcross(halfSpan + gf_halfWingSpan(parked.acType), stand, neighbour);
    });
    if (found == staticAcs.end()) {
        return;
    }
    if (LOG) {
        logLine(fmt::format("{:8}: {:8} removed by {} parking at adjacent stand {}", neighbour.id,
                            found->callsign, ac.callsign, stand.id));
    }
    lf_removeAc(*found, Reason::ConflictWithLive);
}

void lf_removeAdjacent(LiveAc& ac, const LiveAc& claimer, const ParkPos& stand, const ParkPos& neighbour) {
    const bool onStand = ac.phase == AcPhase::Parked || ac.phase == AcPhase::PushBack;
    if (ac.sid != neighbour.sid || ac.state != AcState::Live || !onStand ||
        !touchAcross(gf_halfWingSpan(ac.acType) + gf_halfWingSpan(claimer.acType), stand, neighbour)) {
        return;
    }
    giveWay(ac, fmt::format("{:8}: {:8} removed by parking {} at adjacent and possibly colliding stand {}",
                            neighbour.id, ac.callsign, claimer.callsign, stand.id));
}

/// Whoever is parked on the stand, or would touch the claiming aircraft from a neighbour, gives way.
void clearLiveForClaim(const LiveAc& claimer, const ParkPos& stand) {
    for (LiveAc& ac : liveAcs) {
        if (ac.sid == stand.sid && ac.state == AcState::Live && ac.phase == AcPhase::Parked) {
            giveWay(ac, fmt::format("{:8}: {:8} removed, {} wants to park there", stand.id, ac.callsign,
                                    claimer.callsign));
            break;
        }
    }
    for (const std::uint32_t sid : stand.neighbours) {
        const ParkPos* neighbour = standBySid(sid);
        if (neighbour == nullptr || !isPlaced(*neighbour)) {
            continue;
        }
        for (LiveAc& ac : liveAcs) {
            lf_removeAdjacent(ac, claimer, stand, *neighbour);
        }
    }
}

void removeLongestParked() {
    LiveAc* longest = nullptr;
    constexpr std::int64_t ticksPerSecond100ns = 10'000'000;
    std::int64_t longestSeconds = -1;
    for (LiveAc& ac : liveAcs) {
        if (ac.state != AcState::Live || ac.phase != AcPhase::Parked) {
            continue;
        }
        const std::int64_t seconds = (wallTicks100ns() - ac.parkedSince) / ticksPerSecond100ns;
        if (seconds > longestSeconds) {
            longestSeconds = seconds;
            longest = &ac;
        }
    }
    if (longest == nullptr) {
        return;
    }
    logLine(fmt::format("{:}: {:8} max park exceeded, removed", standName(longest->sid), longest->callsign));
    lf_removeAc(*longest, Reason::ParkingLimit);
}

void holdParkLimit(int extra) {
    MeanAge liveAge;
    int live = extra;
    for (const LiveAc& ac : liveAcs) {
        if (ac.phase != AcPhase::Parked) {
            continue;
        }
        if (isInSimulator(ac)) {
            liveAge.add(ac.parkStamp);
        }
        live += ac.state == AcState::Live ? 1 : 0;
    }
    updateStatus(Band::Park, [&](StatusValues& status) { status.liveFitShown = liveAge.hours(); });
    const int wanted = lf_wantedParkCount();
    if (!INITIAL_LOAD_ONLY && wanted >= 1 && live > wanted) {
        removeLongestParked();
    }
    MeanAge staticAge;
    for (const StaticAc& ac : staticAcs) {
        if (isInSimulator(ac)) {
            staticAge.add(ac.parkStamp);
        }
    }
    if (!WEEK) {
        updateStatus(Band::Park, [&](StatusValues& status) { status.staticFitShown = staticAge.hours(); });
    }
    if (staticAge.count() == 0 || staticAge.count() + live <= wanted) {
        return;
    }
    const auto oldest = std::ranges::min_element(staticAcs, isEarlier, &StaticAc::parkStamp);
    if (oldest->state == AcState::Live) {
        lf_removeAc(*oldest, Reason::ParkingLimit);
    }
}

} // namespace

bool lf_clearForStand(StandClaim& claim, LiveAc& ac) {
    const bool holdsStand =
        ac.phase == AcPhase::Parked || ac.phase == AcPhase::PushBack || ac.phase == AcPhase::AfterPush;
    if (ac.sid != claim.stand.sid || ac.state != AcState::Live || !holdsStand) {
        return false;
    }
    const std::string& newcomer = claim.newcomer.callsign;
    const bool newcomerIsGhost = newcomer.ends_with('_');
    const bool holderIsGhost = ac.callsign.ends_with('_');
    const std::string& stand = claim.stand.id;
    if (ac.callsign == newcomer) {
        giveWay(ac, fmt::format("{:8}: {:8} ac with same callsign {} wants it, remove existing ... ", stand,
                                ac.callsign, newcomer));
    } else if (newcomerIsGhost && stem(newcomer) == ac.callsign) {
        claim.mayStay = false;
    } else if (holderIsGhost && (stem(ac.callsign) == newcomer || !newcomerIsGhost)) {
        giveWay(ac, fmt::format("{:8}: {:8} ghost, replace by {}", stand, ac.callsign, newcomer));
    } else if ((!holderIsGhost && newcomerIsGhost) || ac.feedWhileParked) {
        claim.mayStay = false;
    } else {
        giveWay(ac, fmt::format("{:8}: {:8} removed because another live {} wants the stand ...", stand,
                                ac.callsign, newcomer));
    }
    return true;
}

bool lf_clearForNeighbour(StandClaim& claim, LiveAc& ac) {
    const bool onStand = ac.phase == AcPhase::Parked || ac.phase == AcPhase::PushBack;
    if (ac.sid != claim.occupied || ac.state != AcState::Live || !onStand ||
        ac.callsign == claim.newcomer.callsign) {
        return false;
    }
    const ParkPos* neighbour = standBySid(claim.occupied);
    if (neighbour == nullptr || !isPlaced(*neighbour)) {
        claim.mayStay = false;
        return true;
    }
    const double halfSpans = gf_halfWingSpan(ac.acType) + gf_halfWingSpan(claim.newcomer.acType);
    if (touchAcross(halfSpans, *neighbour, claim.stand)) {
        claim.mayStay = false;
    }
    return true;
}

void checkStandOrExcludedIsOccupiedByStaticAndRemove(const LiveAc& ac, const ParkPos& stand) {
    try {
        removeStaticOnStand(ac, stand);
        for (const std::uint32_t sid : stand.neighbours) {
            if (const ParkPos* neighbour = standBySid(sid); neighbour != nullptr) {
                removeStaticOnNeighbour(ac, stand, *neighbour);
            }
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "checkStandOrExcludedIsOccupiedByStaticAndRemove", error.what()));
        throw;
    }
}

void lf_claimStand(LiveAc& ac, bool searching) {
    const LatLon place = ac.track.back().position();
    if (place == LatLon{ac.searchedLat, ac.searchedLon}) {
        return;
    }
    ac.searchedLat = place.lat;
    ac.searchedLon = place.lon;
    const ParkPos* stand =
        lf_searchStandNearby(place, ac, searching ? searchingRadiusNm : stoppedRadiusNm, searching);
    if (stand == nullptr || stand->id == lf_reservedStand() ||
        stand->id == lf_userStand(userData.position())) {
        return;
    }
    clearLiveForClaim(ac, *stand);
    checkStandOrExcludedIsOccupiedByStaticAndRemove(ac, *stand);
    ac.standLat = stand->latitude;
    ac.standLon = stand->longitude;
    ac.standHeading = stand->heading;
    ac.sid = stand->sid;
    ac.standCargo = stand->cargo;
    ac.track.resize(1);
    setPhase(ac, AcPhase::Parking);
    lf_routeToStand(ac, *stand);
}

void lf_checkMaxPark(int extra) {
    try {
        holdParkLimit(extra);
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "lf_checkMaxPark", error.what()));
        throw;
    }
}

} // namespace kst
