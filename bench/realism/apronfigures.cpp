#include "bench/realism/apronfigures.h"

#include "bench/realism/recordedstops.h"
#include "core/geodesy.h"
#include "core/reasoncounts.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kst::bench {

namespace {

constexpr double sampleS = 0.1;
constexpr std::size_t samplesPerSecond = 10;
constexpr double longestSampleS = 0.15;
constexpr double overlapStepS = 0.5;

constexpr double onStandM = 20.0; ///< a recorded stop so near to a stand is on it
constexpr double roundingS = 5.0; ///< a stop begins some time before it is told
constexpr double parkedWithinM = 2.0;
constexpr double parkedWithinDeg = 1.0;
constexpr double timeToParkS = 60.0; ///< after a stop has been shown

ApronStage stageOf(const Sample& sample) {
    switch (sample.phase) {
    case AcPhase::PushBack:
    case AcPhase::AfterPush:
        return ApronStage::PushBack;
    case AcPhase::Parking:
        return ApronStage::Parking;
    case AcPhase::Parked:
    case AcPhase::Unknown:
        return ApronStage::Parked;
    case AcPhase::Taxi:
    case AcPhase::TakeOff:
    case AcPhase::Air:
        break;
    }
    const bool rolls = sample.stage == Stage::TakeOff || sample.stage == Stage::Rollout;
    return rolls ? ApronStage::Roll : ApronStage::Taxi;
}

double degreesOff(double a, double b) {
    return std::abs(gf_angleDiff(a, b)) * degPerRad;
}

void addStages(ApronFigures& figures, const std::string& name, const PlayedAircraft& aircraft) {
    const Silences silences(aircraft.line);
    const std::vector<Sample>& samples = aircraft.flown;
    WayWatch way;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Sample& sample = samples[i];
        StageFigures& here = figures.stages[static_cast<std::size_t>(stageOf(sample))];
        here.seconds += sampleS;
        here.turnShare.note(sample.turnShare, name, sample.at);
        if (i % samplesPerSecond != 0) {
            continue;
        }
        const auto found = tool::placeOnLine(aircraft.line, sample.at, sample.position);
        if (found && !sample.coasting && !silences.at(sample.at - tool::playDelaySeconds)) {
            here.fromLineM.push_back(found->distanceM);
            here.fromLine.note(found->distanceM, name, sample.at);
        }
        if (i > 0) {
            const Sample& from = samples[i - samplesPerSecond];
            const bool linked = sample.at - from.at < samplesPerSecond * longestSampleS;
            if (way.turnsBack(from.position, sample.position, linked)) {
                here.noteReversal(name, sample.at);
            }
        }
    }
}

const ParkPos* nearestStand(const std::vector<ParkPos>& stands, LatLon place) {
    const ParkPos* nearest = nullptr;
    double nearestM = onStandM;
    for (const ParkPos& stand : stands) {
        const double metres = tool::metresBetween(stand.position(), place);
        if (!stand.heli && metres <= nearestM) {
            nearest = &stand;
            nearestM = metres;
        }
    }
    return nearest;
}

/// What an aircraft that should be parked does at this moment.
std::string doingAt(const PlayedAircraft& aircraft, double at) {
    std::string out = "not shown yet";
    if (!aircraft.shown) {
        return fmt::format("never shown: {}", refusalText(aircraft.refused));
    }
    for (const Sample& sample : aircraft.flown) {
        if (sample.at > at) {
            break;
        }
        out = fmt::format("{}{}", phaseNames[static_cast<std::size_t>(sample.phase)],
                          sample.coasting ? ", no data" : "");
    }
    for (const Leaving& leaving : aircraft.leavings) {
        if (leaving.at <= at) {
            out = fmt::format("gone at {:.0f} s: {}", leaving.at, reasonText(leaving.reason));
        }
    }
    return out;
}

StandStop judged(const RecordedStop& stop, const ParkPos& stand, const PlayedAircraft& aircraft,
                 const PlayedScene& played) {
    StandStop out;
    out.what =
        fmt::format("{} {:.0f}-{:.0f} s on {} ({:.0f} m off it in the recording, {}{})", aircraft.type,
                    stop.begin, stop.end, stand.id, tool::metresBetween(stand.position(), stop.place),
                    stop.fromStart ? "there from the start" : "arrives", stop.leaves ? ", leaves again" : "");
    const double from = stop.begin + tool::playDelaySeconds - roundingS;
    const double to = stop.leaves ? stop.end + tool::playDelaySeconds + timeToParkS : played.end;
    out.instead = doingAt(aircraft, to);
    for (const Sample& sample : aircraft.flown) {
        const auto own = std::ranges::find(played.stands, sample.sid, &ParkPos::sid);
        if (sample.phase == AcPhase::Parked && sample.at >= from && sample.at <= to &&
            own != played.stands.end()) {
            out.parked = true;
            out.fromStandM = tool::metresBetween(sample.position, own->position());
            out.headingOffDeg = degreesOff(sample.heading, own->heading);
        }
    }
    out.stays = out.parked && (stop.leaves || aircraft.flown.back().phase == AcPhase::Parked);
    return out;
}

struct OnApron {
    const PlayedAircraft* aircraft = nullptr;
    LatLon position;
};

/// Everybody on the ground at one moment.
struct Apron {
    std::vector<OnApron> moving;
    std::vector<OnApron> parked;
};

