#pragma once

// What the engine needs of the static population at the park airport. Defined in parking/staticparking.cpp,
// which stands above the engine. Worker only.

#include <cstdint>
#include <string>

namespace kst {

/// A live aircraft has parked here: static aircraft still to come to this stand are not wanted any more.
void lf_dropParkRequests(std::uint32_t sid);

/// How many parked aircraft the airport is to show, live and static together. Shown in the window.
int lf_wantedParkCount();

/// The id of the stand that is kept free for the user, empty for none.
const std::string& lf_reservedStand();

} // namespace kst
