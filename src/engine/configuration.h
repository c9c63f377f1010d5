#pragma once

// Throttle, flaps, gear, spoilers, engines and lights of an object in the simulator. Nothing is sent for a
// record without an object. Worker only.

#include "model/aircraft.h"
#include "simlink/objectcommands.h"

namespace kst {

namespace light_sets {
inline constexpr Lights low{true, true, true, true, true, true, true};
inline constexpr Lights high{true, true, false, false, false, false, true};
inline constexpr Lights departure{true, true, true, true, true, true, false};
inline constexpr Lights afterRollout{true, true, false, true, false, true, true};
inline constexpr Lights leavingStand{true, true, false, true, false, true, false};
} // namespace light_sets

/// Positions of the spoilers handle.
inline constexpr std::uint32_t spoilersRetracted = 0;
inline constexpr std::uint32_t spoilersExtended = 16383;

/// Throttle level 0 to 4 for every category; nothing if it is set already.
void lf_setThrottle(AcBase& ac, int level);
/// The same, but a rotorcraft always takes full power.
void setThrottleByCategory(AcBase& ac, int level);
/// Flaps level 0 to 3; nothing if it is set already, and never for a rotorcraft.
void lf_setFlaps(AcBase& ac, int level);
/// Sends the gear each time; never for a rotorcraft.
void lf_setGear(const AcBase& ac, bool down);
/// Never for a rotorcraft.
void setSpoilers(const AcBase& ac, std::uint32_t handle);
void startEngines(const AcBase& ac);
void stopEngines(const AcBase& ac);
void sendLights(const AcBase& ac, const Lights& lights);
void sendCabinLights(const AcBase& ac, bool on);
/// Spoilers handle and reverse thrust of the landing roll, percent at once; not for light aircraft.
void brakeWithReverse(const AcBase& ac);
void releaseBrakes(const AcBase& ac);

} // namespace kst
