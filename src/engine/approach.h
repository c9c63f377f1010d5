#pragma once

// What an aircraft sets up by its height and vertical speed: clean in the climb, the first flaps on the way
// down, the approach, the go-around. Once a leg. Worker only.

#include "model/aircraft.h"

namespace kst {

/// Lights and configuration of this leg, by the altitude of the front point.
void configureByAltitude(LiveAc& ac);
/// Above the approach height.
void lf_highConfig(LiveAc& ac);
/// At or below it: an approach begins, or is broken off.
void lf_lowConfig(LiveAc& ac);

} // namespace kst
