// A BGL file, decoded as the scan of add-on airports does. What comes out must keep the promises that airport
// files are built on.

#include "scanner/bglfile.h"

#include <cmath>
#include <cstdlib>
#include <set>
#include <stdexcept>

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool isSound(const kst::ParkPos& stand) {
    const bool placed = std::abs(stand.latitude) <= 90.0 && std::abs(stand.longitude) <= 180.0;
    return placed && std::isfinite(stand.radius) && std::isfinite(stand.heading) && !stand.suffixed &&
           !stand.id.empty();
}

void checkAirport(const kst::AirportFile& airport) {
    constexpr std::size_t longestName = 2 * 44; // in UTF-8
    require(airport.icao.size() == 4 && airport.airport_name.size() <= longestName);
    require(airport.altitude >= -20 && airport.altitude <= 10000);
    std::set<std::string> ids;
    for (const kst::ParkPos& stand : airport.stands) {
        require(isSound(stand) && ids.insert(stand.id).second);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::BglOutput output;
    output.begun = [](kst::AirportFile& airport) { require(airport.stands.empty()); };
    output.done = checkAirport;
    output.report = [](std::string_view line) { require(!line.empty()); };
    try {
        kst::decodeBgl(kst::BglWords(std::as_bytes(std::span(data, size))), "fuzzed", output);
    } catch (const std::runtime_error&) {
    } catch (const std::out_of_range&) {
    }
    return 0;
}
