#pragma once

// What the files of the session share. Not for other subsystems: they use session.h and objectcommands.h.

#include "core/runstate.h"
#include "model/category.h"
#include "simlink/simconnect.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Guards the handle for calls from other threads, the frame buffers, and the two tables below.
extern std::mutex simLock;
/// The session's handle, `noSimHandle` when none stands. Written by the dispatch thread.
extern std::atomic<SimHandle> simHandle;

/// A creation that the simulator has been asked for and has not yet answered.
struct ExpectedCreation {
    std::uint32_t sendId = 0;
    std::uint32_t hexid = 0;
    std::string tailNumber;
};
/// Under `simLock`.
extern std::vector<ExpectedCreation> expectedCreations;
/// Objects that were added, until the first scan that shows them. Under `simLock`.
extern std::vector<std::uint32_t> createdOids;
/// Room that every table and buffer of the session is given at the start.
inline constexpr std::size_t simTableCapacity = 256;
/// A simulator that never answers does not make the two tables grow beyond this: the oldest go.
inline constexpr std::size_t mostUnanswered = 4096;

/// Until the first snapshot the user's object id is taken to be this.
inline constexpr std::uint32_t firstUserObjectId = 2;
/// Written by the dispatch thread.
extern std::atomic<std::uint32_t> userObjectIdNow;
extern std::atomic<float> simFrameRateNow;
/// Frame events since the session was opened.
extern std::atomic<std::uint32_t> simFrameCount;

/// What is known of the user's aircraft. Written by the dispatch thread, under the lock.
struct UserAircraft {
    UserData snapshot;   ///< as the simulator last sent it
    LatLon lastPosition; ///< of the snapshot before, for the teleport test
    std::string title;
    std::optional<double> halfSpanNm;
    Category category = Category::Light;
};
extern std::mutex userAircraftLock;
extern UserAircraft userAircraft;
/// The position of the last snapshot. Any thread.
LatLon lastUserPosition();

/// The version digit that the session was started for.
extern std::atomic<int> simVersion;
/// The simulator has said that it quits.
extern std::atomic<bool> simQuitSeen;

/// Declares every event and every data definition to the simulator.
void lf_setupSimData();
/// Takes all of it back.
void clearSimData();

/// Logs a failed request and counts it, unless it failed because the connection is known to be gone.
void requestFailed(std::string_view logText);

/// Callback of the client: one message. Throws UserErrorException where the user must act.
void lf_simDispatch(const void* message, std::uint32_t size, void* context);

/// Takes the new object over, so that only this program moves it. Takes `simLock`. Dispatch thread.
void lf_freezeAc(std::uint32_t objectId);

} // namespace kst
