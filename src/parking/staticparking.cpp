#include "parking/staticparking.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/parkairport.h"
#include "parking/stands.h"

namespace kst {

void lf_parkStatic() {}

void lf_startParkingRenewal() {}

void lf_clearUserStand() {}

void lf_saveAndCloseAirport() {
    parkPositions().clear();
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
