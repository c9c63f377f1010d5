#include "tools/measureflights/linematch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kst::tool {

namespace {

/// Farther than the drift limits ever reach.
constexpr double windowS = 90.0;
/// Places this much farther off than the nearest are not considered.
constexpr double worthConsideringM = 100.0;

// What a place costs: a unit for so many metres off the line, for so many seconds that time on the line
// jumps, more where it runs backwards, and next to nothing for being late or early.
constexpr double metresPerUnit = 30.0;
constexpr double jumpSecondsPerUnit = 1.0;
constexpr double backwardsFactor = 10.0;
constexpr double offSecondsPerUnit = 100.0;

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

struct Candidate {
    OnLine place;
    double cost = 0.0;       ///< of the best way here
    std::size_t from = none; ///< candidate of the moment before
};

struct Moment {
    std::size_t shown = 0;
    std::vector<Candidate> candidates;
};

std::vector<Candidate> candidatesFor(const std::vector<TrackPoint>& line, const ShownPlace& shown) {
    std::vector<Candidate> found;
    double nearest = std::numeric_limits<double>::infinity();
    for (const OnLine& place : placesNear(line, shown.at, shown.position, windowS)) {
        const double cost = place.distanceM / metresPerUnit + std::abs(place.lagS) / offSecondsPerUnit;
        found.push_back({place, cost});
        nearest = std::min(nearest, place.distanceM);
    }
    std::erase_if(found, [&](const Candidate& candidate) {
        return candidate.place.distanceM > nearest + worthConsideringM;
    });
    return found;
}

double costOfWay(const OnLine& from, const OnLine& to, double seconds) {
    const double onLine = to.time - from.time;
    const double jump = std::abs(onLine - seconds) / jumpSecondsPerUnit;
    return onLine < 0.0 ? jump - onLine * backwardsFactor : jump;
}

void link(const Moment& before, Moment& now, double seconds) {
    for (Candidate& candidate : now.candidates) {
        double best = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < before.candidates.size(); ++i) {
            const double cost =
                before.candidates[i].cost + costOfWay(before.candidates[i].place, candidate.place, seconds);
            if (cost < best) {
                best = cost;
                candidate.from = i;
            }
        }
        candidate.cost += best;
    }
}

} // namespace

std::vector<std::optional<OnLine>> placesOnLine(const std::vector<TrackPoint>& line,
                                                const std::vector<ShownPlace>& shown) {
    std::vector<std::optional<OnLine>> places(shown.size());
    std::vector<Moment> moments;
    const auto finish = [&] {
        std::size_t which = none;
        for (auto moment = moments.rbegin(); moment != moments.rend(); ++moment) {
            if (which == none) {
                which = static_cast<std::size_t>(
                    std::ranges::min_element(moment->candidates, {}, &Candidate::cost) -
                    moment->candidates.begin());
            }
            places[moment->shown] = moment->candidates[which].place;
            which = moment->candidates[which].from;
        }
        moments.clear();
    };
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (shown[i].anew) {
            finish();
        }
        Moment now{i, candidatesFor(line, shown[i])};
        if (now.candidates.empty()) {
            continue;
        }
        if (!moments.empty()) {
            link(moments.back(), now, shown[i].at - shown[moments.back().shown].at);
        }
        moments.push_back(std::move(now));
    }
    finish();
    return places;
}

} // namespace kst::tool
