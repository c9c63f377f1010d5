#pragma once

// The tables from which the static population of the loaded airport is made and adjusted. Worker only.

#include "model/dayhh.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace kst {

/// An aircraft to create on a stand.
struct ParkRequest {
    std::uint32_t sid = 0;
    std::uint32_t offset = 0; ///< how many half hours ago the observation lies
    std::string airl;         ///< from the observation
    std::string type;
    std::string cs;
    std::string cs2;
    std::string reg;
    bool inbound = false; ///< still on its inbound flight at the next half hour
};

/// A live aircraft that stands parked.
struct LiveStayer {
    std::string callsign;
    std::uint32_t sid = 0;
    int minutes = 0; ///< on the stand; 0 while the feed still tells of it
};

/// A static aircraft that stays.
struct StaticStayer {
    std::string callsign;
    std::string primaryCallsign;
    std::string coupledCallsign;
    std::string regcode;
    std::string airline;
    std::string acType;
    DayHH parkStamp;
    std::uint32_t sid = 0;
    bool leaving = false; ///< it changes to its outbound flight now
};

/// A static aircraft to remove at this renewal.
struct StaticRemoval {
    std::string callsign;
    std::uint32_t sid = 0;
};

extern std::vector<ParkRequest> parkQueue;  ///< created from the end
extern std::set<std::string> liveCallsigns; ///< in the feed during the 15 seconds before a population
extern std::vector<LiveStayer> liveStayers;
extern std::vector<StaticStayer> staticStayers;
extern std::vector<StaticRemoval> staticRemovals;
extern int realFit; ///< half hours that the search of real observations went back
extern int softFit; ///< the same for soft ones, -1 if there was no such search

/// Empties the tables for a new population. `liveCallsigns` stays.
void clearPopulation();
/// Numbers the options of every stand from 1 in list order: those that had to stand back count again.
void reviveOptions();
/// Takes over the callsigns that the feed showed, and ends their collection.
void takeLiveCallsigns();
/// The time line of a population in the log.
void logPopulationTime(DayHH now);
/// Shows the mean ages of the live and the static parked aircraft.
void showMeanAges();

} // namespace kst
