#pragma once

// Which stand an aircraft takes, and what is recorded on a stand. Works on the table of stands of the loaded
// airport; nothing happens while that is empty. Worker only.

#include "model/aircraft.h"
#include "model/parkpos.h"
#include "model/units.h"

#include <cstdint>
#include <string>

namespace kst {

/// The stand that the aircraft at `position` has reached or is about to reach, nullptr for none. A stand on
/// which a live aircraft is parked is passed over. `maxDistanceNm` is the radius of the search; with
/// `useOptions` a stand up to 85 m away where this flight, or its operator with its type, was seen counts if
/// there is none within that radius. A stand that proves too small for the aircraft on it grows.
ParkPos* lf_searchStandNearby(LatLon position, const LiveAc& ac, double maxDistanceNm, bool useOptions);
/// The id of the stand nearest to this position of the user, within 55 m; empty for none. Valid until the
/// next call.
const std::string& lf_userStand(LatLon position);
/// The stand on which an aircraft that vanished near the airport most likely stood, nullptr for none. With
/// `mayLookAhead` a small airport that is full now is searched for the next half hour.
ParkPos* lf_searchSoftStand(DayHH dayhh, const LiveAc& ac, bool mayLookAhead);

/// An aircraft leaves the world near the airport: records it on a likely stand, if `LEARN_SOFT` is on and it
/// was not seen on one. `force` skips the height test.
void lf_learnSoft(LiveAc& ac, bool force);
/// Records an aircraft seen on a stand. `extend` fills the half hours since it was last seen there, if those
/// are few; `leaving` ends its visit. Nothing without registration or callsign. True if the stand's record
/// changed.
bool lf_addRealParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh, bool leaving);
/// The same for an aircraft that is guessed to have been there; it needs no registration.
bool lf_addSoftParkPosOption(std::uint32_t sid, const LiveAc& ac, bool extend, DayHH dayhh);
/// Whether the aircraft may be learned from again: not within three half hours, unless forced. Notes it if
/// so.
bool lf_mayLearn(DayHH dayhh, std::uint32_t hexid, bool force);
/// Notes that the aircraft was learned from in this half hour.
void lf_noteLearner(std::uint32_t hexid, DayHH dayhh);
/// A cargo aircraft parks on an ordinary stand: both become a cargo stand's.
void lf_markCargoStand(LiveAc& ac);
/// Fills `primaryCallsign` and `coupledCallsign` from what was seen on the stands about this time.
void lf_searchForCoupledCsAroundThisTime(DayHH dayhh, LiveAc& ac);

/// Forgets the user's stand and who was learned from: another airport is loaded, or none.
void resetStandSelection();

} // namespace kst
