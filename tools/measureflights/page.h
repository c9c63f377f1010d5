#pragma once

#include "tools/measureflights/measure.h"

#include <string>
#include <vector>

namespace kst::tool {

/// A stand as the page draws it: its circle, and a stroke to where the nose points.
struct DrawnStand {
    std::string id;
    LatLon position;
    double radiusM = 0.0;
    double headingRad = 0.0;
};

/// One HTML page that needs nothing else: a map of what was told (grey) and what was flown (coloured) and of
/// the stands, the figures as text, and a line for each object. A single flight among no stands gets its
/// altitude along the time instead of that line.
std::string pageOf(const Measured& measured, const std::string& title, const std::string& figures,
                   const std::vector<DrawnStand>& stands = {});

} // namespace kst::tool
