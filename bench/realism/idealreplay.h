#pragma once

// What the timing of legs alone makes of a flight: an ideal aircraft, always on the line and at a steady
// speed on each leg, that arrives at each point when the rule lets it. Held beside what was flown it tells
// which lead, lag and steps no aircraft under that rule can avoid.

#include "model/aircraft.h"

#include <deque>
#include <vector>

namespace kst::bench {

class IdealReplay {
public:
    /// Starts anew: at this place now, and at the track's first point when that is due.
    void start(LatLon here, const std::vector<TrackPoint>& track, std::int32_t now);
    /// A point that the program has let into its track.
    void take(const TrackPoint& point) { coming_.push_back(point); }
    /// One pass of 10 ms; the drift limits of the moment as the program has them.
    void pass(std::int32_t now, std::int32_t maxLeadTicks, std::int32_t maxLagTicks);

    bool started() const { return started_; }
    LatLon position() const { return here_; }
    double speedKt() const { return from_.gsKt; }
    /// Nothing is known of what comes next: it goes on as it did.
    bool waiting() const { return waiting_; }

private:
    void beginLeg(std::int32_t now, std::int32_t maxLeadTicks, std::int32_t maxLagTicks);
    void aim(const TrackPoint& to, std::int32_t now);

    std::deque<TrackPoint> coming_;
    TrackPoint from_; ///< the point that it leaves; while it is on a leg, the one that it flies to
    LatLon here_;
    double dLat_ = 0.0;
    double dLon_ = 0.0;
    std::int32_t due_ = 0;
    bool started_ = false;
    bool waiting_ = false;
};

} // namespace kst::bench
