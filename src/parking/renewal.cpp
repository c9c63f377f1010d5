#include "parking/renewal.h"

#include "catalogue/reference.h"
#include "core/clock.h"
#include "core/describe.h"
#include "core/display.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/meanage.h"
#include "engine/parkinglink.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "parking/parkrequests.h"
#include "parking/population.h"
#include "parking/reservedstand.h"
#include "parking/stands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

// How long a live aircraft without a feed stays on its stand, minutes.
constexpr int stayMinutes = 90;
constexpr int heavyStayMinutes = 180;
constexpr std::int64_t ticks100nsPerMinute = 600'000'000;
/// How far back an observation may lie to keep an aircraft on its stand, half hours.
constexpr int longestSpan = 47;

int minutesParked(const LiveAc& ac) {
    return static_cast<int>((wallTicks100ns() - ac.parkedSince) / ticks100nsPerMinute);
}

bool standsParked(const LiveAc& ac) {
    return ac.state == AcState::Live && ac.phase == AcPhase::Parked;
}

/// Lists the live aircraft that stay on their stands, and removes those that have stood long enough.
void lf_listLiveStayers() {
    liveStayers.clear();
    for (LiveAc& ac : liveAcs) {
        if (!standsParked(ac)) {
            continue;
        }
        const int minutes = ac.feedWhileParked ? 0 : minutesParked(ac);
        const int longest = ac.category == Category::Heavy ? heavyStayMinutes : stayMinutes;
        if (ac.feedWhileParked || INITIAL_LOAD_ONLY || minutes <= longest) {
            liveStayers.push_back({ac.callsign, ac.sid, minutes});
        } else {
            lf_removeAc(ac, Reason::ParkingRenewal);
        }
    }
    std::ranges::stable_sort(liveStayers, {}, &LiveStayer::minutes);
}

LiveAc* parkedLiveOn(const LiveStayer& stayer) {
    const auto found = std::ranges::find_if(liveAcs, [&](const LiveAc& ac) {
        return standsParked(ac) && ac.sid == stayer.sid && ac.callsign == stayer.callsign;
    });
    return found != liveAcs.end() ? &*found : nullptr;
}

/// Removes the live aircraft that have stood longest.
void lf_removeOldestLive(std::size_t count) {
    for (; count > 0 && !liveStayers.empty(); --count) {
        if (LiveAc* ac = parkedLiveOn(liveStayers.back())) {
            logLine(fmt::format("live parked {} at {} removed", describe(*ac), standName(ac->sid)));
            lf_removeAc(*ac, Reason::ParkingLimit);
        }
        liveStayers.pop_back();
    }
}

void listLiveStayers(int wanted) {
    lf_listLiveStayers();
    if (wanted >= 1 && liveStayers.size() > static_cast<std::size_t>(wanted)) {
        const std::size_t excess = liveStayers.size() - static_cast<std::size_t>(wanted);
        showMessage(fmt::format("Parking adjustments: {} more live ac than wanted", excess), true);
        lf_removeOldestLive(excess);
        lf_listLiveStayers();
    }
    for (const LiveStayer& stayer : liveStayers) {
        ParkPos* stand = standBySid(stayer.sid);
        if (stand == nullptr) {
            continue;
        }
        stand->allocated = true;
        for (const std::uint32_t sid : stand->neighbours) {
            if (ParkPos* neighbour = standBySid(sid)) {
                neighbour->blocked = true;
            }
        }
    }
}

void stay(const StaticAc& ac) {
    staticStayers.push_back({ac.callsign, ac.primaryCallsign, ac.coupledCallsign, ac.regcode, ac.airline,
                             ac.acType, ac.parkStamp, ac.sid});
}

void go(const StaticAc& ac) {
    staticRemovals.push_back({ac.callsign, ac.sid});
}

bool isInFeed(const StaticAc& ac) {
    return (!ac.primaryCallsign.empty() && liveCallsigns.contains(ac.primaryCallsign)) ||
           (!ac.coupledCallsign.empty() && liveCallsigns.contains(ac.coupledCallsign));
}

