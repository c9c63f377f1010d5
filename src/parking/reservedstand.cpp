#include "parking/reservedstand.h"

#include "core/display.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/parkinglink.h"
#include "engine/pass.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/parkairports.h"
#include "parking/stands.h"

#include <algorithm>

namespace kst {

namespace {

std::string reservedStand; ///< the id, empty if none

ParkPos* standById(const std::string& id) {
    auto& stands = parkPositions();
    const auto found = std::ranges::find(stands, id, &ParkPos::id);
    return found != stands.end() ? &*found : nullptr;
}

void showReservedStand() {
    const std::string head = parkAirports.empty() ? std::string() : parkAirports.front().standId;
    const bool exists = !reservedStand.empty() && standById(reservedStand) != nullptr;
    updateStatus(Band::Park, [&](StatusValues& status) {
        status.headStand = head;
        status.reservedStand = reservedStand;
        status.reservedStandOk = exists;
    });
}

void clearStand(std::uint32_t sid) {
    const auto parked = std::ranges::find_if(
        staticAcs, [sid](const StaticAc& ac) { return ac.sid == sid && ac.state == AcState::Live; });
    if (parked != staticAcs.end()) {
        lf_removeAc(*parked, Reason::ConflictWithUser);
        return;
    }
    const auto live = std::ranges::find_if(liveAcs, [sid](const LiveAc& ac) {
        return ac.sid == sid && ac.state == AcState::Live && ac.phase == AcPhase::Parked;
    });
    if (live != liveAcs.end()) {
        lf_removeAc(*live, Reason::ConflictWithUser);
    }
}

} // namespace

const std::string& lf_reservedStand() {
    return reservedStand;
}

void chooseReservedStand() {
    const auto airport = parkAirport();
    const bool named = airport && !parkAirports.empty() && parkAirports.front().code == airport->code &&
                       !parkAirports.front().standId.empty() &&
                       standById(parkAirports.front().standId) != nullptr;
    reservedStand = named ? parkAirports.front().standId : std::string();
    showReservedStand();
}

void lf_markReservedStands() {
    if (ParkPos* stand = reservedStand.empty() ? nullptr : standById(reservedStand)) {
        stand->reserved = true;
    }
    const std::string& underUser = lf_userStand(userData.position());
    if (ParkPos* stand = underUser.empty() ? nullptr : standById(underUser)) {
        stand->reserved = true;
    }
}

void changeReservedStand(const std::string& standId) {
    if (ParkPos* old = reservedStand.empty() ? nullptr : standById(reservedStand)) {
        old->reserved = false;
    }
    reservedStand = standId;
    if (ParkPos* stand = standById(standId)) {
        clearStand(stand->sid);
        stand->reserved = true;
    }
    showReservedStand();
}

void lf_clearUserStand() {
    if (const ParkPos* stand = reservedStand.empty() ? nullptr : standById(reservedStand)) {
        clearStand(stand->sid);
    }
}

void resetReservedStand() {
    reservedStand.clear();
}

} // namespace kst
