// The filter itself: one line of the feed, test by test, to a record or to the reason why there is none.

#include "core/exceptions.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "feed/feedqueue.h"
#include "feed/feedtext.h"
#include "feed/trafficreader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fieldIndex {
enum : std::size_t {
    identity = 1,
    latitude = 2,
    longitude = 3,
    altitude = 4,
    verticalSpeed = 5,
    track = 7,
    groundSpeed = 8,
    callsign = 9,
    type = 10,
    registration = 11,
    origin = 12,
    destination = 13,
    timestamp = 14,
    source = 15,
    messageKind = 17,
    trueAirspeed = 20,
    roll = 23,
    trueHeading = 25,
    category = 28
};
}

/// Numbers of the errors that a line can have.
enum LineError : int {
    badIdentity = 640,
    badAltitude = 641,
    badTrack = 648,
    badAirspeed = 691,
    badTimestamp = 741,
    badLatitude = 742,
    badLongitude = 743,
    badPosition = 744,
    badHeading = 745,
    headingTooLarge = 746,
    badGroundSpeed = 747,
    badVerticalSpeed = 748,
    badRoll = 750
};

constexpr std::string_view vehicleMark = " VEH";
constexpr std::size_t maxRegistrationLength = 12;
constexpr std::size_t maxTypeLength = 4;
constexpr std::uint32_t lastReservedIdentity = 10'000;
constexpr std::string_view blockedCallsign = "ERARMTR0";
constexpr std::array<std::string_view, 5> categoriesNotShown = {"B1", "B2", "B4", "C1", "C2"};
constexpr std::array<std::string_view, 7> typesNotShown = {"GRND", "GLID", "SERV", "BALL",
                                                           "PARA", "SHIP", "EMER"};

// The end of the year 9999: a later time cannot be turned into a date.
constexpr double latestTimestampS = 253'402'300'799.0;

constexpr double fieldCheckBelowFt = 14'000.0;
constexpr double assumedHeightFt = 1'000.0; ///< added where no field elevation is known
constexpr double slowestFlightKt = 35.0;
/// On the ground within so many feet of the field, if not faster.
struct GroundBand {
    double withinFt;
    double upToKt;
};
constexpr std::array<GroundBand, 3> groundBands = {{{45.0, 120.0}, {90.0, 80.0}, {120.0, 43.0}}};

constexpr double airportModeCeilingFt = 3'000.0;
constexpr double groundTrafficRadiusNm = 5.0;

