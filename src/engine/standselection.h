#pragma once

// Which stand an aircraft takes, and what is recorded on a stand. Works on the table of stands of the loaded
// airport; nothing happens while that is empty. Worker only.

#include "model/aircraft.h"
#include "model/parkpos.h"
#include "model/units.h"

#include <cstdint>
#include <string>

namespace kst {

/// The stand that the aircraft at `position` has reached or is about to reach, nullptr for none.
/// `maxDistanceNm` is the radius of the search; with `useOptions` a stand farther off where this flight, or
/// its operator with its type, was seen counts too. A stand found too small for the aircraft on it grows.
ParkPos* lf_searchStandNearby(LatLon position, const LiveAc& ac, double maxDistanceNm, bool useOptions);
/// The id of the stand within 55 m of this position of the user, empty for none.
const std::string& lf_userStand(LatLon position);
/// The stand on which an aircraft that vanished near the airport most likely stood, nullptr for none.
ParkPos* lf_searchSoftStand(DayHH dayhh, const LiveAc& ac, bool mayLookAhead);

/// An aircraft leaves the world near the airport: records it on a likely stand. `force` skips the height
/// test.
void lf_learnSoft(LiveAc& ac, bool force);
/// Record an aircraft seen on, or guessed to be on, a stand. True if the stand's record changed.
bool lf_addRealParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh, bool leaving);
bool lf_addSoftParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh);
/// Whether the aircraft may be learned from again; notes it if so.
bool lf_mayLearn(DayHH dayhh, std::uint32_t hexid, bool force);
/// Notes that the aircraft was learned from in this half hour.
void lf_noteLearner(std::uint32_t hexid, DayHH dayhh);
/// A cargo aircraft on an ordinary stand makes it a cargo stand.
void lf_markCargoStand(const LiveAc& ac);
/// Fills `primaryCallsign` and `coupledCallsign` from what was seen on the stands about this time.
void lf_searchForCoupledCsAroundThisTime(DayHH dayhh, LiveAc& ac);

/// Forgets the user's stand and who was learned from: the airport is closed, or the run ends.
void resetStandSelection();

} // namespace kst
