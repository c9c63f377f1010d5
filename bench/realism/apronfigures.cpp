#include "bench/realism/apronfigures.h"

#include "bench/realism/recordedstops.h"
#include "core/geodesy.h"
#include "core/reasoncounts.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <optional>

namespace kst::bench {

namespace {

using Line = std::vector<tool::TrackPoint>;

constexpr double sampleS = 0.1;
constexpr std::size_t samplesPerSecond = 10;
constexpr double longestSampleS = 0.15;
constexpr double overlapStepS = 0.5;

/// What is told after a longer silence is not held against the aircraft, nor what it does for a while after.
constexpr double longestGapS = 35.0;
constexpr double recoveryS = 40.0;

constexpr double reversalM = 2.0;
constexpr double reversalDeg = 120.0;
constexpr double shortestPieceM = 1.0;

constexpr double onStandM = 20.0;    ///< a recorded stop so near to a stand is on it
constexpr double roundingS = 5.0;    ///< a stop begins some time before it is told
constexpr double timeToParkS = 60.0; ///< after a stop has been shown

ApronStage stageOf(const ApronSample& sample) {
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
    return sample.rolling ? ApronStage::Roll : ApronStage::Taxi;
}

bool moves(const ApronSample& sample) {
    return stageOf(sample) != ApronStage::Parked;
}

double degreesOff(double a, double b) {
    return std::abs(gf_angleDiff(a, b)) * degPerRad;
}

/// The naive replay's moments on the ground, as samples.
std::vector<ApronSample> naiveOf(const Line& line) {
    std::vector<ApronSample> samples;
    double heading = 0.0;
    bool headed = false;
    std::size_t next = 1;
    for (double time = line.front().time; time <= line.back().time; time += sampleS) {
        ApronSample sample;
        for (; next < line.size() && line[next].time <= time; ++next) {
        }
        if (next < line.size()) {
            const LatLon from = line[next - 1].position;
            const LatLon to = line[next].position;
            if (tool::metresBetween(from, to) >= shortestPieceM) {
                const double way = gf_bearing(from, to);
                sample.turnDeg = headed ? degreesOff(heading, way) : 0.0;
                heading = way;
                headed = true;
            }
        }
        const tool::TrackPoint place = tool::pointAt(line, time);
        sample.at = time + tool::playDelaySeconds;
        sample.position = place.position;
        sample.heading = heading;
        sample.phase = AcPhase::Taxi;
        if (place.onGround) {
            samples.push_back(sample);
        }
    }
    return samples;
}

class StageAdder {
public:
    StageAdder(ApronFigures& figures, std::string name, const Line& line)
        : figures_(figures), name_(std::move(name)), line_(line) {
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (line[i].time - line[i - 1].time > longestGapS) {
                gaps_.emplace_back(line[i - 1].time, line[i].time + recoveryS);
            }
        }
    }

    void add(const std::vector<ApronSample>& samples, bool naive) {
        naive_ = naive;
        moved_ = false;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const ApronSample& sample = samples[i];
            ApronStageFigures& here = stage(sample);
            here.seconds += sampleS;
            if (sample.turnDeg > here.turnDeg) {
                here.turnDeg = sample.turnDeg;
                here.whereTurn = where(sample);
            }
            here.turnShare = std::max(here.turnShare, sample.turnShare);
            if (i % samplesPerSecond == 0) {
                place(sample);
                if (i >= samplesPerSecond) {
                    direction(samples[i - samplesPerSecond], sample);
                }
            }
        }
    }

private:
    ApronStageFigures& stage(const ApronSample& sample) {
        const ApronStage stage = naive_ ? ApronStage::Naive : stageOf(sample);
        return figures_.stages[static_cast<std::size_t>(stage)];
    }

    std::string where(const ApronSample& sample) const {
        return fmt::format("{}, {:.0f} s", name_, sample.at);
    }

    void place(const ApronSample& sample) {
        const double told = sample.at - tool::playDelaySeconds;
        const bool inGap = std::any_of(gaps_.begin(), gaps_.end(), [&](const auto& gap) {
            return told > gap.first && told < gap.second;
        });
        const auto found = tool::placeOnLine(line_, {sample.at, sample.position, 0.0, 0.0, true});
        if (sample.coasting || inGap || !found) {
            return;
        }
        ApronStageFigures& here = stage(sample);
        here.fromLineM.push_back(found->distanceM);
        if (found->distanceM > here.worstFromLineM) {
            here.worstFromLineM = found->distanceM;
            here.whereFromLine = where(sample);
        }
    }

