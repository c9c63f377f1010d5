#include "support/engineworld.h"

#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/feedintake.h"
#include "engine/tables.h"
#include "feed/feedqueue.h"
#include "parking/stands.h"
#include "simlink/objectcommands.h"

#include <array>

namespace kst::test {

namespace {

constexpr std::int32_t firstTick = 10000;

struct TestModel {
    std::string_view model;
    Category category;
    double spanM;
};

constexpr std::array<TestModel, 7> testModels = {{{"A320", Category::Large, 35.8},
                                                  {"B738", Category::Large, 35.8},
                                                  {"B77W", Category::Heavy, 64.8},
                                                  {"C172", Category::Light, 11.0},
                                                  {"C56X", Category::Buzjets, 17.2},
                                                  {"F16", Category::HighPerf, 10.0},
                                                  {"EC35", Category::Rotorcraft, 10.2}}};

void resetAll() {
    resetEngine(false);
    resetObjectCommands();
    resetFeedQueue();
    resetRunState();
    resetCounts();
    resetMatching();
    parkPositions().clear();
    setParkAirport(std::nullopt);
    MAX_LIVE.setDefault();
    nowStamp = DayHH{}.packed();
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
}

} // namespace

FeedMessage feedMessage(const Sighting& sighting) {
    FeedMessage message;
    message.hexid = sighting.hexid;
    message.callsign = sighting.callsign;
    message.type = sighting.type;
    message.registration = sighting.registration;
    message.origin = sighting.origin;
    message.destination = sighting.destination;
    message.latitude = sighting.position.lat;
    message.longitude = sighting.position.lon;
    message.altitude = sighting.airborne ? sighting.altFt : 0.0;
    message.groundSpeed = sighting.gsKt;
    message.trueAirspeed = sighting.gsKt;
    message.track = sighting.trackDeg;
    message.verticalSpeed = sighting.vsFpm;
    message.timestamp = sighting.timeS;
    message.airborne = sighting.airborne;
    message.expiry = updateCount + playDelayTicks;
    return message;
}

TrackPoint airPoint(LatLon position, double altFt, double gsKt, std::int32_t dueTick) {
    TrackPoint point;
    point.lat = position.lat;
    point.lon = position.lon;
    point.altFt = altFt;
    point.gsKt = gsKt;
    point.tasKt = gsKt;
    point.dueTick = dueTick;
    point.airborne = true;
    return point;
}

TrackPoint groundPoint(LatLon position, double gsKt, std::int32_t dueTick) {
    TrackPoint point = airPoint(position, 0.0, gsKt, dueTick);
    point.airborne = false;
    return point;
}

LatLon offset(LatLon from, double bearingDeg, double metres) {
    return gf_destination(from, bearingDeg * radPerDeg, metres * nmPerMetre * feetPerNm);
}

EngineWorld::EngineWorld() {
    resetAll();
    reserveTables();
    seedRandom(1);
    std::vector<ReferenceModel> models;
    for (const TestModel& entry : testModels) {
        models.push_back({std::string(entry.model), entry.category, entry.spanM});
        addLiveryTitle("ZZZ", entry.model, std::string(entry.model) + " generic");
    }
    setReferenceForTest(models);
    setTick(firstTick);
}

EngineWorld::~EngineWorld() {
    resetAll();
}

void EngineWorld::setTick(std::int32_t tick) {
    updateCount = tick;
}

void EngineWorld::placeUser(LatLon position, bool onGround, double altitudeFt, double headingDeg) {
    userData.latitude = position.lat;
    userData.longitude = position.lon;
    userData.altitudeFt = altitudeFt;
    userData.heading = headingDeg * radPerDeg;
    userOnGround = onGround;
    userGroundKnown = true;
}

void EngineWorld::openAirport(double elevationFt) {
    setParkAirport(ParkAirportFacts{"LSZH", "Zurich", airportPlace, elevationFt});
}

void EngineWorld::closeAirport() {
    setParkAirport(std::nullopt);
}

ParkPos& EngineWorld::addStand(std::string_view id, LatLon position, double radiusM) {
    constexpr std::size_t room = 64;
    auto& stands = parkPositions();
    stands.reserve(room);
    ParkPos stand;
    stand.id = id;
    stand.latitude = position.lat;
    stand.longitude = position.lon;
    stand.radius = radiusM * nmPerMetre;
    stand.sid = static_cast<std::uint32_t>(stands.size()) + 1;
    stands.push_back(stand);
    return stands.back();
}

void EngineWorld::clearStands() {
    parkPositions().clear();
}

LiveAc& EngineWorld::addLive(std::string_view callsign, AcState state, AcPhase phase,
                             std::vector<TrackPoint> points, std::string_view type) {
    constexpr std::uint32_t firstObjectBelow = 20000;
    LiveAc ac;
    ac.callsign = callsign;
    ac.primaryCallsign = callsign;
    ac.acType = type;
    setCategoryRates(ac, gf_category(type));
    ac.halfSpanNm = gf_halfWingSpan(type);
    ac.hexid = nextLiveHexid_++;
    ac.state = state;
    ac.phase = phase;
    ac.objectId = state == AcState::Buffered || state == AcState::Requested ? 0 : ac.hexid - firstObjectBelow;
    if (!points.empty()) {
        const TrackPoint& front = points.front();
        ac.simState.lat = front.lat;
        ac.simState.lon = front.lon;
        ac.simState.altFt = front.altFt;
        ac.onGround = !front.airborne;
    }
    ac.track = std::move(points);
    liveAcs.push_back(std::move(ac));
    return liveAcs.back();
}

StaticAc& EngineWorld::addStatic(std::string_view callsign, AcState state, const ParkPos& stand,
                                 std::string_view type) {
    constexpr std::uint32_t firstObject = 5000;
    StaticAc ac;
    ac.callsign = callsign;
    ac.primaryCallsign = callsign.substr(0, callsign.find('*'));
    ac.acType = type;
    ac.category = gf_category(type);
    ac.halfSpanNm = gf_halfWingSpan(type);
    ac.hexid = nextStaticHexid_++;
    ac.state = state;
    ac.objectId = state == AcState::Requested ? 0 : firstObject + ac.hexid;
    ac.sid = stand.sid;
    ac.standLat = stand.latitude;
    ac.standLon = stand.longitude;
    staticAcs.push_back(std::move(ac));
    return staticAcs.back();
}

} // namespace kst::test
