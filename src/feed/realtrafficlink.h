#pragma once

// The TCP link that RealTraffic connects to: the user's position and time go out over it. Worker thread,
// except where told.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kst {

/// Looks for RealTraffic on this PC and sets `realTrafficHere`; logs and shows the outcome.
void lf_detectRealTraffic();

/// Opens the listener on `PORT_NUMBER`. Throws SysErrorException 0 to 6.
void lf_openRealTraffic();

/// Blocks until RealTraffic has connected and exchanged its version; ends early when an exit closes the link.
void lf_waitForRealTraffic();

/// Sends the user's position, or waits for RealTraffic to come back. Once a second. When the send fails, all
/// live aircraft are taken out (`setLinkLostHandler`) and the readers reset; the next call waits.
void lf_sendUserPosition();

/// Sends the simulator's time if the link is connected and `seconds` is 1 or more. A failed send has the same
/// consequences as above.
void lf_sendSimTime(std::int64_t seconds);

/// Ends a blocking wait for the link. Any thread.
void lf_cancelRealTrafficWait();

/// Says "exit" to RealTraffic and closes link and listener. Exit thread (worker stopped), or worker.
void lf_closeRealTraffic();

bool realTrafficConnected();

/// The port that the listener is bound to, 0 while it is closed. Any thread.
int realTrafficPort();

/// Who takes all live aircraft out of the simulator when the link is lost: called on the worker. Set once at
/// process start (core/run), and by tests.
void setLinkLostHandler(std::function<void()> handler);

/// Sends one command. A client that does not read counts as lost after half a second. On failure logs why,
/// closes the client and returns false. Never throws.
bool sendDataPacket(std::string_view text);

/// Reads RealTraffic's answer to the version question; sets `timeFollowing` and the edition shown. Throws the
/// parser's exception where the reply is not JSON.
void lf_readRealTrafficVersion(std::string_view reply);

/// The position command as it goes over the wire, from `userData`.
std::string userPositionCommand();

} // namespace kst