    /// The way of this second against the way of the last one.
    void direction(const ApronSample& from, const ApronSample& to) {
        const bool together = to.at - from.at < samplesPerSecond * longestSampleS;
        if (!together || tool::metresBetween(from.position, to.position) < reversalM) {
            moved_ = false;
            return;
        }
        const double way = gf_bearing(from.position, to.position);
        if (moved_ && degreesOff(lastWay_, way) > reversalDeg) {
            ++stage(to).reversals;
            stage(to).whereReversal = where(to);
        }
        moved_ = true;
        lastWay_ = way;
    }

    ApronFigures& figures_;
    std::string name_;
    const Line& line_;
    std::vector<std::pair<double, double>> gaps_;
    bool naive_ = false;
    bool moved_ = false;
    double lastWay_ = 0.0;
};

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
    for (const ApronSample& sample : aircraft.samples) {
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
                 const PlayedApron& played) {
    StandStop out;
    out.stand = stand.id;
    out.recordedFromStandM = tool::metresBetween(stand.position(), stop.place);
    out.standsFromStart = stop.fromStart;
    out.leaves = stop.leaves;
    const double from = stop.begin + tool::playDelaySeconds - roundingS;
    const double to = stop.leaves ? stop.end + tool::playDelaySeconds + timeToParkS : played.end;
    const ApronSample* parked = nullptr;
    for (const ApronSample& sample : aircraft.samples) {
        if (sample.phase == AcPhase::Parked && sample.at >= from && sample.at <= to) {
            parked = &sample;
        }
    }
    const ParkPos* own = parked == nullptr ? nullptr : standOf(played.stands, parked->sid);
    if (own == nullptr) {
        out.instead = doingAt(aircraft, to);
        return out;
    }
    out.parkedOn = own->id;
    out.fromStandM = tool::metresBetween(parked->position, own->position());
    out.headingOffDeg = degreesOff(parked->heading, own->heading);
    out.stays = stop.leaves || aircraft.samples.back().phase == AcPhase::Parked;
    if (!out.stays || !aircraft.leavings.empty()) {
        out.instead = doingAt(aircraft, to);
    }
    return out;
}

struct OnApron {
    const PlayedAircraft* aircraft = nullptr;
    LatLon position;
    bool recorded = false; ///< the feed still tells of it
};

/// Everybody on the ground at one moment.
struct Apron {
    std::vector<OnApron> moving;
    std::vector<OnApron> parked;
};

/// The samples of one aircraft by moments of equal distance.
class Moments {
public:
    explicit Moments(const std::vector<ApronSample>& samples) : samples_(samples) {}

    /// The sample of this moment; moments must not go back.
    const ApronSample* at(double time) {
        while (next_ < samples_.size() && samples_[next_].at < time - sampleS / 2.0) {
            ++next_;
        }
        const bool here = next_ < samples_.size() && samples_[next_].at < time + sampleS;
        return here ? &samples_[next_] : nullptr;
    }

private:
    const std::vector<ApronSample>& samples_;
    std::size_t next_ = 0;
};

bool recordedAt(const PlayedAircraft& aircraft, double at) {
    const double told = at - tool::playDelaySeconds;
    return told >= aircraft.line.front().time && told <= aircraft.line.back().time;
}

void addOverlap(Overlap& overlap, const OnApron& a, const OnApron& b, const std::string& scene) {
    if (tool::metresBetween(a.position, b.position) >= a.aircraft->halfSpanM + b.aircraft->halfSpanM) {
        return;
    }
    if (a.recorded && b.recorded) {
        overlap.seconds += overlapStepS;
        overlap.pairs[fmt::format("{} {} {}", scene, a.aircraft->callsign, b.aircraft->callsign)] +=
            overlapStepS;
    } else {
        overlap.afterRecording += overlapStepS;
    }
}

void addOverlaps(Overlap& overlap, const std::vector<OnApron>& all, const std::string& scene) {
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = i + 1; j < all.size(); ++j) {
            addOverlap(overlap, all[i], all[j], scene);
        }
    }
}

void addOverlaps(Overlap& overlap, const Apron& apron, const std::string& scene) {
    for (const OnApron& moving : apron.moving) {
        for (const OnApron& parked : apron.parked) {
            addOverlap(overlap, moving, parked, scene);
        }
    }
}