/// Told by the callsign that it shows; one without callsign by its registration.
bool isSameAircraft(const ParkRequest& request, const StaticAc& ac) {
    const bool nameless = request.cs.empty() && ac.primaryCallsign.empty();
    return request.sid == ac.sid && request.airl == ac.airline && request.type == ac.acType &&
           (nameless ? request.reg == ac.regcode
                     : ac.callsign == request.cs + '*' || ac.callsign == request.cs2 + '*');
}

/// Whether the aircraft to come would stand where this one stands, or touch it.
bool clashes(const ParkRequest& request, const StaticAc& ac) {
    if (request.sid == ac.sid) {
        return true;
    }
    const ParkPos* stand = standBySid(ac.sid);
    const ParkPos* other = standBySid(request.sid);
    return stand != nullptr && other != nullptr &&
           std::ranges::find(stand->neighbours, request.sid) != stand->neighbours.end() &&
           gf_halfWingSpan(ac.acType) + gf_halfWingSpan(request.type) >
               gf_distanceNm({ac.standLat, ac.standLon}, other->position());
}

/// Whoever was seen later stands: the aircraft goes before a later observation, or outlasts all that clash
/// with it, which then leave the queue.
void lf_resolveClash(const StaticAc& ac, DayHH now) {
    const bool outdone = std::ranges::any_of(parkQueue, [&](const ParkRequest& request) {
        return clashes(request, ac) && static_cast<int>(request.offset) < halfHoursSince(ac.parkStamp, now);
    });
    if (outdone) {
        go(ac);
        return;
    }
    stay(ac);
    std::erase_if(parkQueue, [&](const ParkRequest& request) { return clashes(request, ac); });
}

/// Whether the stand's observations keep the aircraft there: one of today, or of yesterday for an overnight
/// stay, within the time that the search went back.
bool isStillObserved(const StaticAc& ac, DayHH now) {
    const ParkPos* stand = standBySid(ac.sid);
    if (stand == nullptr) {
        return false;
    }
    const int span = std::min(std::max(realFit, softFit), longestSpan);
    return std::ranges::any_of(stand->options, [&](const ParkOption& option) {
        if (option.seq == 0 || option.airl != ac.airline || option.type != ac.acType) {
            return false;
        }
        for (int back = 0; back <= span; ++back) {
            const DayHH moment = now.back(back);
            if ((WEEK || isOfDay(option, moment.day)) &&
                option.hours.test(static_cast<std::size_t>(moment.hh))) {
                return true;
            }
        }
        return false;
    });
}

void lf_judgeStatic(const StaticAc& ac, DayHH now) {
    if (isInFeed(ac)) {
        go(ac);
        return;
    }
    const auto same = std::ranges::find_if(
        parkQueue, [&](const ParkRequest& request) { return isSameAircraft(request, ac); });
    if (same != parkQueue.end()) {
        parkQueue.erase(same);
        stay(ac);
    } else if (std::ranges::any_of(parkQueue,
                                   [&](const ParkRequest& request) { return clashes(request, ac); })) {
        lf_resolveClash(ac, now);
    } else if (isStillObserved(ac, now)) {
        stay(ac);
    } else {
        go(ac);
    }
}

/// An aircraft that still shows its inbound flight changes to the outbound one when that visit ends.
void lf_checkLeaving(StaticStayer& stayer, DayHH now) {
    const ParkPos* stand = standBySid(stayer.sid);
    // With one callsign for both flights there is nothing to change to.
    if (stand == nullptr || stayer.coupledCallsign.empty() ||
        stayer.coupledCallsign == stayer.primaryCallsign ||
        stayer.callsign.find(stayer.primaryCallsign) == std::string::npos) {
        return;
    }
    std::string callsign = stayer.callsign;
    std::erase(callsign, '*');
    const auto option = std::ranges::find_if(stand->options, [&](const ParkOption& each) {
        return each.seq > 0 && isOfDay(each, now.day) && each.cs == callsign && each.airl == stayer.airline &&
               each.type == stayer.acType;
    });
    if (option != stand->options.end()) {
        stayer.leaving = !hasNextHalfHour(*stand, *option, now);
    }
}

