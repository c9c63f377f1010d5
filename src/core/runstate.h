#pragma once

// The process-wide state of a run: what the worker, the simulator's dispatch thread, the readers, the window
// and the exit thread tell each other by atomics. `resetRunState` puts all of it back for the next run.

#include "model/dayhh.h"
#include "model/exitreason.h"
#include "model/units.h"

#include <atomic>
#include <cstdint>

namespace kst {

/// The simulator runs a flight. Written by the dispatch thread.
extern std::atomic<bool> simRunning;
/// One simulator second has elapsed. Set by the dispatch thread, consumed by the worker.
extern std::atomic<bool> tickDue;
/// `gf_requestExit` has been called and the exit is under way.
extern std::atomic<bool> exitRequested;
/// The operator closed the window; scans and waits poll it beside `exitRequested`.
extern std::atomic<bool> userClosed;
extern std::atomic<ExitReason> exitReason;
/// A reader thread stopped with an error.
extern std::atomic<bool> readerError;
/// The present exit ends in a new worker instead of the end of the process.
extern std::atomic<bool> restartPending;

/// Seconds since the main loop began; back to 0 at 86,400. Written by the worker.
extern std::atomic<std::uint32_t> tickCount;
/// Passes of the engine since the process began; never reset. Written by the worker.
extern std::atomic<std::int32_t> updateCount;

/// The present half hour of the week, packed (`DayHH::packed`). Written by the worker once per tick.
extern std::atomic<std::uint64_t> nowStamp;
DayHH nowDayHH();

/// A third SimConnect request failed: no further requests until the next run. Any thread.
extern std::atomic<bool> latchedSimError;

/// Last snapshot of the user aircraft, in the order of the simulator's data definition.
struct UserData {
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double pitch = 0.0;     ///< radians
    double bank = 0.0;      ///< radians
    double heading = 0.0;   ///< radians, true
    double altitudeFt = 0.0;
    double heightAglFt = 0.0;
    double groundSpeedKt = 0.0;
    double zuluSeconds = 0.0;
    double zuluDayOfYear = 0.0; ///< counts from 1
    double zuluYear = 0.0;
    double lightStates = 0.0;

    LatLon position() const { return {latitude, longitude}; }
};

/// The worker's copy of the user's data, refreshed once a second. Worker only.
extern UserData userData;
/// Last value of SIM ON GROUND, and whether one has come. Written by the dispatch thread.
extern std::atomic<bool> userOnGround;
extern std::atomic<bool> userGroundKnown;

/// False for the position that the simulator reports before a flight is loaded: latitude 0 to 0.0009 and
/// longitude 0 to 0.05 degrees, both ends included.
constexpr bool positionKnown(LatLon position) {
    return !(position.lat >= 0.0 && position.lat <= 0.0009 && position.lon >= 0.0 && position.lon <= 0.05);
}

/// Working range round the user, nautical miles. Read by the Traffic Reader.
extern std::atomic<double> workingRangeNm;
/// The same for the aircraft request to the simulator, metres.
extern std::atomic<double> requestRangeM;
/// `LATERAL_RANGE` as the operator set it, kept aside while `AUTO_RANGE` is on, nautical miles. Outlives a
/// run.
extern std::atomic<int> rememberedRangeNm;
/// The automatic range has narrowed to the airport.
extern std::atomic<bool> closeAirportMode;
/// The engine asks for an aircraft scan every 20 passes instead of every 100: a flare is under way. Worker
/// only.
extern bool flareActive;

/// Requests from the operator, served on the worker.
extern std::atomic<bool> parkRenewalDue;
extern std::atomic<bool> flushStaticDue;
extern std::atomic<bool> reReadParkDue;
extern std::atomic<bool> blockCallsignDue;
extern std::atomic<bool> clearUnmatchedDue;
/// Between the two rounds of a parking renewal. Worker only.
extern bool parkRenewalPhase;
/// A setting that the learned file of the park airport keeps has changed.
extern std::atomic<bool> parametersChanged;
/// Static parked aircraft are being worked out and created.
extern std::atomic<bool> parkingRunning;

/// RealTraffic is installed on this PC.
extern std::atomic<bool> realTrafficHere;
/// The system has not yet seen RealTraffic connect in this run.
extern std::atomic<bool> waitingForRealTraffic;
/// Traffic time follows the simulator's time, and the system's clock the feed's.
extern std::atomic<bool> timeFollowing;
/// Feed time of the last line with a good timestamp, seconds since 1970; 0 until the first.
extern std::atomic<double> lastTimestamp;
/// Simulator time, seconds since 1970, UTC.
extern std::atomic<std::int64_t> simEpochSeconds;
/// Pressure at sea level, whole hectopascals.
extern std::atomic<int> qnh;
inline constexpr int standardQnh = 1013;

/// An exit is under way or the operator closed the window: every wait and every long loop polls this.
inline bool stopAsked() {
    return exitRequested.load(std::memory_order_relaxed) || userClosed.load(std::memory_order_relaxed);
}

/// Puts everything above back to its first value, but for `updateCount`, `exitRequested`, `exitReason`,
/// `restartPending`, `realTrafficHere` and `rememberedRangeNm`, which outlive a run. Exit thread, worker
/// stopped.
void resetRunState();

} // namespace kst
