#include "bench/realism/causes.h"

#include "core/geodesy.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <set>
#include <vector>

namespace kst::bench {

namespace {

constexpr double sameEventS = 5.0; ///< steps or turns this near to each other are one
constexpr double askedOffS = 3.0;
constexpr double sameOffS = 2.0; ///< the ideal aircraft is as far off as the flown one to within this
constexpr double beyondSlackS = 1.0;
constexpr double judgedS = 0.5;

// How long what happened counts as the cause: the limits, once widened, shrink by a second a leg.
constexpr double respawnCountsS = 120.0;
constexpr double silenceCountsS = 120.0;

// A line that turns back on itself has no one place for an aircraft.
constexpr double turnBackDeg = 120.0;
constexpr double turnBackWindowS = 30.0;
constexpr double samePlaceM = 2.0;
constexpr double reversalSlackS = 10.0;

constexpr double gentleTurnDeg = 45.0;
constexpr double longestTurnShare = 1.01;

constexpr std::size_t mostNamed = 12;

/// Whether the line turns back on itself from so many seconds behind this time to so many ahead of it.
bool turnsBack(const Line& line, double time, double ahead, double behind) {
    double way = 0.0;
    bool moved = false;
    auto b = std::ranges::lower_bound(line, time - behind, {}, &tool::TrackPoint::time);
    b += b == line.begin() ? 1 : 0;
    for (; b < line.end() && (b - 1)->time < time + ahead; ++b) {
        if (tool::metresBetween((b - 1)->position, b->position) < samePlaceM) {
            continue;
        }
        const double next = gf_bearing((b - 1)->position, b->position);
        if (moved && std::abs(std::remainder(next - way, 2.0 * pi)) * degPerRad > turnBackDeg) {
            return true;
        }
        way = next;
        moved = true;
    }
    return false;
}

std::string_view causeOfStep(const Sample& sample) {
    switch (sample.leg) {
    case LegKind::Cut:
        if (sample.respawned && sample.sinceSpawnS < respawnCountsS) {
            return "leg cut by the lag limit, late by an object made anew";
        }
        return sample.sinceCoastedS < silenceCountsS
                   ? "leg cut by the lag limit that shrinks after a silence"
                   : "leg cut by the lag limit, the track is slower told than moved";
    case LegKind::Resumed:
        return "data back: leg timed from the invented point";
    case LegKind::Curve:
        return "corner's curve, faster at one end";
    case LegKind::Usual:
        break;
    }
    return "other";
}

std::string_view causeOfTurn(const Sample& sample) {
    if (sample.stage == Stage::Flare) {
        return "touched down in a turn, which lasts until the leg ends";
    }
    return sample.turnDeg <= gentleTurnDeg ? "turn of 45 degrees at most, as fast as its short leg asks"
                                           : "other";
}

std::string_view causeOfBeyond(const Sample& sample, const Line& line, bool idealToo) {
    if (turnsBack(line, sample.at - tool::playDelaySeconds, turnBackWindowS, turnBackWindowS)) {
        return "the line turns back on itself";
    }
    if (sample.dueMoved) {
        return "due times in a track rise: moved behind that of a late leg";
    }
    if (sample.respawned && sample.sinceSpawnS < respawnCountsS) {
        return "late by an object made anew";
    }
    if (sample.sinceCoastedS < silenceCountsS) {
        return "limit that shrinks after a silence";
    }
    if (sample.leg == LegKind::Curve) {
        return "corner's curve";
    }
    return idealToo ? "other, the ideal aircraft as well" : "other";
}

/// The largest value within some seconds of one moment.
double largestRound(const PlayedAircraft& played, const std::vector<Sample>& samples, std::size_t i,
                    double (*valueOf)(const PlayedAircraft&, const Sample&, const Sample&)) {
    double worst = 0.0;
    const double at = samples[i].at;
    while (i > 1 && samples[i - 1].at > at - sameEventS) {
        --i;
    }
    for (; i < samples.size() && samples[i].at < at + sameEventS; ++i) {
        worst = std::max(worst, valueOf(played, samples[i - 1], samples[i]));
    }
    return worst;
}

std::string namesOf(const std::map<std::string, double>& flights) {
    std::vector<std::pair<double, std::string>> byWorst;
    for (const auto& [name, worst] : flights) {
        byWorst.emplace_back(worst, name);
    }
    std::ranges::sort(byWorst, std::greater());
    std::string out;
    for (std::size_t i = 0; i < std::min(byWorst.size(), mostNamed); ++i) {
        out += fmt::format("{}{} ({:.1f})", i == 0 ? "      " : ", ", byWorst[i].second, byWorst[i].first);
    }
    return out + (byWorst.size() > mostNamed ? ", ...\n" : "\n");
}

} // namespace

void Causes::add(const std::string& flight, const PlayedAircraft& played, const Figures& own) {
    addEvents(steps_, flight, played, longestStep, stepRatio, causeOfStep);
    addEvents(turns_, flight, played, longestTurnShare, groundTurnShare, causeOfTurn);
    addReversals(flight, played, own);
    addTimes(flight, played);
}

void Causes::addEvents(ByCause& causes, const std::string& flight, const PlayedAircraft& played, double limit,
                       Judge valueOf, std::string_view (*causeOf)(const Sample&)) {
    double last = -2.0 * sameEventS;
    Cause* cause = nullptr;
    for (std::size_t i = 1; i < played.flown.size(); ++i) {
        const Sample& now = played.flown[i];
        const double value = valueOf(played, played.flown[i - 1], now);
        if (value <= limit) {
            continue;
        }
        if (now.at - last > sameEventS) {
            cause = &causes[causeOf(now)];
            cause->amount += 1.0;
            cause->idealToo += largestRound(played, played.ideal, i, valueOf) > limit ? 1.0 : 0.0;
        }
        last = now.at;
        cause->note(flight, value);
    }
}

void Causes::addReversals(const std::string& flight, const PlayedAircraft& played, const Figures& own) {
    for (const std::size_t i : own.reversals) {
        const Sample& now = played.flown[i];
        const double lineTime = now.at - tool::playDelaySeconds;
        const bool lineToo =
            turnsBack(played.line, lineTime, now.leadLimitS + reversalSlackS, now.lagLimitS + reversalSlackS);
        std::string_view name = lineToo ? "the line turns back within the drift limits" : "other";
        if (!lineToo && now.sinceCoastedS < reversalSlackS) {
            name = "back to the line from an invented point";
        }
        Cause& cause = reversals_[name];
        cause.amount += 1.0;
        cause.flights[flight] += 1.0;
    }
}

void Causes::addTimes(const std::string& flight, const PlayedAircraft& played) {
    std::map<double, double> idealLag;
    for (const JudgedPlace& judged : judgedPlaces(played, played.ideal)) {
        if (judged.timed()) {
            idealLag[judged.sample->at] = judged.place.lagS;
        }
    }
    for (const JudgedPlace& judged : judgedPlaces(played, played.flown)) {
        if (!judged.timed()) {
            continue;
        }
        const Sample& sample = *judged.sample;
        const double lagS = judged.place.lagS;
        const auto timed = idealLag.find(sample.at);
        const double idealToo =
            timed != idealLag.end() && std::abs(timed->second - lagS) < sameOffS ? judgedS : 0.0;
        Off& off = off_[static_cast<std::size_t>(sample.stage)];
        off.judged += judgedS;
        if (std::abs(lagS) > askedOffS) {
            off.off += judgedS;
            off.idealToo += idealToo;
        }
        const double over = beyondDriftLimit(judged);
        if (over > beyondSlackS && judged.onLine()) {
            Cause& cause = beyond_[causeOfBeyond(sample, played.line, idealToo > 0.0)];
            cause.amount += judgedS;
            cause.idealToo += idealToo;
            cause.note(flight, over);
        }
    }
}

void Causes::Cause::note(const std::string& flight, double value) {
    double& own = flights[flight];
    own = std::max(own, value);
}

std::string Causes::text() const {
    std::string out = "causes; in brackets how much of it the ideal aircraft has as well\n"
                      "off the 30 s by more than 3 s\n";
    for (std::size_t i = 0; i < stageCount; ++i) {
        if (const Off& off = off_[i]; off.judged > 0.0) {
            out += fmt::format("  {:9} {:7.0f} s of {:7.0f} s ({:.0f} %)\n", stageNames[i], off.off,
                               off.judged, off.off > 0.0 ? 100.0 * off.idealToo / off.off : 0.0);
        }
    }
    const std::pair<std::string, const ByCause*> all[] = {
        {fmt::format("steps beyond {} times the speed, with the worst of each flight", longestStep), &steps_},
        {fmt::format("seconds more than {:.0f} s beyond the drift limit, with the worst of each flight",
                     beyondSlackS),
         &beyond_},
        {"turns on the ground faster than three base rates, with the largest share of each flight", &turns_},
        {"turning back, with the number of each flight", &reversals_}};
    for (const auto& [title, causes] : all) {
        double amount = 0.0;
        std::set<std::string> flights;
        for (const auto& [name, cause] : *causes) {
            amount += cause.amount;
            std::ranges::transform(cause.flights, std::inserter(flights, flights.end()),
                                   [](const auto& flight) { return flight.first; });
        }
        out += fmt::format("{}: {:.0f} in {} flights\n", title, amount, flights.size());
        for (const auto& [name, cause] : *causes) {
            const bool timed = causes == &steps_ || causes == &beyond_;
            out += fmt::format("  {:65} {:6.0f}{} in {} flights\n", name, cause.amount,
                               timed ? fmt::format(" ({:.0f})", cause.idealToo) : "", cause.flights.size());
            out += namesOf(cause.flights);
        }
    }
    return out;
}

} // namespace kst::bench
