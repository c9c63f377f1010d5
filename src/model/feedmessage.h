#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kst {

/// One accepted line of the traffic feed. Built on the Traffic Reader thread, consumed on the worker.
struct FeedMessage {
    std::string type;              ///< ICAO aircraft type, empty if the feed has none
    std::string origin;            ///< departure code, may be empty
    std::string destination;       ///< destination code, may be empty
    std::string callsign;          ///< may be empty
    std::string registration;      ///< at most 12 characters, may be empty
    double latitude = 0.0;         ///< degrees
    double longitude = 0.0;        ///< degrees
    std::optional<double> bank;    ///< radians, right wing down negative
    std::optional<double> heading; ///< true heading, radians, above 0 to 2 pi
    double altitude = 0.0;         ///< feet, barometric; 0 for a target on the ground
    double groundSpeed = 0.0;      ///< knots
    double track = 0.0;            ///< track over ground, degrees
    double verticalSpeed = 0.0;    ///< feet per minute
    double trueAirspeed = 0.0;     ///< knots
    std::int32_t expiry = 0;       ///< engine tick at which the aircraft is to be at this point
    bool airborne = false;
    bool headingGiven = false; ///< the heading came from the feed
    double timestamp = 0.0;    ///< seconds since 1970
    std::uint32_t hexid = 0;   ///< the target's identity, above 10000
};

} // namespace kst
