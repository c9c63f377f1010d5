// What is recorded on a stand: which aircraft stood there in which half hours of which day.

#include "catalogue/reference.h"
#include "core/describe.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "engine/standfit.h"
#include "engine/standselection.h"
#include "parking/learning.h"
#include "parking/stands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

namespace {

/// Farther apart than this, two sightings of an aircraft are two stays.
constexpr int longestGap = 5;

/// Real observations and soft ones are kept apart: each extends its own kind only.
struct Kind {
    bool real;
    std::map<std::uint32_t, StandVisit> ParkPos::*visits;
};
constexpr Kind realKind{true, &ParkPos::realVisits};
constexpr Kind softKind{false, &ParkPos::softVisits};

/// An observation from the aircraft as it is known to the reference, or as the feed tells it.
ParkOption observationOf(const LiveAc& ac, DayHH dayhh, bool real) {
    ParkOption option;
    option.airl = ac.airline;
    option.type = ac.acType;
    option.reg = ac.regcode;
    if (const auto record = gf_regcodeRecord(ac.regcode)) {
        const std::string& airline = record->operatorCode.empty() ? record->airline : record->operatorCode;
        option.airl = airline.empty() ? option.airl : airline;
        option.type = record->model.empty() ? option.type : record->model;
    }
    option.cs = withoutGhostMark(ac.callsign);
    option.hours.set(static_cast<std::size_t>(dayhh.hh));
    option.day = dayhh.day;
    option.real = real;
    return option;
}

ParkOption& appendOption(ParkPos& stand, ParkOption option) {
    while (!stand.options.empty() && stand.options.back().seq == 0) {
        stand.options.pop_back();
    }
    option.seq = stand.options.empty() ? 1 : stand.options.back().seq + 1;
    return stand.options.emplace_back(std::move(option));
}

/// The observation of this aircraft on this day. Without registration it is told by operator and type.
ParkOption* findOption(ParkPos& stand, const ParkOption& seen) {
    const auto same = [&](const ParkOption& option) {
        return option.seq != 0 && option.day == seen.day && option.real == seen.real &&
               option.reg == seen.reg &&
               (!seen.reg.empty() || (option.airl == seen.airl && option.type == seen.type));
    };
    const auto found = std::ranges::find_if(stand.options, same);
    return found != stand.options.end() ? &*found : nullptr;
}

void lf_updateOption(ParkPos& stand, DayHH dayhh, std::uint32_t seq, std::string_view callsign) {
    try {
        const auto found = std::ranges::find(stand.options, seq, &ParkOption::seq);
        // A renewal numbers the options anew: the number must still name an observation of that day.
        if (seq == 0 || found == stand.options.end() || found->day != dayhh.day || found->fromArchive) {
            return;
        }
        found->hours.set(static_cast<std::size_t>(dayhh.hh));
        callsign = withoutGhostMark(callsign);
        if (callsign.empty()) {
            return;
        }
        if (found->cs.empty()) {
            found->cs = callsign;
        } else if (found->cs != callsign && found->cs2 != callsign) {
            found->cs2 = callsign;
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("Update Option exception day {} hh {} {}", dayhh.day, dayhh.hh, error.what()));
    }
}

/// Whether the visit was last seen few enough half hours before this one to be the same stay.
bool continues(const StandVisit& visit, DayHH dayhh) {
    DayHH stamp = visit.stamp;
    for (int gap = 1; gap <= longestGap; ++gap) {
        stamp = stamp.next();
        if (stamp == dayhh) {
            return true;
        }
    }
    return false;
}

/// The aircraft stood here all the time since its visit was last seen: each half hour goes to the observation
/// of its day, and a flight number that is new to it becomes the second one.
void fillStay(ParkPos& stand, const StandVisit& visit, DayHH dayhh, std::uint32_t seqToday,
              std::string_view callsign) {
    DayHH stamp = visit.stamp;
    for (int i = 0; i <= longestGap; ++i) {
        lf_updateOption(stand, stamp, stamp.day == dayhh.day ? seqToday : visit.seq, callsign);
        if (stamp == dayhh) {
            return;
        }
        stamp = stamp.next();
    }
}

/// Brings the visit up to this half hour. A visit that ended long ago is dropped if it is a real one.
void extendVisit(ParkPos& stand, const Kind& kind, const LiveAc& ac, DayHH dayhh, std::uint32_t seq) {
    auto& visits = stand.*kind.visits;
    const auto found = visits.find(ac.hexid);
    if (found == visits.end()) {
        visits[ac.hexid] = {dayhh, seq};
    } else if (continues(found->second, dayhh)) {
        fillStay(stand, found->second, dayhh, seq, ac.callsign);
        found->second = {dayhh, seq};
    } else if (kind.real && found->second.stamp != dayhh) {
        visits.erase(found);
    }
}

bool observe(ParkPos& stand, const Kind& kind, const LiveAc& ac, bool extend, DayHH dayhh, bool leaving) {
    auto& visits = stand.*kind.visits;
    ParkOption seen = observationOf(ac, dayhh, kind.real);
    ParkOption* option = findOption(stand, seen);
    bool changed = true;
    if (option == nullptr) {
        const std::uint32_t seq = appendOption(stand, std::move(seen)).seq;
        if (extend) {
            extendVisit(stand, kind, ac, dayhh, seq);
        }
        visits[ac.hexid] = {dayhh, seq};
    } else if (option->fromArchive || option->hours.test(static_cast<std::size_t>(dayhh.hh))) {
        changed = false;
    } else {
        option->hours.set(static_cast<std::size_t>(dayhh.hh));
        if (extend) {
            extendVisit(stand, kind, ac, dayhh, option->seq);
        }
    }
    if (leaving) {
        visits.erase(ac.hexid);
    }
    if (changed) {
        noteStandChange();
    }
    return changed;
}

/// Runs `record`; what it throws is logged, and nothing changed.
template <typename Record>
bool guarded(std::string_view name, DayHH dayhh, Record&& record) {
    try {
        return record();
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: hh_now: {}, {}", name, dayhh.hh, error.what()));
        return false;
    }
}

} // namespace

bool lf_addRealParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh, bool leaving) {
    return guarded("lf_addRealParkPosOption", dayhh, [&] {
        ParkPos* stand = standBySid(sid);
        return stand != nullptr && !ac.regcode.empty() && !ac.callsign.empty() &&
               observe(*stand, realKind, ac, extend, dayhh, leaving);
    });
}

bool lf_addSoftParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh) {
    return guarded("lf_addSoftParkPosOption", dayhh, [&] {
        ParkPos* stand = standBySid(sid);
        return stand != nullptr && !ac.callsign.empty() &&
               observe(*stand, softKind, ac, extend, dayhh, false);
    });
}

void lf_markCargoStand(LiveAc& ac) {
    ParkPos* stand = standBySid(ac.sid);
    if (stand == nullptr || stand->cargo || !ac.cargo) {
        return;
    }
    stand->cargo = true;
    stand->cargo_change = true;
    ac.standCargo = true;
    noteStandChange();
    const auto airport = parkAirport();
    logLine(fmt::format("{} stand: {}, cargo attribute set to true, {} parked here",
                        airport ? airport->code : std::string(), stand->id, describe(ac)));
}

} // namespace kst
