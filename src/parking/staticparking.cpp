#include "parking/staticparking.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "engine/parkinglink.h"
#include "engine/standselection.h"
#include "parking/learning.h"
#include "parking/stands.h"

#include <algorithm>
#include <cmath>

namespace kst {

void lf_dropParkRequests(std::uint32_t /*sid*/) {}

int lf_wantedParkCount() {
    const int custom = CUSTOM_PARKING_PERCENTAGE;
    const int share = custom >= 0 ? custom : static_cast<int>(parking_percentage);
    const int stands = static_cast<int>(parkPositions().size());
    int wanted = 1;
    if (stands > 3 || (stands > 1 && share >= 50)) {
        wanted = static_cast<int>(std::lround(share * stands / 100.0));
    }
    int shownPercent = share;
    if (CUSTOM_MAX_PARK != CUSTOM_MAX_PARK.defaultValue()) {
        wanted = std::min(wanted, CUSTOM_MAX_PARK.get());
        shownPercent = stands > 0 ? static_cast<int>(std::lround(wanted * 100.0 / stands)) : 0;
    }
    updateStatus(Band::Park, [&](StatusValues& status) {
        status.maxParkShown = wanted;
        status.maxParkPercentShown = shownPercent;
    });
    return wanted;
}

const std::string& lf_reservedStand() {
    static const std::string none;
    return none;
}

void lf_parkStatic() {}

void lf_startParkingRenewal() {}

void lf_clearUserStand() {}

void lf_saveAndCloseAirport() {
    lf_saveLearnedChanges();
    clearStandChanges();
    resetStandSelection();
    clearLoadedAirport();
    setParkAirport(std::nullopt);
}

bool parkAirportLoaded() {
    return parkAirport().has_value() && !parkPositions().empty();
}

void enableParkingControls(bool enabled) {
    for (const int id :
         {control::ParkingPercentage, control::InitialLoadOnly, control::ParkFake, control::ParkSoft,
          control::CustomMaxPark, control::MaxFitFl, control::Week, control::FlushStatic, control::ReRead}) {
        enableControl(id, enabled);
    }
}

} // namespace kst
