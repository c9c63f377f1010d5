#pragma once

// The engine as the worker's pass sees it. Worker only.

#include "model/aircraft.h"
#include "model/feedmessage.h"

namespace kst {

/// Applies what the simulator answered since the last pass.
void gf_SimCommands();
/// One pass over all targets, then the hand-over of their positions.
void lf_updateAllLiveAc();
/// Takes at most two records from the feed queue.
void lf_handleUdpMessages();
/// Queues the creation of the last target that was cleared for it.
void lf_queueNextSpawn();
/// How far from the user, in nautical miles, a scan must reach to show every aircraft that is being created;
/// 0 without any. Only a scan brings a new object under control: one beyond it would fly on by itself for
/// good.
double creationsReachNm(LatLon user);

/// One feed record: update of a known target, a new one, or noise.
void lf_feedRecord(const FeedMessage& rec);
/// One target's part of the pass. Returns `ac.erase`.
bool updateLiveAc(LiveAc& ac);

/// The one way to take an aircraft out, with the reason that is counted and kept.
void lf_removeAc(LiveAc& ac, Reason reason);
void lf_removeAc(StaticAc& ac, Reason reason);

/// Once a second: coupled callsigns of new aircraft, static twins, collision checks, a blocked callsign, a
/// flush.
void lf_everySecondTraffic();
/// Every 61 seconds: static aircraft that stand for a present live one go.
void lf_removeStaticTwins();
/// Removes all live and static aircraft from the simulator: the link is lost, or the run ends.
void lf_removeAllLive(Reason reason);
void lf_removeAllStatic(Reason reason);
/// Removes the farthest aircraft while there are more than `MAX_LIVE`.
void lf_trimLiveCount();
/// Sends the nav lights setting to every parked aircraft.
void lf_applyNavLights();
/// Counts live and parked aircraft for the window; repaints what changed.
void lf_refreshCounts();
/// Writes the list of targets without a livery to the log when `LOG` is on.
void lf_logUnmatchedTargets();

} // namespace kst
