#pragma once

// Who gives way: live beats static, a real target beats its ghost, the user beats everyone. Giving way always
// means removal; nothing here moves an aircraft. The rules about stands are in standconflicts.h. Worker only.

#include "model/aircraft.h"

#include <string>
#include <string_view>

namespace kst {

// ---- the user ----

/// User in the air: removes the aircraft if it is on the user's runway or meets the user head-on. True if it
/// did.
bool lf_checkAirCollision(LiveAc& ac);
/// User on the ground: removes the first live aircraft on the ground that touches the user; with none, and
/// the user having moved, the first static aircraft.
void lf_checkGroundCollision();
/// Whether a target yet to enter would appear in the user's approach path: front within 6 nm and 3000 ft, the
/// user within 4000 ft of the line of its target heading.
bool lf_inUserApproachPath(const LiveAc& ac);

/// How far, in feet, a place lies beside the line of a heading: it is `distanceNm` away on `bearing`,
/// radians.
double distanceFromLineFt(double distanceNm, double bearing, double heading);

// ---- the live limit ----

/// Removes the live aircraft farthest from the user if it is more than 0.1 nm beyond `distanceNm`. True if
/// there is none: whoever stands at that distance is the farthest.
bool lf_removeFarthest(double distanceNm);

// ---- static aircraft ----

/// What `lf_checkSameFlight` compares with: one live aircraft, prepared once per walk.
struct SameFlight {
    explicit SameFlight(const LiveAc& live);
    const LiveAc& ac;
    std::string_view callsignStem; ///< the callsign less its last character
};
/// Whether the static aircraft shows the flight or the airframe of this live one; logged when it does.
bool lf_checkSameFlight(const SameFlight& flight, const StaticAc& staticAc);
/// Removes the first static aircraft that bears the live callsign with a star, or its registration.
void lf_removeStaticTwin(const LiveAc& ac);
/// Removes the first static aircraft whose stand is within the clearance of this live one.
void lf_checkStaticCollision(const LiveAc& ac);
/// Takes a static aircraft back that still waits for its creation. True if it was found: its record is gone.
bool lf_cancelStaticCreation(const std::string& callsign);

/// Forgets where the user was at the last check.
void resetConflicts();

} // namespace kst
