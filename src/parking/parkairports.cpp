#include "parking/parkairports.h"

namespace kst {

bool lf_readMyParkAirports() {
    return true;
}

bool lf_reReadParkAirports(bool, std::string& message) {
    message = "park airports and stands are okay";
    return true;
}

void gf_checkForParkAirportUpdates(bool) {}

void lf_setDestination(std::string_view, LatLon) {}

std::optional<double> closestParkAirportNm() {
    return std::nullopt;
}

void lf_storeUserStand() {}

} // namespace kst
