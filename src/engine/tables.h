#pragma once

// The tables of all traffic. Worker only, but for the exit thread once the worker has stopped.

#include "core/describe.h"
#include "model/aircraft.h"

#include <cstdint>
#include <list>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace kst {

/// Every target from its first message to its end, in order of arrival. Records may move when one leaves:
/// keep ids.
extern std::vector<LiveAc> liveAcs;
/// Static parked aircraft.
extern std::vector<StaticAc> staticAcs;
/// Targets cleared for creation; served from the back.
extern std::vector<std::uint32_t> spawnList;
/// Targets that wait for the coupled check of the once-a-second work.
extern std::list<std::uint32_t> spawnedIds;
/// Callsigns of ghosts that were removed because the real target came.
extern std::vector<std::string> ghostCallsigns;
/// Keys of targets for which no livery exists. Lives over restarts.
extern std::set<std::string> unmatchedTargets;
/// The title given to each target, so that a respawn finds it again.
extern std::unordered_map<std::uint32_t, std::string_view> liveryCache;

/// Reserves the tables, at the first start.
void reserveTables();
LiveAc* liveByHexid(std::uint32_t hexid);
LiveAc* liveByObjectId(std::uint32_t objectId);
StaticAc* staticByHexid(std::uint32_t hexid);

/// Deletes a record, moving the table's last record into its place.
void deleteRecord(LiveAc& ac);
void deleteRecord(StaticAc& ac);

/// Empties every table and queue of the engine, for the next run. `unmatchedTargets` and `ghostCallsigns` go
/// only when no restart follows.
void resetEngine(bool restartFollows);

} // namespace kst
