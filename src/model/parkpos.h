#pragma once

// One airport's stands and what was observed on them, in memory. Belongs to the worker thread.

#include "model/dayhh.h"
#include "model/units.h"

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kst {

/// One observation on a stand: an aircraft that stood here in these half hours of this day of the week.
struct ParkOption {
    std::string airl; ///< ICAO operator code
    std::string type; ///< ICAO type designator
    std::string reg;  ///< registration
    std::string cs;   ///< first callsign
    std::string cs2;  ///< second callsign of the same visit, empty if none
    std::bitset<48> hours;
    std::uint32_t seq = 0; ///< number on its stand from 1; 0 marks a dead option
    int day = 0;           ///< 1 to 7; 0 means not tied to a day
    bool fromArchive = false;
    bool real = true; ///< seen to arrive here; otherwise soft
};

/// The last half hour in which a tracked aircraft was seen on a stand.
struct StandVisit {
    DayHH stamp;
    std::uint32_t seq = 0; ///< the option being extended
};

/// One parking stand.
struct ParkPos {
    std::vector<ParkOption> options;
    std::map<std::uint32_t, StandVisit> realVisits; ///< by live aircraft id
    std::map<std::uint32_t, StandVisit> softVisits;
    std::string id;
    std::vector<std::uint32_t> neighbours; ///< sid of every stand that overlaps this one
    double latitude = 0.0;                 ///< degrees
    double longitude = 0.0;
    double heading = 0.0;  ///< radians, direction in which an aircraft stands
    double radius = 0.0;   ///< nautical miles, half the largest wing span the stand takes
    std::uint32_t sid = 0; ///< 1 to n in table order, valid for one load; 0 never names a stand
    bool manual = false;
    bool radius_change = false;
    bool cargo_change = false;
    bool suffixed = false;
    bool allocated = false;
    bool liveParked = false;
    bool reserved = false;
    bool blocked = false;
    bool cargo = false;
    bool ramp = false;
    bool heli = false;

    LatLon position() const { return {latitude, longitude}; }
};

} // namespace kst