/// Overlapping wing circles through a scene, among those that are shown at all: of those that move as flown,
/// of those that move in the naive replay, and of those that are parked.
class OverlapWatch {
public:
    OverlapWatch(ApronFigures& figures, const ApronScene& scene, const PlayedApron& played)
        : figures_(figures), scene_(scene), played_(played) {
        naive_.reserve(played.aircraft.size());
        for (const PlayedAircraft& aircraft : played.aircraft) {
            if (!aircraft.shown || aircraft.type.empty() || aircraft.line.empty()) {
                continue;
            }
            naive_.push_back(naiveOf(aircraft.line));
            watched_.push_back({&aircraft, Moments(aircraft.samples), Moments(naive_.back()), {}});
            for (const RecordedStop& stop : stopsOf(aircraft.line)) {
                if (nearestStand(played.stands, stop.place) != nullptr) {
                    watched_.back().parkedStops.push_back(stop);
                }
            }
        }
    }

    void watch() {
        for (double at = 0.0; at < played_.end; at += overlapStepS) {
            Apron flown;
            Apron naive;
            for (Watched& watched : watched_) {
                const bool recorded = recordedAt(*watched.aircraft, at);
                if (const ApronSample* sample = watched.flown.at(at)) {
                    (moves(*sample) ? flown.moving : flown.parked)
                        .push_back({watched.aircraft, sample->position, recorded});
                }
                if (const ApronSample* sample = watched.naive.at(at)) {
                    (standsAt(watched, at) ? naive.parked : naive.moving)
                        .push_back({watched.aircraft, sample->position, recorded});
                }
            }
            addOverlaps(figures_.flown, flown.moving, scene_.name);
            addOverlaps(figures_.naive, naive.moving, scene_.name);
            addOverlaps(figures_.flownPast, flown, scene_.name);
            addOverlaps(figures_.naivePast, naive, scene_.name);
            addOverlaps(figures_.parked, flown.parked, scene_.name);
        }
    }

private:
    struct Watched {
        const PlayedAircraft* aircraft;
        Moments flown;
        Moments naive;
        std::vector<RecordedStop> parkedStops;
    };

    static bool standsAt(const Watched& watched, double at) {
        const double told = at - tool::playDelaySeconds;
        return std::any_of(watched.parkedStops.begin(), watched.parkedStops.end(),
                           [&](const RecordedStop& stop) { return told >= stop.begin && told <= stop.end; });
    }

    ApronFigures& figures_;
    const ApronScene& scene_;
    const PlayedApron& played_;
    std::vector<std::vector<ApronSample>> naive_; ///< reserved: `watched_` refers into it
    std::vector<Watched> watched_;
};

void addLeavings(ApronFigures& figures, const PlayedAircraft& aircraft, const std::string& name) {
    for (const Leaving& leaving : aircraft.leavings) {
        if (!recordedAt(aircraft, leaving.at)) {
            ++figures.leftAfterwards[leaving.reason];
            continue;
        }
        ++figures.leftWhileRecorded[leaving.reason];
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

const ParkPos* standOf(const std::vector<ParkPos>& stands, std::uint32_t sid) {
    const auto found = std::ranges::find(stands, sid, &ParkPos::sid);
    return found == stands.end() ? nullptr : &*found;
}

void ApronFigures::add(const ApronScene& scene, const PlayedApron& played) {
    ++scenes;
    for (const PlayedAircraft& one : played.aircraft) {
        if (one.line.empty() || one.type.empty()) {
            continue;
        }
        ++aircraft;
        shown += one.shown ? 1 : 0;
        const std::string name = fmt::format("{} {}", scene.name, one.callsign);
        StageAdder adder(*this, name, one.line);
        adder.add(one.samples, false);
        adder.add(naiveOf(one.line), true);
        addLeavings(*this, one, name);
        for (const RecordedStop& stop : stopsOf(one.line)) {
            if (const ParkPos* stand = nearestStand(played.stands, stop.place)) {
                stops.push_back(judged(stop, *stand, one, played));
                stops.back().name =
                    fmt::format("{} {} {:.0f}-{:.0f} s", name, one.type, stop.begin, stop.end);
            }
        }
    }
    OverlapWatch(*this, scene, played).watch();
}

double badness(const ApronFigures& figures) {
    constexpr double fault = 100.0;
    double bad = figures.stages[static_cast<std::size_t>(ApronStage::Taxi)].worstFromLineM;
    for (const StandStop& stop : figures.stops) {
        bad += stop.stays && stop.fromStandM <= parkedWithinM && stop.headingOffDeg <= parkedWithinDeg
                   ? 0.0
                   : fault;
    }
    return bad;
}

} // namespace kst::bench
