#pragma once

// How the user's aircraft moves: it stands, flies straight on, or follows given points.

#include "standins/simulator/aircraft.h"

#include <vector>

namespace kst::standin {

/// A point that the user's aircraft passes.
struct UserPoint {
    double atSeconds = 0.0; ///< after the script began
    double lat = 0.0;
    double lon = 0.0;
    double altFt = 0.0;    ///< of no account on the ground
    bool onGround = false; ///< stands or rolls from this point on
};

class UserMotion {
public:
    void hold();
    /// Straight on along the present heading, climbing or sinking. On the ground it rolls.
    void straight(double speedKt, double vsFpm);
    /// From point to point in straight lines, heading along the way; holds at the last one.
    void follow(std::vector<UserPoint> points);
    void setOnGround(bool onGround) { onGround_ = onGround; }
    bool onGround() const { return onGround_; }

    /// Moves the aircraft on. On the ground it keeps its wheels on it.
    void advance(Aircraft& user, const Terrain& terrain, double seconds);

private:
    void advanceScript(Aircraft& user);

    bool onGround_ = true;
    double speedKt_ = 0.0;
    double vsFpm_ = 0.0;
    std::vector<UserPoint> points_;
    double scriptSeconds_ = 0.0;
};

} // namespace kst::standin
