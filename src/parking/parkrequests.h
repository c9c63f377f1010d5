#pragma once

// The search for what is to stand parked: the observations of this half hour of the week, then of ever
// earlier ones, until as many aircraft are found as are wanted. Worker only.

#include "model/dayhh.h"
#include "model/parkpos.h"

#include <string>

namespace kst {

/// Fills `parkQueue` until it holds, with `existing` aircraft that stand already, `wanted` aircraft: from
/// real observations, then from soft ones where the parameters allow them. Stands that are `allocated`,
/// `blocked` or `reserved` are left out, those that are taken get marked. Sets `realFit` and `softFit`.
void lf_fillPositions(DayHH now, int wanted, int existing);

/// Whether the visit of this observation goes on in the half hour after `now`: by its own hours or, over
/// midnight, by an observation of the next day of the same operator and type on the same stand.
bool hasNextHalfHour(const ParkPos& stand, const ParkOption& option, DayHH now);

/// Whether the observation counts on this day of the week.
bool isOfDay(const ParkOption& option, int day);

/// A number of half hours as it is shown in hours: 0 is "0.5".
std::string halfHoursText(int halfHours);

} // namespace kst
