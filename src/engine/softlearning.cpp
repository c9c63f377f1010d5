// Aircraft that were not seen on a stand: where they most likely stood, and who was learned from.

#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/standfit.h"
#include "engine/standselection.h"
#include "parking/learning.h"
#include "parking/stands.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace kst {

namespace {

// Which aircraft that leave the world are learned from.
constexpr double learnDistanceNm = 5.0;
constexpr double learnBelowFt = 2500.0;
constexpr int learnAgainAfter = 3; ///< half hours
constexpr int halfHoursPerDay = 48;

// How well a stand fits: its excess of room in steps.
constexpr double smallWingNm = 17.8 * nmPerMetre;
constexpr double smallStepNm = 14.0 * nmPerMetre;
constexpr double largeStepNm = 21.0 * nmPerMetre;
constexpr long worstScore = 100;

constexpr std::uint32_t gatePercent = 90;
constexpr std::size_t smallAirport = 10;

struct Learner {
    std::uint32_t hexid;
    int hh;
};
std::vector<Learner> recentLearners;

std::vector<Learner>::iterator findLearner(std::uint32_t hexid) {
    return std::ranges::find(recentLearners, hexid, &Learner::hexid);
}

struct SoftCandidate {
    ParkPos* stand;
    long score;
    bool hasOption;
};

using StandTest = bool (*)(const ParkPos&);

bool isHelipad(const ParkPos& stand) {
    return stand.heli;
}
bool isAnyRamp(const ParkPos& stand) {
    return stand.ramp;
}
bool isCargoStand(const ParkPos& stand) {
    return stand.cargo && !stand.heli;
}
bool isNoHelipad(const ParkPos& stand) {
    return !stand.heli;
}
bool isRamp(const ParkPos& stand) {
    return stand.ramp && !stand.cargo && !stand.heli;
}
bool isGate(const ParkPos& stand) {
    return !stand.ramp && !stand.cargo && !stand.heli;
}

/// One round over the stands of a kind; `fitting` ones only, or any.
struct Pass {
    StandTest kind;
    bool fitting;
};
constexpr Pass rotorcraftPasses[] = {
    {isHelipad, true}, {isAnyRamp, true}, {isHelipad, false}, {isAnyRamp, false}};
constexpr Pass cargoPasses[] = {
    {isCargoStand, true}, {isCargoStand, false}, {isNoHelipad, true}, {isNoHelipad, false}};
constexpr Pass rampPasses[] = {{isRamp, true}, {isRamp, false}};
constexpr Pass gateFirstPasses[] = {{isGate, true}, {isGate, false}, {isRamp, true}, {isRamp, false}};
constexpr Pass rampFirstPasses[] = {{isRamp, true}, {isRamp, false}, {isGate, true}, {isGate, false}};

bool prefersGates() {
    const auto airport = parkAirport();
    // In the United States an airliner goes to a gate.
    return (airport && airport->code.starts_with('K')) || chance(gatePercent);
}

std::span<const Pass> passesFor(const LiveAc& ac) {
    if (ac.category == Category::Rotorcraft) {
        return rotorcraftPasses;
    }
    if (ac.cargo) {
        return cargoPasses;
    }
    if (ac.category == Category::Light || ac.category == Category::Buzjets || ac.airline == "PVT") {
        return rampPasses;
    }
    return prefersGates() ? std::span<const Pass>(gateFirstPasses) : std::span<const Pass>(rampFirstPasses);
}

long fitScore(const LiveAc& ac, const ParkPos& stand) {
    const double stepNm = ac.halfSpanNm <= smallWingNm ? smallStepNm : largeStepNm;
    // Room beyond any aircraft scores alike; it must not overflow.
    return std::lround(std::min((stand.radius - ac.halfSpanNm) / stepNm, worstScore + 1.0));
}

bool isTakenAt(const ParkPos& stand, DayHH dayhh) {
    return std::ranges::any_of(stand.options, [&](const ParkOption& option) {
        return option.seq != 0 && option.day == dayhh.day &&
               option.hours.test(static_cast<std::size_t>(dayhh.hh));
    });
}

void collect(const Pass& pass, const LiveAc& ac, DayHH dayhh, std::vector<SoftCandidate>& candidates) {
    long best = worstScore;
    for (ParkPos& stand : parkPositions()) {
        if (!pass.kind(stand) || (pass.fitting && !fitsStand(ac, stand))) {
            continue;
        }
        const long score = pass.fitting ? fitScore(ac, stand) : 0;
        if (score > best || isTakenAt(stand, dayhh)) {
            continue;
        }
        best = score;
        candidates.push_back({&stand, score, wasSeenOn(stand, ac)});
    }
}

/// Where the aircraft was seen before comes first, then the tightest fit.
bool isBetter(const SoftCandidate& a, const SoftCandidate& b) {
    return a.hasOption != b.hasOption ? a.hasOption : a.score < b.score;
}

bool nearAirport(const LiveAc& ac) {
    const auto airport = parkAirportPlace();
    return airport && gf_distanceNm(ac.simState.position(), airport->position) <= learnDistanceNm;
}

/// Whether the aircraft was really seen on a stand in this half hour or one beside it.
bool wasSeenParked(const LiveAc& ac, DayHH dayhh) {
    const auto before = static_cast<std::size_t>((dayhh.hh + halfHoursPerDay - 1) % halfHoursPerDay);
    const auto now = static_cast<std::size_t>(dayhh.hh);
    const auto after = static_cast<std::size_t>((dayhh.hh + 1) % halfHoursPerDay);
    const auto seen = [&](const ParkOption& option) {
        return option.seq != 0 && option.real && option.day == dayhh.day && option.reg == ac.regcode &&
               (option.hours.test(before) || option.hours.test(now) || option.hours.test(after));
    };
    return !ac.regcode.empty() && std::ranges::any_of(parkPositions(), [&](const ParkPos& stand) {
        return std::ranges::any_of(stand.options, seen);
    });
}

/// The guess made for this aircraft before, if there is one, is brought up to date. True if that changed it.
bool extendSoftVisit(const LiveAc& ac, DayHH dayhh) {
    for (const ParkPos& stand : parkPositions()) {
        const auto visit = stand.softVisits.find(ac.hexid);
        if (visit != stand.softVisits.end()) {
            return visit->second.stamp != dayhh && lf_addSoftParkPosOption(stand.sid, ac, true, dayhh);
        }
    }
    return false;
}

} // namespace

