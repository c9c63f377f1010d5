#include "engine/feedintake.h"

#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/reasoncounts.h"
#include "engine/categories.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/removal.h"
#include "engine/spawning.h"
#include "engine/tables.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace kst {

namespace {

// A record this soon after the last one tells nothing new.
constexpr double shortestIntervalS = 1.0;

// A change of speed by this factor, or between standing and flying, is a mistake of the feed.
constexpr double slowKt = 5.0;
constexpr double flyingKt = 80.0;
constexpr double implausibleFactor = 10.0;

// How far a moving target may be from its last point: what twice its speed and a tail wind explain, and what
// positions are wrong by. Its altitude, both in the air, likewise. The longer nothing was believed, the more
// is; a target that stays elsewhere runs out of points and begins anew there.
constexpr double mostSpeeds = 2.0;
constexpr double windKt = 100.0;
constexpr double placeSlackNm = 0.3;
constexpr double aheadS = 10.0;
// On a taxiway no wind carries it: what it may taxi unheard, and what positions there are wrong by.
constexpr double fastestTaxiKt = 43.0;
constexpr double unheardTaxiKt = 20.0;
constexpr double taxiSlackNm = 100.0 * nmPerMetre;
constexpr double mostFtPerSecond = 250.0;
constexpr double altitudeSlackFt = 1000.0;

// Straight and fast, a point each 450 m is enough; straight on a taxiway, one each 20 m.
constexpr double fastKt = 120.0;
constexpr double straightAirDeg = 1.0;
constexpr double straightAirM = 450.0;
constexpr double taxiKt = 30.0;
constexpr double straightTaxiDeg = 2.0;
constexpr double straightTaxiM = 20.0;
constexpr double longestTaxiGapS = 15.0;

constexpr double secondsPerHour = 3600.0;

constexpr double gateCeilingFt = 10000.0;
constexpr double gateBandFt = 120.0;
constexpr double elevationWithoutAirportFt = -1000.0;

// Each record draws once whether its pitches lie above or below those of its size class.
constexpr double rotatePitchShare = 0.025;
constexpr double climbPitchShare = 0.05;

// Targets heard since the run began, each once. Beyond the limit the set starts anew, so a feed of invented
// identities cannot fill the memory.
constexpr std::size_t heardLimit = 65536;
std::unordered_set<std::uint32_t> heardTargets;

void noteHeard(std::uint32_t hexid) {
    if (heardTargets.size() >= heardLimit) {
        heardTargets.clear();
    }
    if (heardTargets.insert(hexid).second) {
        countHappening(Happening::TargetsHeard);
    }
}

bool speedImplausible(double before, double now) {
    return (before > slowKt && now >= implausibleFactor * before) ||
           (now > slowKt && before >= implausibleFactor * now) || (before <= slowKt && now >= flyingKt) ||
           (now <= slowKt && before >= flyingKt);
}

/// Whether no flight leads from the last point of the track to where the record has the target. Aircraft on
/// stands have their own rules for positions that are far off.
bool placeImplausible(const FeedMessage& rec, const LiveAc& ac, double intervalS) {
    const bool standing = ac.phase == AcPhase::Parked || ac.phase == AcPhase::PushBack;
    if (standing || ac.holding) {
        return false;
    }
    const TrackPoint& last = ac.track.back();
    const double fastestKt = std::max(rec.groundSpeed, last.gsKt);
    LatLon from = last.position();
    double speedKt = mostSpeeds * fastestKt + windKt;
    double slackNm = placeSlackNm;
    // Of a push back nothing was taken in: after it the aircraft may be farther.
    if (!rec.airborne && !last.airborne && fastestKt <= fastestTaxiKt && ac.phase != AcPhase::AfterPush) {
        speedKt = mostSpeeds * fastestKt + unheardTaxiKt;
        slackNm = taxiSlackNm;
    }
    if (last.gsKt > fastKt && last.trackDeg != 0.0 && intervalS <= aheadS) {
        // Nothing fast turns back in a few seconds: it is to be found round the place ahead of it.
        const double aheadFt = last.gsKt * intervalS / secondsPerHour * feetPerNm;
        from = gf_destination(from, last.trackDeg * radPerDeg, aheadFt);
        speedKt = fastestKt + windKt;
    }
    const double reachNm = slackNm + speedKt * intervalS / secondsPerHour;
    if (gf_distanceNm(from, {rec.latitude, rec.longitude}) > reachNm) {
        return true;
    }
    if (!last.airborne) {
        return false;
    }
    const auto airport = parkAirportPlace();
    const double groundFt = airport ? airport->elevationFt : last.altFt;
    const double altitudeFt = rec.airborne ? rec.altitude : groundFt;
    return std::abs(altitudeFt - last.altFt) > altitudeSlackFt + mostFtPerSecond * intervalS;
}

/// Degrees between two tracks over ground, 0 to 180.
double trackDifference(double a, double b) {
    return std::abs(std::remainder(a - b, 360.0));
}

double secondsToCover(double metres, double gsKt) {
    return metres / (gsKt * metresPerNm / secondsPerHour);
}

bool straightAndSoon(const FeedMessage& rec, const TrackPoint& last, double intervalS) {
    const double off = trackDifference(rec.track, last.trackDeg);
    const double gs = rec.groundSpeed;
    if (rec.airborne) {
        return gs > fastKt && off <= straightAirDeg && intervalS <= secondsToCover(straightAirM, gs);
    }
    if (gs > taxiKt || off > straightTaxiDeg) {
        return false;
    }
    const double gap =
        gs > 0.0 ? std::min(secondsToCover(straightTaxiM, gs), longestTaxiGapS) : longestTaxiGapS;
    return intervalS <= gap;
}

/// Why a record adds nothing to this track; `None` if it does.
Reason uselessForTrack(const FeedMessage& rec, const LiveAc& ac) {
    if (ac.track.empty()) {
        return Reason::None;
    }
    const TrackPoint& last = ac.track.back();
    const double intervalS = rec.timestamp - ac.lastMsgTime;
    if (intervalS <= shortestIntervalS) {
        return Reason::RecordTooSoon;
    }
    if (speedImplausible(last.gsKt, rec.groundSpeed)) {
        return Reason::SpeedImplausible;
    }
    if (ac.reckonLeft < 1 && straightAndSoon(rec, last, intervalS)) {
        return Reason::StraightTrackThinned;
    }
    return placeImplausible(rec, ac, intervalS) ? Reason::PlaceImplausible : Reason::None;
}

bool sizeClassShown(Category category) {
    switch (category) {
    case Category::Light:
        return LIGHT_AIRCRAFT;
    case Category::HighPerf:
        return HIGH_PERF_AIRCRAFT;
    case Category::Rotorcraft:
        return HELICOPTERS;
    default:
        return true;
    }
}

double aboveOrBelow(double value, double share) {
    constexpr std::uint32_t evenChance = 50;
    return chance(evenChance) ? value * (1.0 + share) : value * (1.0 - share);
}

bool sameFlightInTable(const FeedMessage& rec) {
    return !rec.callsign.empty() && std::ranges::any_of(liveAcs, [&](const LiveAc& ac) {
        return ac.callsign == rec.callsign && ac.acType == rec.type;
    });
}

} // namespace

