#pragma once

// The park airports: where the system may load stands, and the stand that is kept free for the user at each.
// The list lives in memory, nearest airport first; my_park_airports.txt keeps it. Worker only.

#include "model/units.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// One park airport.
struct ParkAirport {
    std::string code;      ///< ICAO code
    std::string standId;   ///< the stand to keep free for the user, may be empty
    LatLon position;       ///< from the airport directory
    double distance = 0.0; ///< nautical miles from the user, as of the last check
};

/// The list; its head is the candidate for the next park airport.
extern std::vector<ParkAirport> parkAirports;

/// Reads my_park_airports.txt, and adds the user's add-on airports that it does not name. False when a line
/// names an airport that is not in the directory, or at a failure; what could be read stands.
bool lf_readMyParkAirports();
/// Rewrites the file for the head of the list, all other lines as they are. A file that cannot be read is
/// left alone.
void lf_saveParkAirports();

/// Puts the list in order: the destination at the head while there is one, else by distance from the user.
void orderParkAirports(LatLon user);

/// The distance of the closest park airport from the user; nothing while none is known.
std::optional<double> closestParkAirportNm();

/// A new destination: its airport goes to the head of the list.
void lf_setDestination(std::string_view code, LatLon position);

/// The stand under the user at the loaded airport: that airport goes to the head of the list, with this stand
/// unless it is empty.
void noteUserStand(std::string_view code, LatLon position, const std::string& standId);
/// Keeps the stand under the stopped user for the next visit.
void lf_storeUserStand();

/// Reads the list anew for the Re-read button. With `applyReserved` a changed reserved stand of the loaded
/// airport is put to use. False when the reading found fault; else `message` receives what to show.
bool lf_reReadParkAirports(bool applyReserved, std::string& message);

/// Forgets the list, at the end of a run.
void resetParkAirports();

} // namespace kst
