#pragma once

// The one conversation with the simulator: its thread, what it learns of the user's aircraft, and the
// requests that other parts make through it.

#include "core/runstate.h"
#include "model/category.h"

#include <optional>
#include <stop_token>
#include <string>

namespace kst {

/// Body of the simulator dispatch thread: opens the session, declares everything, pumps messages until asked
/// to stop.
void lf_simClient(const std::stop_token& stopToken);

/// One round of the pump: dispatches every message that has arrived. When the simulator has quit or the
/// connection is lost, ends the session (`simRunning` cleared, `lf_closeSimSession`) and returns false; false
/// as well while no session stands. Throws UserErrorException where the user must act. The dispatch thread,
/// or a test that plays it.
bool lf_pumpSimMessages();
/// Opens the session and declares data and events: the first step of `lf_simClient`, for a test that plays
/// it. A session that an earlier run left open is dropped. False when the simulator cannot be reached.
bool lf_openSimSession();

/// Stores the simulator's version digit, reserves the tables, clears `latchedSimError`. Before each start.
/// Worker.
void lf_resetSimTables(int version);
/// Clears data definitions and subscriptions, closes the connection and ends the run (reason 1) unless an
/// exit is under way.
void lf_closeSimSession();

/// Whether a session stands: its connection is open and not known to be lost. Any thread.
bool simSessionStands();
/// Forgets everything that the session has learned and drops a connection that still stands. Exit thread,
/// once the dispatch thread has been asked to stop.
void resetSimSession();

/// Counts a failed request; the third restarts the run in 10 seconds.
void lf_simRequestError();
void resetSimRequestErrors();

/// Requests of the worker. Each takes the session's lock; a failure is logged and counted.
bool lf_requestUserOnGround();              ///< once per simulator second from now on
void lf_requestUserInfo();                  ///< title and model of the user's aircraft, once
void lf_requestUserPosition(UserData& out); ///< asks for the next snapshot and hands out the last
void lf_requestAircraftInRange(double metres);

/// Whether a snapshot of the user with a known position has come and the ground state is known.
bool userGroundStateKnown();

/// Object ids above this one are AI objects.
std::uint32_t userObjectId();
/// Half wing span of the user's aircraft, nautical miles, when known; its size class.
std::optional<double> userHalfSpanNm();
Category userCategory();
/// Rendered frames per second, refreshed every 30 frames.
float simFrameRate();

/// Whether the registry knows Prepar3D of this version (5 or 6), and its install path, empty if unknown.
bool lf_simInstalled(int version);
std::string lf_simInstallPath(int version);
/// "5" or "6": of the install path, else of `P3D_VERSION`.
std::string gf_simVersionDigit();

} // namespace kst