ParkPos* lf_searchSoftStand(DayHH dayhh, const LiveAc& ac, bool mayLookAhead) {
    std::vector<SoftCandidate> candidates;
    for (const Pass& pass : passesFor(ac)) {
        collect(pass, ac, dayhh, candidates);
        if (!candidates.empty()) {
            break;
        }
    }
    if (candidates.empty()) {
        return mayLookAhead && parkPositions().size() <= smallAirport
                   ? lf_searchSoftStand(dayhh.next(), ac, false)
                   : nullptr;
    }
    if (RANDOM) {
        shuffle(candidates);
    }
    return std::ranges::min_element(candidates, isBetter)->stand;
}

void lf_learnSoft(LiveAc& ac, bool force) {
    if (!LEARN_SOFT || softLearningBarred() || parkPositions().empty() || !nearAirport(ac) ||
        (!force && ac.heightAgl >= learnBelowFt) || ac.sid != 0) {
        return;
    }
    const DayHH now = nowDayHH();
    if (extendSoftVisit(ac, now)) {
        lf_noteLearner(ac.hexid, now);
        return;
    }
    if (!lf_mayLearn(now, ac.hexid, false) || wasSeenParked(ac, now)) {
        return;
    }
    const ParkPos* stand = lf_searchSoftStand(now, ac, true);
    if (stand != nullptr && !lf_addSoftParkPosOption(stand->sid, ac, false, now)) {
        recentLearners.erase(findLearner(ac.hexid));
    }
}

bool lf_mayLearn(DayHH dayhh, std::uint32_t hexid, bool force) {
    const auto found = findLearner(hexid);
    if (found != recentLearners.end() && !force &&
        (dayhh.hh - found->hh + halfHoursPerDay) % halfHoursPerDay < learnAgainAfter) {
        return false;
    }
    lf_noteLearner(hexid, dayhh);
    return true;
}

void lf_noteLearner(std::uint32_t hexid, DayHH dayhh) {
    if (const auto found = findLearner(hexid); found != recentLearners.end()) {
        found->hh = dayhh.hh;
    } else {
        recentLearners.push_back({hexid, dayhh.hh});
    }
}

void resetStandSelection() {
    recentLearners.clear();
    forgetUserStand();
}

} // namespace kst
