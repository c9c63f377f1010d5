#include "bench/realism/figures.h"

#include "core/geodesy.h"
#include "engine/categories.h"
#include "engine/flare.h"
#include "tools/measureflights/linematch.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kst::bench {

namespace {

// Between two frames of the world: longer ones belong to another object.
constexpr double longestFrameS = 0.05;
constexpr std::size_t samplesPerSecond = 50;
constexpr std::size_t judgedEvery = 25; ///< samples between places held against the line
constexpr double slowestForTimeKt = 5.0;
constexpr double backOnLineM = 10.0;
constexpr double nearLineM = 100.0; ///< farther off, the place abeam says nothing of the time
constexpr double slowestForStepKt = 20.0;
constexpr double longestGapS = 35.0;
constexpr double recoveryS = 40.0;

constexpr double belowGroundFt = 0.5;
constexpr double reversalM = 2.0;
constexpr double reversalDeg = 120.0;

// A touchdown comes after some time in the air, at some speed.
constexpr double leastFlightS = 3.0;
constexpr double touchdownWindowS = 0.5;
constexpr double slowestTouchdownKt = 30.0;
constexpr double touchdownGentlestFpm = -60.0;
constexpr double touchdownHardestFpm = -350.0;
constexpr double axisRangeM = 4000.0;
constexpr double axisTimeS = 60.0;
constexpr double axisTurnDeg = 10.0;
constexpr std::size_t fewestForAxis = 4;

constexpr double pitchSpread = 1.05; ///< a record's own pitches lie so far from those of its class
/// The lowest nose at rest, and of the climb law.
constexpr double lowestNoseDeg = 2.5;

double angleOff(double a, double b) {
    return std::abs(std::remainder(b - a, 2.0 * pi)) * degPerRad;
}

/// Whether two samples are neighbours of one object.
bool linked(const Sample& a, const Sample& b) {
    return a.objectId == b.objectId && b.at > a.at && b.at - a.at <= longestFrameS;
}

/// Degrees per second that the size class's table allows at this stage.
double pitchLimit(Category category, Stage stage) {
    const CategoryRates& rates = categoryRates(category);
    double perTick = categoryLimits(category).pitchRateDeg;
    if (stage == Stage::TakeOff) {
        perTick = std::max(
            {perTick, (lowestNoseDeg - rates.rotatePitchDeg * pitchSpread) / rates.rotateTicks,
             (rates.rotatePitchDeg - rates.climbPitchDeg) * pitchSpread * pitchSpread / rates.climbOutTicks});
    } else if (stage == Stage::Flare) {
        perTick = std::max(perTick, (lowestNoseDeg - flarePitch * degPerRad) / rates.flareTicks);
    } else if (stage == Stage::Rollout) {
        perTick = std::max(perTick, (lowestNoseDeg - flarePitch * degPerRad) / rates.derotateTicks);
    }
    return perTick * ticksPerSecond;
}

/// The wings come level while the nose comes down.
double bankLimit(Category category, Stage stage) {
    const CategoryLimits& limits = categoryLimits(category);
    double perTick = limits.bankRateDeg;
    if (stage == Stage::Rollout) {
        perTick = std::max(perTick, limits.maxBankDeg / categoryRates(category).derotateTicks);
    }
    return perTick * ticksPerSecond;
}

class Adder {
public:
    Adder(Figures& figures, const std::string& flight, const PlayedAircraft& played,
          const std::vector<Sample>& samples)
        : figures_(figures), flight_(flight), played_(played), samples_(samples) {}

    void add() {
        for (std::size_t i = 1; i < samples_.size(); ++i) {
            frame(samples_[i - 1], samples_[i]);
            if (i % samplesPerSecond == 0) {
                direction(i);
            }
            contact(i);
        }
        for (const JudgedPlace& judged : judgedPlaces(played_, samples_)) {
            place(judged);
        }
    }

private:
    StageFigures& stage(const Sample& sample) {
        return figures_.stages[static_cast<std::size_t>(sample.stage)];
    }

