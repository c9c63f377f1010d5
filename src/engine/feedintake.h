#pragma once

// What becomes of one record of the feed: an update of a known target, a new target, or noise. Worker only.

#include "model/aircraft.h"
#include "model/feedmessage.h"

namespace kst {

/// Whether the record belongs to this target. If so it is consumed: taken into the track, or dropped with its
/// reason counted.
bool lf_matchFeedRecord(const FeedMessage& rec, LiveAc& ac);

/// False for an altitude that a target in flight cannot have: below 10,000 ft and within 120 ft of the park
/// airport's elevation. Without a park airport every altitude passes.
bool lf_altitudeGate(const FeedMessage& rec);

/// A record that no target matched: finds its aircraft type, and drops it where there is none.
void lf_checkNewTarget(const FeedMessage& rec);

/// Enters a new target into the table, unless its size class is switched off or its altitude is refused.
void lf_newFeedRecord(const FeedMessage& rec);

/// Gives a new record the figures of its size class; its pitches are drawn once.
void setCategoryRates(AcBase& ac, Category category);

/// The record's position as a point of a track.
TrackPoint trackPointOf(const FeedMessage& rec);

/// Forgets which targets were heard.
void resetFeedIntake();

} // namespace kst
