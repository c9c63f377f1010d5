#include "parking/stands.h"

#include "core/geodesy.h"

#include <algorithm>
#include <atomic>

namespace kst {

namespace {

std::atomic<bool> loaded{false};

/// Two stands overlap when their radii together exceed their distance by this factor.
constexpr double overlapFactor = 1.1;
/// The meridian's length for one degree of latitude, nautical miles, a little short so that rounding leaves
/// no pair out.
constexpr double leastNmPerDegree = 60.0;

bool overlap(const ParkPos& a, const ParkPos& b) {
    return a.radius + b.radius > overlapFactor * gf_distanceNm(a.position(), b.position());
}

} // namespace

AirportFile& loadedAirport() {
    static AirportFile airport;
    return airport;
}

void clearLoadedAirport() {
    loaded = false;
    loadedAirport() = {};
}

bool airportLoaded() {
    return loaded;
}

void setAirportLoaded() {
    loaded = true;
}

std::vector<ParkPos>& parkPositions() {
    return loadedAirport().stands;
}

ParkPos* standBySid(std::uint32_t sid) {
    auto& positions = parkPositions();
    // A stand's number is its place in the table, counted from 1.
    return sid >= 1 && sid <= positions.size() ? &positions[sid - 1] : nullptr;
}

std::string standName(std::uint32_t sid) {
    if (sid == 0) {
        return "sid==0?";
    }
    const ParkPos* stand = standBySid(sid);
    return stand != nullptr ? stand->id : "unknown";
}

void numberStands(std::vector<ParkPos>& stands) {
    std::uint32_t sid = 0;
    double largestRadius = 0.0;
    std::vector<ParkPos*> southFirst;
    southFirst.reserve(stands.size());
    for (ParkPos& stand : stands) {
        stand.sid = ++sid;
        stand.neighbours.clear();
        largestRadius = std::max(largestRadius, stand.radius);
        southFirst.push_back(&stand);
    }
    std::sort(southFirst.begin(), southFirst.end(),
              [](const ParkPos* a, const ParkPos* b) { return a->latitude < b->latitude; });
    // Stands farther apart in latitude alone than two radii reach need no distance: the work grows with the
    // overlaps, not with the square of the stands.
    for (std::size_t i = 0; i < southFirst.size(); ++i) {
        ParkPos& a = *southFirst[i];
        const double reachDeg = (a.radius + largestRadius) / (overlapFactor * leastNmPerDegree);
        for (std::size_t j = i + 1; j < southFirst.size(); ++j) {
            ParkPos& b = *southFirst[j];
            if (b.latitude - a.latitude > reachDeg) {
                break;
            }
            if (overlap(a, b)) {
                a.neighbours.push_back(b.sid);
                b.neighbours.push_back(a.sid);
            }
        }
    }
    for (ParkPos& stand : stands) {
        std::sort(stand.neighbours.begin(), stand.neighbours.end());
        stand.neighbours.shrink_to_fit();
    }
}

} // namespace kst