void setCategoryRates(AcBase& ac, Category category) {
    const CategoryRates& rates = categoryRates(category);
    ac.category = category;
    ac.baseTurnRate = rates.baseTurnRateDeg * radPerDeg;
    ac.turnRate = ac.baseTurnRate;
    ac.maxClimbStep = rates.maxClimbStepFt;
    ac.pushSpeedKt = rates.pushSpeedKt;
    ac.flareTicks = rates.flareTicks;
    ac.derotateTicks = rates.derotateTicks;
    ac.rotateTicks = rates.rotateTicks;
    ac.climbOutTicks = rates.climbOutTicks;
    ac.rotatePitch = aboveOrBelow(rates.rotatePitchDeg * radPerDeg, rotatePitchShare);
    ac.climbPitch = aboveOrBelow(rates.climbPitchDeg * radPerDeg, climbPitchShare);
}

TrackPoint trackPointOf(const FeedMessage& rec) {
    TrackPoint point;
    point.lat = rec.latitude;
    point.lon = rec.longitude;
    point.roll = rec.bank;
    point.heading = rec.heading;
    point.altFt = rec.altitude;
    point.gsKt = rec.groundSpeed;
    point.trackDeg = rec.track;
    point.vsFpm = rec.verticalSpeed;
    point.tasKt = rec.trueAirspeed;
    point.dueTick = rec.expiry;
    point.airborne = rec.airborne;
    point.headingFromFeed = rec.headingGiven;
    return point;
}

