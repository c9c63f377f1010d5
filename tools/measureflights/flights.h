#pragma once

// What was sent (the record of the RealTraffic stand-in) and what was shown (the history of the simulator
// stand-in).

#include "model/units.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <string>
#include <vector>

namespace kst::tool {

/// One moment of a target or an object. Times are seconds since 1970 of the machine's clock.
struct TrackPoint {
    double time = 0.0;
    LatLon position;
    double altFt = 0.0;
    double gsKt = 0.0; ///< of targets only
    bool onGround = false;
};

/// A target of the feed: where it was, when its line was sent.
struct Target {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string registration;
    std::string type;
    std::vector<TrackPoint> points; ///< in order of time
};

/// An object in the simulator.
struct ShownObject {
    std::uint32_t id = 0;
    std::string tailNumber;
    std::string title;
    std::vector<TrackPoint> points; ///< in order of time
};

struct Flights {
    std::vector<Target> targets;
    std::vector<ShownObject> objects;
    std::size_t unreadableRows = 0;
};

/// Reads the record of sent traffic into `flights`. Throws std::runtime_error when a column is missing.
void readSent(std::istream& in, Flights& flights);
/// Reads the history of the simulator's objects into `flights`. Throws std::runtime_error when a column is
/// missing.
void readHistory(std::istream& in, Flights& flights);

} // namespace kst::tool