    void frame(const Sample& a, const Sample& b) {
        if (!linked(a, b)) {
            return;
        }
        const double dt = b.at - a.at;
        StageFigures& here = stage(b);
        here.seconds += dt;
        here.step.note(stepRatio(played_, a, b), flight_, b.at);
        here.turn.note(angleOff(a.heading, b.heading) / dt, flight_, b.at);
        here.turnShare.note(groundTurnShare(played_, a, b), flight_, b.at);
        here.pitchShare.note(angleOff(a.pitch, b.pitch) / dt / pitchLimit(played_.category, b.stage), flight_,
                             b.at);
        here.bankShare.note(angleOff(a.bank, b.bank) / dt / bankLimit(played_.category, b.stage), flight_,
                            b.at);
        if (b.wheelsFt < -belowGroundFt) {
            here.belowSeconds += dt;
            here.below.note(-b.wheelsFt, flight_, b.at);
        }
    }

    void place(const JudgedPlace& judged) {
        const Sample& sample = *judged.sample;
        const tool::OnLine& found = judged.place;
        StageFigures& here = stage(sample);
        here.fromLineM.push_back(found.distanceM);
        here.fromLine.note(found.distanceM, flight_, sample.at);
        if (judged.timed()) {
            here.timeOffS.push_back(std::abs(found.lagS));
        }
        if (judged.onLine()) {
            here.lag.note(found.lagS, flight_, sample.at);
            here.lead.note(-found.lagS, flight_, sample.at);
            here.overDrift.note(beyondDriftLimit(judged), flight_, sample.at);
        }
    }

    void direction(std::size_t i) {
        const Sample& from = samples_[i - samplesPerSecond];
        const Sample& to = samples_[i];
        if (way_.turnsBack(from.position, to.position, from.objectId == to.objectId)) {
            stage(to).noteReversal(flight_, to.at);
            figures_.reversals.push_back(i);
        }
    }

    void contact(std::size_t i) {
        const Sample& before = samples_[i - 1];
        const Sample& now = samples_[i];
        if (before.objectId != now.objectId) {
            flyingSince_ = now.at;
            return;
        }
        if (before.onGround && !now.onGround) {
            flyingSince_ = now.at;
            figures_.liftOffs += now.stage == Stage::TakeOff ? 1 : 0;
            return;
        }
        const auto back = static_cast<std::size_t>(touchdownWindowS * samplesPerSecond);
        if (before.onGround || !now.onGround || now.at - flyingSince_ < leastFlightS || i <= back) {
            return;
        }
        const Sample& start = samples_[i - 1 - back];
        Touchdown touchdown;
        touchdown.flight = flight_;
        touchdown.at = now.at;
        touchdown.verticalFpm = (before.altFt - start.altFt) / (before.at - start.at) * 60.0;
        touchdown.fromAxisM = fromAxis(now);
        touchdown.approached = start.stage == Stage::Approach || start.stage == Stage::Flare;
        const double way = tool::metresBetween(start.position, before.position);
        const double speedKt = way / metresPerNm / (before.at - start.at) * tool::secondsPerHour;
        if (speedKt >= slowestTouchdownKt) {
            figures_.touchdowns.push_back(touchdown);
        }
    }

    /// From the straight line through what was recorded round the touchdown in its direction.
    double fromAxis(const Sample& down) const {
        double count = 0.0;
        double along = 0.0;
        double across = 0.0;
        double alongAlong = 0.0;
        double alongAcross = 0.0;
        const double expected = down.at - tool::playDelaySeconds;
        const tool::TrackPoint* last = nullptr;
        for (const tool::TrackPoint& point : played_.line) {
            const tool::TrackPoint* from = last;
            last = &point;
            const double metres = tool::metresBetween(point.position, down.position);
            if (from == nullptr || std::abs(point.time - expected) > axisTimeS || metres > axisRangeM ||
                from->position == point.position ||
                angleOff(gf_bearing(from->position, point.position), down.heading) > axisTurnDeg) {
                continue;
            }
            const double off = metres > 0.0 ? gf_bearing(down.position, point.position) - down.heading : 0.0;
            const double x = metres * std::cos(off);
            const double y = metres * std::sin(off);
            count += 1.0;
            along += x;
            across += y;
            alongAlong += x * x;
            alongAcross += x * y;
        }
        const double spread = count * alongAlong - along * along;
        if (count < static_cast<double>(fewestForAxis) || spread <= 0.0) {
            return -1.0;
        }
        const double slope = (count * alongAcross - along * across) / spread;
        return std::abs((across - slope * along) / count) / std::hypot(1.0, slope);
    }