void lf_feedRecord(const FeedMessage& rec) {
    for (LiveAc& ac : liveAcs) {
        if (lf_matchFeedRecord(rec, ac)) {
            return;
        }
    }
    noteHeard(rec.hexid);
    if (sameFlightInTable(rec)) {
        countReason(Reason::DuplicateIdentity);
        return;
    }
    lf_checkNewTarget(rec);
}

bool lf_matchFeedRecord(const FeedMessage& rec, LiveAc& ac) {
    if (rec.hexid != ac.hexid) {
        return false;
    }
    if (ac.state == AcState::Respawning || ac.state == AcState::Removing) {
        countReason(Reason::AircraftLeaving);
        return true;
    }
    if (const Reason useless = uselessForTrack(rec, ac); useless != Reason::None) {
        noteDroppedRecord(ac, useless);
        return true;
    }
    if (ac.state == AcState::Buffered && !lf_altitudeGate(rec)) {
        noteDroppedRecord(ac, Reason::AltitudeGate);
        return true;
    }
    if (!lf_updateIdentity(ac, rec)) {
        return true;
    }
    ac.lastMsgTime = rec.timestamp;
    lf_addPosition(ac, trackPointOf(rec));
    return true;
}

bool lf_altitudeGate(const FeedMessage& rec) {
    if (rec.altitude <= 0.0 || rec.altitude >= gateCeilingFt) {
        return true;
    }
    const auto airport = parkAirportPlace();
    const double elevationFt = airport ? airport->elevationFt : elevationWithoutAirportFt;
    return std::abs(rec.altitude - elevationFt) > gateBandFt;
}

void lf_checkNewTarget(const FeedMessage& rec) {
    if (gf_isValidModel(rec.type)) {
        lf_newFeedRecord(rec);
        return;
    }
    FeedMessage known = rec;
    known.type = gf_regcodeModel(rec.registration);
    if (known.type.empty()) {
        countReason(Reason::TypeUnknown);
        return;
    }
    lf_newFeedRecord(known);
}

void lf_newFeedRecord(const FeedMessage& rec) {
    const Category category = gf_category(rec.type);
    if (!sizeClassShown(category)) {
        countReason(Reason::CategorySwitchedOff);
        return;
    }
    if (!lf_altitudeGate(rec)) {
        countReason(Reason::AltitudeGate);
        return;
    }
    LiveAc ac;
    ac.acType = rec.type;
    ac.origin = rec.origin;
    ac.destination = rec.destination;
    ac.callsign = rec.callsign;
    ac.primaryCallsign = rec.callsign;
    ac.regcode = rec.registration;
    ac.hexid = rec.hexid;
    ac.halfSpanNm = gf_halfWingSpan(rec.type);
    setCategoryRates(ac, category);
    ac.lastMsgTime = rec.timestamp;
    ac.track.push_back(trackPointOf(rec));
    liveAcs.push_back(std::move(ac));
    countHappening(Happening::Buffered);
}

void resetFeedIntake() {
    heardTargets.clear();
}

} // namespace kst