/// The true airspeed of a target that gives none, by its altitude.
struct DefaultAirspeed {
    double upToFt;
    double knots;
};
constexpr std::array<DefaultAirspeed, 5> defaultAirspeeds = {{{2'000.0, 180.0},
                                                              {5'000.0, 220.0},
                                                              {10'000.0, 250.0},
                                                              {20'000.0, 350.0},
                                                              {std::numeric_limits<double>::max(), 430.0}}};
constexpr double unknownValue = -1.0;

std::string_view withoutLineEnd(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view unlessNull(std::string_view text) {
    return text == "null" ? std::string_view{} : text;
}

/// How many fields the text has.
std::size_t fieldsIn(std::string_view text) {
    const auto commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
    return commas + (!text.empty() && text.back() != ',' ? 1 : 0);
}

Reason logMalformed(std::string_view what) {
    logLine(fmt::format("exception in processLine: {}", what));
    return Reason::MalformedLine;
}

// The error is made but not thrown: a feed of garbage brings ten thousand a second.
Reason malformed(LineError code, const std::string& text) {
    return logMalformed(SysErrorException(code, text).what());
}

double defaultAirspeedKt(double altitudeFt) {
    const auto* entry = std::find_if(defaultAirspeeds.begin(), defaultAirspeeds.end() - 1,
                                     [&](const DefaultAirspeed& row) { return altitudeFt <= row.upToFt; });
    return entry->knots;
}

} // namespace

struct TrafficReader::Target {
    std::string_view line;
    std::string_view type;
    std::string_view origin;
    std::string_view destination;
    std::string_view callsign;
    std::string_view registration;
    LatLon position;
    std::optional<double> bankRad;
    std::optional<double> headingRad;
    double altitudeFt = 0.0;
    double groundSpeedKt = 0.0;
    double trackDeg = 0.0;
    double verticalSpeedFpm = 0.0;
    double trueAirspeedKt = 0.0;
    double timestampS = 0.0;
    std::uint32_t hexid = 0;
    bool airborne = false;
};

void TrafficReader::processLine() {
    Reason reason = Reason::None;
    try {
        reason = readLine(withoutLineEnd(lineText()));
    } catch (const std::exception& e) {
        reason = logMalformed(e.what());
    }
    if (reason == Reason::None) {
        countHappening(Happening::LinesAccepted);
    } else {
        countReason(reason);
    }
}

Reason TrafficReader::readLine(std::string_view text) {
    if (text.find(vehicleMark) != std::string_view::npos) {
        return Reason::GroundVehicle;
    }
    if (const std::size_t count = fieldsIn(text); count < fieldsNeeded) {
        return logMalformed(fmt::format("line has {} fields, {} are the least", count, fieldsNeeded));
    }
    beginCutting(text);
    Target target;
    target.line = text;
    constexpr std::array<Reason (TrafficReader::*)(Target&), 7> steps = {
        &TrafficReader::readPlace,    &TrafficReader::readKind,   &TrafficReader::readHeading,
        &TrafficReader::readIdentity, &TrafficReader::readHeight, &TrafficReader::readMotion,
        &TrafficReader::readRoute};
    for (const auto step : steps) {
        if (const Reason reason = (this->*step)(target); reason != Reason::None) {
            return reason;
        }
    }
    return queue(target);
}

Reason TrafficReader::readPlace(Target& target) {
    const std::string_view timestampText = field(fieldIndex::timestamp);
    const std::optional<double> timestamp = finiteNumberAtStart(timestampText);
    if (!timestamp || std::abs(*timestamp) > latestTimestampS) {
        return malformed(badTimestamp, fmt::format("timestamp:{}", logExcerpt(timestampText)));
    }
    lastTimestamp.store(*timestamp, std::memory_order_relaxed);
    target.timestampS = *timestamp;

    const std::string_view registration = unlessNull(field(fieldIndex::registration));
    if (registration.size() <= maxRegistrationLength) {
        target.registration = registration;
    }
    if (target.registration.empty() && field(fieldIndex::source) == "F") {
        return Reason::NoRegistrationFromF;
    }

    const std::optional<double> latitude = numberAtStart(field(fieldIndex::latitude));
    if (!latitude) {
        return malformed(badLatitude, fmt::format("lat:{}", logExcerpt(field(fieldIndex::latitude))));
    }
    const std::optional<double> longitude = numberAtStart(field(fieldIndex::longitude));
    if (!longitude) {
        return malformed(badLongitude, fmt::format("lon:{}", logExcerpt(field(fieldIndex::longitude))));
    }
    target.position = {*latitude, *longitude};
    // A NaN fails these comparisons too.
    const bool onEarth = std::abs(*latitude) <= 90.0 && std::abs(*longitude) <= 180.0;
    if (!onEarth || !positionKnown(target.position)) {
        return malformed(badPosition, fmt::format("lalo:{:.6f},{:.6f}", *latitude, *longitude));
    }
    const LatLon centre{referencePosition.lat.load(std::memory_order_relaxed),
                        referencePosition.lon.load(std::memory_order_relaxed)};
    if (rangeTest.outside(centre, workingRangeNm.load(std::memory_order_relaxed), target.position)) {
        return Reason::OutOfRange;
    }
    return Reason::None;
}

Reason TrafficReader::readKind(Target& target) {
    const std::string_view callsign = unlessNull(field(fieldIndex::callsign));
    if (callsign.find('@') == std::string_view::npos) {
        target.callsign = callsign;
    }
    if (!target.callsign.empty() && collecting.load(std::memory_order_relaxed)) {
        noteSeen(target.position, target.callsign);
    }

    const std::string_view type = unlessNull(field(fieldIndex::type));
    if (type != "0" && type != "ZZZZ") {
        target.type = type;
    }
    const std::string_view category = field(fieldIndex::category);
    if (category.empty() || std::find(categoriesNotShown.begin(), categoriesNotShown.end(), category) !=
                                categoriesNotShown.end()) {
        return Reason::CategoryNotAircraft;
    }
    if (target.type.empty() || target.type.size() > maxTypeLength ||
        std::find(typesNotShown.begin(), typesNotShown.end(), target.type) != typesNotShown.end()) {
        return Reason::TypeUnusable;
    }
    return Reason::None;
}

Reason TrafficReader::readHeading(Target& target) {
    if (field(fieldIndex::messageKind) != "adsb_icao") {
        return Reason::None;
    }
    const std::string_view text = field(fieldIndex::trueHeading);
    const std::optional<double> headingDeg = numberAtStart(text);
    if (!headingDeg || std::isnan(*headingDeg)) {
        return malformed(badHeading, fmt::format("true heading:{}", logExcerpt(text)));
    }
    if (*headingDeg > 360.0) {
        return malformed(headingTooLarge, fmt::format("true heading:{:.2F}", *headingDeg));
    }
    if (*headingDeg == 0.0) {
        target.headingRad = 2 * pi;
    } else if (*headingDeg > 0.0) {
        target.headingRad = *headingDeg * radPerDeg;
    }
    return Reason::None;
}

Reason TrafficReader::readIdentity(Target& target) {
    const std::string_view identityText = field(fieldIndex::identity);
    const std::optional<std::uint32_t> identity = digitsAtStart(identityText);
    if (!identity) {
        return malformed(badIdentity, fmt::format("hexid incorrect{}", logExcerpt(identityText)));
    }
    if (*identity <= lastReservedIdentity) {
        return Reason::IdentityReserved;
    }
    target.hexid = *identity;

    const std::string_view speedText = field(fieldIndex::groundSpeed);
    const std::optional<double> groundSpeedKt = finiteNumberAtStart(speedText);
    if (!groundSpeedKt) {
        return malformed(badGroundSpeed, fmt::format("gs:{}", logExcerpt(speedText)));
    }
    target.groundSpeedKt = *groundSpeedKt;

    if (target.registration.empty() && target.callsign.empty()) {
        return Reason::NoCallsignNoRegistration;
    }
    return target.callsign == blockedCallsign ? Reason::BlockedCallsign : Reason::None;
}

double TrafficReader::heightAboveField(double altitudeFt) const {
    const double elevationFt = fieldElevation.load(std::memory_order_relaxed);
    return std::isnan(elevationFt) ? altitudeFt + assumedHeightFt : altitudeFt - elevationFt;
}

Reason TrafficReader::readHeight(Target& target) {
    const std::string_view altitudeText = field(fieldIndex::altitude);
    const std::optional<double> given = finiteNumberAtStart(altitudeText);
    if (!given) {
        return malformed(badAltitude, fmt::format("altitude {} incorrect, from: {}", logExcerpt(altitudeText),
                                                  logExcerpt(target.line)));
    }
    double altitudeFt = std::max(*given, 0.0);
    const double groundSpeedKt = target.groundSpeedKt;
    if (altitudeFt > 0.0 && altitudeFt < fieldCheckBelowFt) {
        const double heightFt = heightAboveField(altitudeFt);
        // Close to the field and slow enough: on the ground, whatever the target reports.
        if (heightFt <= 0.0 ||
            std::any_of(groundBands.begin(), groundBands.end(), [&](const GroundBand& band) {
                return heightFt <= band.withinFt && groundSpeedKt <= band.upToKt;
            })) {
            altitudeFt = 0.0;
        }
    }
    if (groundSpeedKt <= slowestFlightKt) {
        altitudeFt = 0.0;
    }
    target.altitudeFt = altitudeFt;
    target.airborne = altitudeFt > 0.0;

    if (target.airborne) {
        if (closeAirportMode.load(std::memory_order_relaxed)) {
            const std::optional<ParkAirportPlace> airport = parkAirportPlace();
            if (airport && altitudeFt > airport->elevationFt + airportModeCeilingFt) {
                return Reason::TooHighForAirportMode;
            }
        }
        return Reason::None;
    }
    const std::optional<ParkAirportPlace> airport = parkAirportPlace();
    if (!airport || gf_distanceNm(airport->position, target.position) > groundTrafficRadiusNm) {
        return Reason::GroundWithoutParkAirport;
    }
    return Reason::None;
}

Reason TrafficReader::readMotion(Target& target) {
    const std::string_view trackText = field(fieldIndex::track);
    if (!trackText.empty()) {
        const std::optional<double> trackDeg = finiteNumberAtStart(trackText);
        if (!trackDeg) {
            return malformed(badTrack, fmt::format("track incorrect {}", logExcerpt(trackText)));
        }
        target.trackDeg = *trackDeg;
    }
    if (target.trackDeg == 0.0 && target.headingRad) {
        target.trackDeg = *target.headingRad * degPerRad;
    }

    const std::string_view verticalText = field(fieldIndex::verticalSpeed);
    const std::optional<double> verticalSpeedFpm = finiteNumberAtStart(verticalText);
    if (!verticalSpeedFpm) {
        return malformed(badVerticalSpeed, fmt::format("vs:{}", logExcerpt(verticalText)));
    }
    target.verticalSpeedFpm = *verticalSpeedFpm;

    if (target.airborne) {
        const std::string_view rollText = field(fieldIndex::roll);
        const std::optional<double> rollDeg = finiteNumberAtStart(rollText);
        if (!rollDeg) {
            return malformed(badRoll, fmt::format("roll:{}", logExcerpt(rollText)));
        }
        if (*rollDeg != unknownValue && *rollDeg != 0.0) {
            target.bankRad = -*rollDeg * radPerDeg;
        }
    }

    const std::string_view airspeedText = field(fieldIndex::trueAirspeed);
    const std::optional<double> airspeedKt = finiteNumberAtStart(airspeedText);
    if (!airspeedKt) {
        return malformed(badAirspeed, fmt::format("TAS incorrect{}", logExcerpt(airspeedText)));
    }
    target.trueAirspeedKt = *airspeedKt == unknownValue ? defaultAirspeedKt(target.altitudeFt) : *airspeedKt;
    return Reason::None;
}

Reason TrafficReader::readRoute(Target& target) {
    target.origin = unlessNull(field(fieldIndex::origin));
    target.destination = unlessNull(field(fieldIndex::destination));
    for (const std::string_view name :
         {target.callsign, target.registration, target.type, target.origin, target.destination}) {
        if (!isPlainName(name)) {
            return logMalformed(fmt::format("name incorrect:{}", logExcerpt(name)));
        }
    }
    return Reason::None;
}

Reason TrafficReader::queue(const Target& target) {
    FeedMessage message;
    message.type = target.type;
    message.origin = target.origin;
    message.destination = target.destination;
    message.callsign = target.callsign;
    message.registration = target.registration;
    message.latitude = target.position.lat;
    message.longitude = target.position.lon;
    message.bank = target.bankRad;
    message.heading = target.headingRad;
    message.altitude = target.altitudeFt;
    message.groundSpeed = target.groundSpeedKt;
    message.track = target.trackDeg;
    message.verticalSpeed = target.verticalSpeedFpm;
    message.trueAirspeed = target.trueAirspeedKt;
    message.airborne = target.airborne;
    message.headingGiven = target.headingRad.has_value();
    message.timestamp = target.timestampS;
    message.hexid = target.hexid;
    return pushFeedMessage(std::move(message)) ? Reason::None : Reason::FeedClosed;
}

void TrafficReader::beginCutting(std::string_view text) {
    fields.clear();
    uncut = text;
}

// The line is known to have as many fields as are asked for.
std::string_view TrafficReader::field(std::size_t index) {
    while (fields.size() <= index) {
        const std::size_t comma = uncut.find(',');
        fields.push_back(uncut.substr(0, comma));
        uncut.remove_prefix(comma == std::string_view::npos ? uncut.size() : comma + 1);
    }
    return fields[index];
}

} // namespace kst