    Figures& figures_;
    const std::string& flight_;
    const PlayedAircraft& played_;
    const std::vector<Sample>& samples_;
    double flyingSince_ = 0.0;
    WayWatch way_;
};

std::string rowOf(std::string_view name, const StageFigures& figures) {
    const tool::Spread line = tool::spreadOf(figures.fromLineM);
    const tool::Spread time = tool::spreadOf(figures.timeOffS);
    return fmt::format(
        "{:16} {:7.0f} | {:6.1f} {:7.1f} {:7.0f} | {:5.2f} {:5.1f} {:5.1f} {:5.1f} | {:5.2f} | "
        "{:6.1f} | {:4}\n",
        name, figures.seconds, line.median, line.p95, line.max, time.median, time.p95, figures.lead.value,
        figures.lag.value, figures.step.value, figures.belowSeconds, figures.reversals);
}

std::string touchdownsOf(const Figures& figures) {
    std::vector<double> rates;
    std::vector<double> axis;
    int outside = 0;
    for (const Touchdown& touchdown : figures.touchdowns) {
        rates.push_back(-touchdown.verticalFpm);
        if (touchdown.fromAxisM >= 0.0) {
            axis.push_back(touchdown.fromAxisM);
        }
        outside += touchdown.gentle() ? 0 : 1;
    }
    const tool::Spread rate = tool::spreadOf(rates);
    const tool::Spread off = tool::spreadOf(axis);
    return fmt::format(
        "{} touchdowns, ft/min: {:.0f} to {:.0f}, median {:.0f}, {} outside {:.0f} to {:.0f}; from the "
        "runway's axis: median {:.1f} m, 95 % {:.1f} m, largest {:.1f} m\n",
        figures.touchdowns.size(), -rate.min, -rate.max, -rate.median, outside, touchdownGentlestFpm,
        touchdownHardestFpm, off.median, off.p95, off.max);
}

} // namespace

void Worst::note(double candidate, const std::string& flight, double at) {
    if (candidate > value) {
        value = candidate;
        where = fmt::format("{}, {:.0f} s", flight, at);
    }
}

void StageFigures::noteReversal(const std::string& flight, double at) {
    ++reversals;
    lastReversal = fmt::format("{}, {:.0f} s", flight, at);
}

std::string worstOf(std::string_view stageName, const StageFigures& figures) {
    const std::pair<std::string_view, const Worst*> all[] = {
        {"from the line, m", &figures.fromLine},
        {"lead, s", &figures.lead},
        {"lag, s", &figures.lag},
        {"beyond the drift limit, s", &figures.overDrift},
        {"step, times the speed", &figures.step},
        {"turn, deg/s", &figures.turn},
        {"turn, share of the limit", &figures.turnShare},
        {"pitch, share of the limit", &figures.pitchShare},
        {"bank, share of the limit", &figures.bankShare},
        {"below the ground, ft", &figures.below},
    };
    std::string out;
    for (const auto& [name, worst] : all) {
        if (worst->value > 0.0) {
            out += fmt::format("  {:9} {:26} {:9.2f}  {}\n", stageName, name, worst->value, worst->where);
        }
    }
    if (figures.reversals > 0) {
        out += fmt::format("  {:9} {:26} {:9}  {}\n", stageName, "turning back", figures.reversals,
                           figures.lastReversal);
    }
    return out;
}

bool Touchdown::gentle() const {
    return verticalFpm <= touchdownGentlestFpm && verticalFpm >= touchdownHardestFpm;
}

void Figures::add(const std::string& flight, const PlayedAircraft& played,
                  const std::vector<Sample>& samples) {
    Adder(*this, flight, played, samples).add();
}

bool WayWatch::turnsBack(LatLon from, LatLon to, bool linked) {
    const bool moves = linked && tool::metresBetween(from, to) >= reversalM;
    const double way = moves ? gf_bearing(from, to) : 0.0;
    const bool back = moves && moved_ && angleOff(lastWay_, way) > reversalDeg;
    moved_ = moves;
    lastWay_ = way;
    return back;
}

Silences::Silences(const Line& line) {
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i].time - line[i - 1].time > longestGapS) {
            times_.emplace_back(line[i - 1].time, line[i].time + recoveryS);
        }
    }
}