bool recordedAt(const PlayedAircraft& aircraft, double at) {
    const double told = at - tool::playDelaySeconds;
    return told >= aircraft.line.front().time && told <= aircraft.line.back().time;
}

void addOverlap(Overlaps& overlaps, const OnApron& a, const OnApron& b, const std::string& scene) {
    if (tool::metresBetween(a.position, b.position) < a.aircraft->halfSpanM + b.aircraft->halfSpanM) {
        overlaps[fmt::format("{} {} {}", scene, a.aircraft->callsign, b.aircraft->callsign)] += overlapStepS;
    }
}

void addOverlaps(Overlaps& overlaps, const std::vector<OnApron>& all, const std::string& scene) {
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = i + 1; j < all.size(); ++j) {
            addOverlap(overlaps, all[i], all[j], scene);
        }
    }
}

void addOverlaps(Overlaps& overlaps, const Apron& apron, const std::string& scene) {
    for (const OnApron& moving : apron.moving) {
        for (const OnApron& parked : apron.parked) {
            addOverlap(overlaps, moving, parked, scene);
        }
    }
}

/// One that is shown at all, followed through its scene.
struct Followed {
    const PlayedAircraft* aircraft = nullptr;
    std::vector<RecordedStop> stops; ///< on stands
    std::size_t next = 0;            ///< sample

    /// Where it is on the ground as flown; moments must not go back.
    const Sample* flownAt(double at) {
        const std::vector<Sample>& samples = aircraft->flown;
        while (next < samples.size() && samples[next].at < at - sampleS / 2.0) {
            ++next;
        }
        return next < samples.size() && samples[next].at < at + sampleS ? &samples[next] : nullptr;
    }

    bool standsAt(double told) const {
        return std::ranges::any_of(
            stops, [&](const RecordedStop& stop) { return told >= stop.begin && told <= stop.end; });
    }
};

/// Overlapping wing circles through a scene: as flown, and on the recorded ways themselves.
void addOverlaps(ApronFigures& figures, const std::string& scene, const PlayedScene& played) {
    std::vector<Followed> all;
    for (const PlayedAircraft& aircraft : played.aircraft) {
        if (aircraft.shown && !aircraft.type.empty() && !aircraft.line.empty()) {
            all.push_back({&aircraft, stopsOf(aircraft.line)});
            std::erase_if(all.back().stops, [&](const RecordedStop& stop) {
                return nearestStand(played.stands, stop.place) == nullptr;
            });
        }
    }
    for (double at = 0.0; at < played.end; at += overlapStepS) {
        const double told = at - tool::playDelaySeconds;
        Apron flown;
        Apron naive;
        for (Followed& one : all) {
            if (!recordedAt(*one.aircraft, at)) {
                continue;
            }
            if (const Sample* sample = one.flownAt(at)) {
                const bool parked = stageOf(*sample) == ApronStage::Parked;
                (parked ? flown.parked : flown.moving).push_back({one.aircraft, sample->position});
            }
            const tool::TrackPoint place = tool::pointAt(one.aircraft->line, told);
            if (place.onGround) {
                (one.standsAt(told) ? naive.parked : naive.moving).push_back({one.aircraft, place.position});
            }
        }
        addOverlaps(figures.flown, flown.moving, scene);
        addOverlaps(figures.naive, naive.moving, scene);
        addOverlaps(figures.flownPast, flown, scene);
        addOverlaps(figures.naivePast, naive, scene);
        addOverlaps(figures.parked, flown.parked, scene);
    }
}

void addLeavings(ApronFigures& figures, const PlayedAircraft& aircraft, const std::string& name) {
    for (const Leaving& leaving : aircraft.leavings) {
        if (!recordedAt(aircraft, leaving.at)) {
            continue;
        }
        figures.whoLeft.push_back(fmt::format("{}, {:.0f} s, {}: {}", name, leaving.at,
                                              phaseNames[static_cast<std::size_t>(leaving.phase)],
                                              reasonText(leaving.reason)));
    }
    if (!aircraft.shown) {
        ++figures.neverShown[aircraft.refused];
    }
}

} // namespace

std::string_view refusalText(Reason reason) {
    return reason == Reason::None ? "refused before the buffer" : reasonText(reason);
}

bool StandStop::good() const {
    return stays && fromStandM <= parkedWithinM && headingOffDeg <= parkedWithinDeg;
}

void ApronFigures::add(const std::string& scene, const PlayedScene& played) {
    ++scenes;
    for (const PlayedAircraft& one : played.aircraft) {
        if (one.line.empty() || one.type.empty()) {
            continue;
        }
        ++aircraft;
        shown += one.shown ? 1 : 0;
        const std::string name = fmt::format("{} {}", scene, one.callsign);
        addStages(*this, name, one);
        addLeavings(*this, one, name);
        for (const RecordedStop& stop : stopsOf(one.line)) {
            if (const ParkPos* stand = nearestStand(played.stands, stop.place)) {
                stops.push_back(judged(stop, *stand, one, played));
                stops.back().what = name + " " + stops.back().what;
            }
        }
    }
    addOverlaps(*this, scene, played);
}

double badness(const ApronFigures& figures) {
    constexpr double fault = 100.0;
    double bad = figures.stages[static_cast<std::size_t>(ApronStage::Taxi)].fromLine.value;
    for (const StandStop& stop : figures.stops) {
        bad += stop.good() ? 0.0 : fault;
    }
    return bad;
}

} // namespace kst::bench
