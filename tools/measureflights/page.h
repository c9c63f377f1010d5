#pragma once

#include "tools/measureflights/measure.h"

#include <string>
#include <vector>

namespace kst::tool {

/// One HTML page that needs nothing else: a map of what was told (grey) and what was flown (coloured), the
/// figures, and a line for each object.
std::string pageOf(const Measured& measured);

/// The same for one flight: its map and its altitude along the time, what was told (grey, 30 seconds later)
/// and what was flown. Objects and target as `Flights` holds them.
std::string flightPageOf(const Measured& measured, const std::string& title, const std::string& figures);

/// A stand as the page draws it: its circle, and a stroke to where the nose points.
struct DrawnStand {
    std::string id;
    LatLon position;
    double radiusM = 0.0;
    double headingRad = 0.0;
};

/// The same for an airport's ground: its stands, what was told and what was flown.
std::string apronPageOf(const Measured& measured, const std::vector<DrawnStand>& stands,
                        const std::string& title, const std::string& figures);

} // namespace kst::tool