bool Silences::at(double lineTime) const {
    return std::ranges::any_of(
        times_, [&](const auto& silence) { return lineTime > silence.first && lineTime < silence.second; });
}

bool JudgedPlace::timed() const {
    const double nearM = sample->leg == LegKind::Resumed ? backOnLineM : nearLineM;
    return place.speedKt >= slowestForTimeKt && place.distanceM <= nearM;
}

bool JudgedPlace::onLine() const {
    return timed() && sample->leg != LegKind::Resumed;
}

std::vector<JudgedPlace> judgedPlaces(const PlayedAircraft& played, const std::vector<Sample>& samples) {
    const Silences silences(played.line);
    std::vector<JudgedPlace> judged;
    std::vector<tool::ShownPlace> shown;
    std::uint32_t objectId = 0;
    for (std::size_t i = judgedEvery; i < samples.size(); i += judgedEvery) {
        const Sample& sample = samples[i];
        if (sample.coasting || silences.at(sample.at - tool::playDelaySeconds)) {
            continue;
        }
        judged.push_back({&sample, {}});
        shown.push_back({sample.at, sample.position, sample.objectId != objectId});
        objectId = sample.objectId;
    }
    const auto found = tool::placesOnLine(played.line, shown);
    for (std::size_t i = 0; i < judged.size(); ++i) {
        judged[i].place = found[i].value_or(tool::OnLine());
    }
    std::erase_if(judged, [](const JudgedPlace& place) { return std::isinf(place.place.distanceM); });
    return judged;
}

double beyondDriftLimit(const JudgedPlace& judged) {
    const double lagS = judged.place.lagS;
    return std::max(lagS - judged.sample->lagLimitS, -lagS - judged.sample->leadLimitS);
}

double groundTurnShare(const PlayedAircraft& played, const Sample& a, const Sample& b) {
    const bool judged = linked(a, b) && b.onGround;
    return judged ? angleOff(a.heading, b.heading) / (b.at - a.at) / fastestGroundTurn(played.category) : 0.0;
}

double stepRatio(const PlayedAircraft& played, const Sample& a, const Sample& b) {
    const double metres = tool::metresBetween(a.position, b.position);
    const double metresPerKt = metresPerNm / tool::secondsPerHour * (b.at - a.at);
    if (!linked(a, b) || metres <= slowestForStepKt * metresPerKt) {
        return 0.0;
    }
    const double toldKt = tool::highestSpeedKt(played.line, b.at - tool::playDelaySeconds);
    return metres / (std::max({toldKt, std::abs(b.speedKt), slowestForStepKt}) * metresPerKt);
}

double badness(const Figures& figures) {
    constexpr double fault = 100.0;
    double bad = 0.0;
    for (const StageFigures& stage : figures.stages) {
        bad = std::max(bad, tool::spreadOf(stage.fromLineM).p95);
        bad += stage.step.value > longestStep ? fault : 0.0;
        bad += stage.belowSeconds > 0.0 ? fault : 0.0;
        bad += stage.reversals * fault;
    }
    for (const Touchdown& touchdown : figures.touchdowns) {
        bad += touchdown.gentle() ? 0.0 : fault;
    }
    return bad;
}

std::string tableOf(const Figures& flown, const Figures& ideal) {
    std::string out =
        "                         |   from the line, m    |   off the 30 s, s       | step  |  below | "
        "turns\n"
        "stage            seconds | median     95%     max |  med   95%  lead   lag | times |      s | "
        " back\n";
    for (std::size_t i = 0; i < stageCount; ++i) {
        if (flown.stages[i].seconds > 0.0) {
            out += rowOf(stageNames[i], flown.stages[i]) + rowOf("  ideal", ideal.stages[i]);
        }
    }
    out += "\n" + touchdownsOf(flown) + "\nworst of what was flown\n";
    for (std::size_t i = 0; i < stageCount; ++i) {
        out += worstOf(stageNames[i], flown.stages[i]);
    }
    for (const Touchdown& touchdown : flown.touchdowns) {
        if (!touchdown.gentle()) {
            out +=
                fmt::format("  touchdown at {:.0f} ft/min: {}, {:.0f} s{}\n", touchdown.verticalFpm,
                            touchdown.flight, touchdown.at,
                            touchdown.approached ? "" : ", its leg to the ground began before the approach");
        }
    }
    return out;
}

} // namespace kst::bench