void replaceLeaving(DayHH now) {
    for (const StaticStayer& stayer : staticStayers) {
        if (!stayer.leaving) {
            continue;
        }
        parkQueue.push_back({.sid = stayer.sid,
                             .offset = static_cast<std::uint32_t>(halfHoursSince(stayer.parkStamp, now)),
                             .airl = stayer.airline,
                             .type = stayer.acType,
                             .cs = stayer.primaryCallsign,
                             .cs2 = stayer.coupledCallsign,
                             .reg = stayer.regcode,
                             .inbound = false});
        staticRemovals.push_back({stayer.callsign, stayer.sid});
    }
    std::erase_if(staticStayers, [](const StaticStayer& stayer) { return stayer.leaving; });
}

/// Holds the number of parked aircraft: those to come give way first, then the static, then the live ones.
void dropExcess(int wanted) {
    std::ranges::stable_sort(parkQueue, {}, &ParkRequest::offset);
    int over = static_cast<int>(parkQueue.size() + liveStayers.size() + staticStayers.size()) - wanted;
    for (; over > 0 && !parkQueue.empty(); --over) {
        parkQueue.pop_back();
    }
    for (; over > 0 && !staticStayers.empty(); --over) {
        staticRemovals.push_back({staticStayers.back().callsign, staticStayers.back().sid});
        staticStayers.pop_back();
    }
    for (; !INITIAL_LOAD_ONLY && over > 0 && !liveStayers.empty(); --over) {
        if (LiveAc* ac = parkedLiveOn(liveStayers.back())) {
            lf_removeAc(*ac, Reason::ParkingLimit);
        }
        liveStayers.pop_back();
    }
    std::ranges::stable_sort(parkQueue, std::greater{}, &ParkRequest::offset);
}

void removeStatic() {
    for (const StaticRemoval& removal : staticRemovals) {
        const auto ac = std::ranges::find_if(
            staticAcs, [&](const StaticAc& each) { return each.sid == removal.sid && isInSimulator(each); });
        if (ac != staticAcs.end()) {
            lf_removeAc(*ac, Reason::ParkingRenewal);
        }
    }
}

} // namespace

void lf_parkingAdjustments() {
    const DayHH now = nowDayHH();
    logPopulationTime(now);
    takeLiveCallsigns();
    parkingRunning = true;
    clearPopulation();
    for (ParkPos& stand : parkPositions()) {
        stand.allocated = stand.reserved = stand.blocked = false;
    }
    reviveOptions();
    lf_markReservedStands();
    updateStatus(Band::Park, [](StatusValues& status) { status.staticBusyShown = false; });
    const int wanted = lf_wantedParkCount();
    listLiveStayers(wanted);
    const int existing = static_cast<int>(liveStayers.size());
    if (wanted > existing) {
        lf_fillPositions(now, wanted, existing);
    }
    for (const StaticAc& ac : staticAcs) {
        if (ac.state == AcState::Live) {
            lf_judgeStatic(ac, now);
        }
    }
    std::ranges::stable_sort(staticStayers, std::greater{}, [now](const StaticStayer& stayer) {
        return halfHoursSince(stayer.parkStamp, now);
    });
    for (StaticStayer& stayer : staticStayers) {
        lf_checkLeaving(stayer, now);
    }
    replaceLeaving(now);
    dropExcess(wanted);
    const std::string text =
        fmt::format("live stayers: {}, Parking adjustments: {} to be removed, {} to be added",
                    liveStayers.size(), staticRemovals.size(), parkQueue.size());
    showMessage(text, false);
    logLine(text + "\n");
    removeStatic();
}

} // namespace kst
