#pragma once

// Watches the legs of one aircraft, pass by pass: how each was timed, what its time beyond the limits may
// come from, and where the ideal aircraft is meanwhile.

#include "bench/realism/idealreplay.h"
#include "bench/realism/play.h"

#include <limits>
#include <set>
#include <utility>

namespace kst::bench {

class LegWatch {
public:
    /// After each pass; no aircraft where there is none.
    void pass(const LiveAc* ac, double seconds);
    /// What is known of the present leg.
    void describe(Sample& sample) const;
    /// The ideal aircraft at the moment of that sample.
    Sample ideal(const Sample& flown) const;

private:
    using Place = std::pair<double, double>;

    /// A leg is timed by the limit that holds before it begins, and it begins where the one before, timed by
    /// its own, left the aircraft.
    struct DriftLimit {
        std::int32_t present = 0;
        std::int32_t ofLeg = 0;
        std::int32_t ofLegBefore = 0;

        void pass(std::int32_t now, bool newLeg);
        float seconds() const;
    };

    static Place placeOf(const TrackPoint& point) { return {point.lat, point.lon}; }
    void beginObject(const LiveAc& ac);
    void takePoints(const LiveAc& ac);
    void noteLeg(const LiveAc& ac);
    LegKind kindOfLeg(const LiveAc& ac) const;

    IdealReplay ideal_;
    TrackPoint taken_;      ///< the last point that entered the track
    TrackPoint target_;     ///< of the present leg
    std::set<Place> fed_;   ///< where the points lie that entered the track
    std::set<Place> moved_; ///< of those whose due time intake has moved
    DriftLimit lead_;
    DriftLimit lag_;
    LegKind leg_ = LegKind::Usual;
    std::uint32_t objectId_ = 0;
    double now_ = 0.0;
    double spawnedAt_ = 0.0;
    double coastedAt_ = -std::numeric_limits<double>::infinity();
    float legLeftS_ = 0.0F;
    float turnDeg_ = 0.0F;
    bool invented_ = false; ///< the present leg leads to an invented point
    bool respawning_ = false;
    bool respawned_ = false;
};

} // namespace kst::bench
