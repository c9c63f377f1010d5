// A BGL file, decoded as the scan of add-on airports does. What comes out must keep the promises that airport
// files are built on.

#include "fuzz/support/fuzzing.h"
#include "scanner/bglfile.h"

#include <cmath>
#include <set>
#include <span>
#include <stdexcept>

namespace {

void checkAirport(const kst::AirportFile& airport) {
    constexpr std::size_t longestName = 2 * 44; // in UTF-8
    require(airport.icao.size() == 4 && airport.airport_name.size() <= longestName);
    require(airport.altitude >= -20 && airport.altitude <= 10000);
    std::set<std::string> ids;
    for (const kst::ParkPos& stand : airport.stands) {
        require(std::abs(stand.latitude) <= 90.0 && std::abs(stand.longitude) <= 180.0);
        require(std::isfinite(stand.radius) && std::isfinite(stand.heading));
        require(!stand.suffixed && !stand.id.empty() && ids.insert(stand.id).second);
    }
}

} // namespace

void fuzz(std::string_view input) {
    kst::BglOutput output;
    output.begun = [](kst::AirportFile& airport) { require(airport.stands.empty()); };
    output.done = checkAirport;
    output.report = [](std::string_view line) { require(!line.empty()); };
    try {
        kst::decodeBgl(kst::BglWords(std::as_bytes(std::span(input))), "fuzzed", output);
    } catch (const std::runtime_error&) {
    } catch (const std::out_of_range&) {
    }
}
