#pragma once

// How well the objects in the simulator fly what the feed told.
//
// Traffic plays 30 seconds late. So at time t an object should be where its target was at t - 30 s. Its
// position is held against the line through the target's positions: how far it is from the line, and how much
// earlier or later than 30 seconds it passes the nearest point of the line.

#include "tools/measureflights/flights.h"
#include "tools/measureflights/line.h"

#include <string>
#include <vector>

namespace kst::tool {

/// The step between two frames that the target's speed explains least.
struct Step {
    double stepM = 0.0;
    double explainedM = 0.0;
    double overM = 0.0;   ///< the difference; 0 when no step was longer than explained
    double seconds = 0.0; ///< between the two frames
    std::string tailNumber;
    double time = 0.0;
};

/// The samples of all objects in the air, of all on the ground, or of one object.
struct PathFigures {
    std::size_t objects = 0;
    std::vector<double> fromLineM;
    std::vector<double> lagS;          ///< against 30 seconds, positive is late; of those that move
    std::vector<double> timeOffS;      ///< the same without its sign
    std::vector<double> altitudeOffFt; ///< in the air, against the altitude told
    Step worstStep;
};

/// One object with the target that it shows.
struct ObjectFigures {
    const ShownObject* object = nullptr;
    const Target* target = nullptr;
    PathFigures path;
};

struct Measured {
    std::size_t targets = 0;
    std::size_t objects = 0;
    std::size_t parked = 0;       ///< static aircraft, told by their tail number
    std::size_t unmatched = 0;    ///< objects whose tail number no target has
    std::size_t withoutTrack = 0; ///< samples behind their target's last point, or before its first
    PathFigures air;
    PathFigures ground;
    /// Worst step of the first seconds of an object's life, in which the simulator itself still moves it; not
    /// in the steps of the phases.
    Step appearing;
    std::vector<ObjectFigures> byObject; ///< those with a target
};

/// The flights must outlive the result.
Measured measure(const Flights& flights);

/// The figures as a table for a person.
std::string tableOf(const Measured& measured);

} // namespace kst::tool
