// One datagram of the traffic feed, from anybody. The first byte chooses the state that the filter meets.

#include "core/parkairport.h"
#include "core/runstate.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "feed/trafficreader.h"
#include "fuzz/support/fuzzing.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace kst;

enum State : unsigned {
    remoteFeed = 1,
    collectingSeen = 2,
    elevationKnown = 4,
    parkAirportKnown = 8,
    airportMode = 16,
    feedClosed = 32,
    smallRange = 64
};

void setState(unsigned state) {
    constexpr LatLon reference{47.0, 8.0};
    trafficReader.localFeed = (state & remoteFeed) == 0;
    collectSeenTargets((state & collectingSeen) != 0);
    setFieldElevation((state & elevationKnown) != 0 ? std::optional(1400.0) : std::nullopt);
    setParkAirport((state & parkAirportKnown) != 0
                       ? std::optional(ParkAirportFacts{"LSXX", "", reference, 1400.0})
                       : std::nullopt);
    closeAirportMode = (state & airportMode) != 0;
    setFeedOpen((state & feedClosed) == 0);
    workingRangeNm = (state & smallRange) != 0 ? 10.0 : 20'000.0;
    setReferencePosition(reference);
}

/// The line cut at each comma in the plainest way.
std::vector<std::string> fieldsOf(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == ',') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    if (fields.back().empty()) {
        fields.pop_back();
    }
    return fields;
}

void check(const FeedMessage& message, std::string_view line) {
    for (const double value : {message.latitude, message.longitude, message.altitude, message.groundSpeed,
                               message.track, message.verticalSpeed, message.trueAirspeed, message.timestamp,
                               message.bank.value_or(0.0), message.heading.value_or(0.0)}) {
        require(std::isfinite(value));
    }
    require(std::abs(message.latitude) <= 90.0 && std::abs(message.longitude) <= 180.0);
    require(positionKnown({message.latitude, message.longitude}));
    require(message.hexid > 10'000 && !message.type.empty() && message.type.size() <= 4);
    require(message.registration.size() <= 12 && !(message.registration + message.callsign).empty());
    require(message.airborne == (message.altitude > 0.0) && message.altitude >= 0.0);
    require(message.headingGiven == message.heading.has_value());
    require(message.heading.value_or(1.0) > 0.0);

    const std::vector<std::string> fields = fieldsOf(line);
    require(fields.size() >= TrafficReader::fieldsNeeded);
    const auto nullOr = [](const std::string& kept, const std::string& field) {
        return kept == field || (kept.empty() && field == "null");
    };
    require(message.type == fields[10]);
    require(nullOr(message.origin, fields[12]) && nullOr(message.destination, fields[13]));
    require(nullOr(message.callsign, fields[9]) || fields[9].find('@') != std::string::npos);
    require(nullOr(message.registration, fields[11]) || fields[11].size() > 12);
    require(line.find(" VEH") == std::string_view::npos);
}

} // namespace

void fuzz(std::string_view input) {
    resetFeedQueue();
    setState(takeChoice(input));
    input = input.substr(0, FeedReader::bufferSize);
    // From another PC each datagram comes twice.
    const int times = trafficReader.localFeed ? 1 : 2;
    for (int i = 0; i < times; ++i) {
        std::ranges::copy(input, trafficReader.buffer.begin());
        trafficReader.handleDatagram(input.size());
    }
    std::vector<FeedMessage> taken;
    require(takeFeedMessages(taken, 10) <= 1);
    for (const FeedMessage& message : taken) {
        check(message, input.substr(0, input.find('\0')));
    }
    for (const auto& [position, callsign] : seenTargets()) {
        require(std::isfinite(position.lat) && std::isfinite(position.lon) && !callsign.empty());
    }
}
