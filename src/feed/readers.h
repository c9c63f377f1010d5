#pragma once

// The two readers of the feed as the rest of the program sees them: their threads, their status in the
// window.

#include "model/units.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kst {

inline constexpr int weatherPort = 49004;
inline constexpr int trafficPort = 49005;

/// Starts the thread of the QNH Reader (UDP `port`; 0 takes a free one) or of the Traffic Reader, and returns
/// when it listens or has failed. A socket failure ends the thread, shows "The {} has stopped with an error:
/// {}" and sets `readerError`. Does nothing once an exit is under way. Worker.
void startQnhReader(int port = weatherPort);
void startTrafficReader(int port = trafficPort);

/// Asks both readers to stop, ends their receive and waits until their threads are gone. Exit thread.
void stopReaders();

/// Puts the counters, the QNH and the seen targets back, and the field elevation to that of the park airport,
/// or to none without one.
void lf_resetReaders();

/// Sets each reader's status by whether datagrams came since the last check, while RealTraffic counts as
/// connected. Worker.
void lf_checkReadersAlive();

/// The centre of the range test. Written by the worker, read by the Traffic Reader.
void setReferencePosition(LatLon position);
/// Elevation in feet of the airport the user is at, or none. Worker.
void setFieldElevation(std::optional<double> elevationFt);

/// Switches the noting of seen targets on or off; switching it on empties the table. Worker.
void collectSeenTargets(bool on);
/// A copy of position and callsign of every target noted. Worker.
std::vector<std::pair<LatLon, std::string>> seenTargets();

} // namespace kst
