#include "core/parkairport.h"

#include <mutex>

namespace kst {

namespace {
std::mutex airportLock;
std::optional<ParkAirportFacts> airportFacts;
} // namespace

void setParkAirport(const std::optional<ParkAirportFacts>& airport) {
    const std::lock_guard lock(airportLock);
    airportFacts = airport;
}

std::optional<ParkAirportFacts> parkAirport() {
    const std::lock_guard lock(airportLock);
    return airportFacts;
}

std::optional<ParkAirportPlace> parkAirportPlace() {
    const std::lock_guard lock(airportLock);
    if (!airportFacts) {
        return std::nullopt;
    }
    return ParkAirportPlace{airportFacts->position, airportFacts->elevationFt};
}

} // namespace kst
