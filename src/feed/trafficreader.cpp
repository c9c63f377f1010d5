#include "feed/trafficreader.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "feed/feedtext.h"

namespace kst {

TrafficReader trafficReader;

namespace {
// 15 seconds of any real feed are far less.
constexpr std::size_t seenLimit = 20'000;
} // namespace

TrafficReader::TrafficReader() : FeedReader(true) {
    fields.reserve(fieldsNeeded);
}

void TrafficReader::stopped() {
    updateStatus(Band::Status, [](StatusValues& status) { status.trafficStatus = 3; });
    logLine("Traffic Reader has stopped");
}

void TrafficReader::noteSeen(LatLon position, std::string_view callsign) {
    if (!isPlainName(callsign)) {
        return;
    }
    const std::lock_guard lock(seenLock);
    if (seen.size() < seenLimit) {
        seen.try_emplace(position, callsign);
    }
}

void TrafficReader::setReferencePosition(LatLon position) {
    referencePosition.lat.store(position.lat, std::memory_order_relaxed);
    referencePosition.lon.store(position.lon, std::memory_order_relaxed);
}

void TrafficReader::setFieldElevation(std::optional<double> elevationFt) {
    fieldElevation = elevationFt.value_or(noElevation);
}

void TrafficReader::collectSeen(bool on) {
    if (on) {
        const std::lock_guard lock(seenLock);
        seen.clear();
    }
    collecting = on;
}

std::vector<std::pair<LatLon, std::string>> TrafficReader::copySeen() const {
    const std::lock_guard lock(seenLock);
    return {seen.begin(), seen.end()};
}

void TrafficReader::reset() {
    collecting = false;
    const std::optional<ParkAirportPlace> airport = parkAirportPlace();
    setFieldElevation(airport ? std::optional(airport->elevationFt) : std::nullopt);
    const std::lock_guard lock(seenLock);
    seen.clear();
}

} // namespace kst
