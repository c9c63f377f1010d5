#pragma once

// Aircraft flown tick by tick through the engine's own pass: what the test plays is the feed and the
// simulator's reports of height; what it watches is every tick of what the simulator would be sent.

#include "support/engineworld.h"

#include <functional>
#include <vector>

namespace kst::test {

/// The largest change from one tick to the next that was seen. Angles in degrees.
struct Motion {
    double metres = 0.0;
    double feet = 0.0;
    double pitchDeg = 0.0;
    double bankDeg = 0.0;
    double headingDeg = 0.0;
};

/// One aircraft over flat ground.
class Flown {
public:
    /// The aircraft must stay in the table; its record may move.
    Flown(EngineWorld& world, const LiveAc& ac, double groundFt = airportElevationFt);

    /// The feed delivers this position at this tick; its due time is set to 30 seconds later.
    void hear(std::int32_t tick, TrackPoint point);
    /// Runs the engine's pass up to this tick, or to the end of the aircraft. `watch` is called after each
    /// tick.
    void flyTo(std::int32_t tick, const std::function<void(const LiveAc&)>& watch = {});

    bool gone() const;
    LiveAc& ac();
    const Motion& motion() const { return motion_; }
    void forgetMotion() { motion_ = {}; }
    /// Stops the reports of height, as for an object that the simulator's scan does not reach.
    void reportHeights(bool on) { reports_ = on; }

private:
    struct Heard {
        std::int32_t tick;
        TrackPoint point;
    };
    void reportHeight();
    void measure(const SimState& before, const SimState& after);

    EngineWorld& world_;
    std::uint32_t hexid_;
    double groundFt_;
    bool reports_ = true;
    std::vector<Heard> feed_;
    std::size_t nextHeard_ = 0;
    Motion motion_;
};

/// Values of one client event queued for the object since the last `forgetSent`, in order.
std::vector<std::uint32_t> sent(const LiveAc& ac, std::uint32_t event);
/// The last seven lights queued for the object as digits: nav, beacon, landing, taxi, strobes, logo, cabin;
/// empty when none were.
std::string lightsSent(const LiveAc& ac);
/// How many events of any kind are queued for the object.
std::size_t eventsSent(const LiveAc& ac);
void forgetSent();

} // namespace kst::test
