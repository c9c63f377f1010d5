#include "bench/realism/play.h"

#include "bench/realism/legwatch.h"
#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/categories.h"
#include "engine/tables.h"
#include "feed/readers.h"
#include "parking/stands.h"
#include "scenario/scenarioworld.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace kst::bench {

namespace {

constexpr double userAltFt = 45000.0;
constexpr double flightRangeNm = 100.0;
constexpr double sceneRangeNm = 30.0;
constexpr double fastestUserKt = 800.0;
constexpr double afterwardsS = 130.0; ///< the delay, and the time that an aircraft coasts or goes on to park
constexpr double chunkS = 1.0;
constexpr int passesPerFrame = 2;
constexpr int passesPerSceneSample = 10;
/// The simulator itself moves a new object until it is taken over; the step back to its place is not flown.
constexpr double appearingS = 0.2;
constexpr double fastestTurnInRates = 3.0;

constexpr Reason firstRefusal = Reason::FellSilentInBuffer;
constexpr auto refusalCount =
    static_cast<std::size_t>(Reason::NeighbourStandTaken) - static_cast<std::size_t>(firstRefusal) + 1;

Stage stageOf(const LiveAc& ac) {
    if (ac.phase == AcPhase::TakeOff || (ac.onGround && ac.departing)) {
        return Stage::TakeOff;
    }
    if (ac.onGround) {
        return ac.rollingOut ? Stage::Rollout : Stage::Ground;
    }
    if (ac.flareStage > 0) {
        return Stage::Flare;
    }
    return ac.landing ? Stage::Approach : Stage::Air;
}

/// One target, watched pass by pass.
class AircraftWatch {
public:
    AircraftWatch(std::uint32_t hexid, bool groundOnly) : groundOnly_(groundOnly) { played.hexid = hexid; }

    /// After each pass; no aircraft where the program knows none. `sampled`: a sample is due.
    void pass(const LiveAc* ac, test::ScenarioWorld& world, bool sampled) {
        legs_.pass(ac, world.seconds());
        buffered_ = ac != nullptr ? ac->state == AcState::Buffered : buffered_;
        if (ac == nullptr) {
            leaving_ = false;
            return;
        }
        if (ac->state == AcState::Removing && !leaving_) {
            played.leavings.push_back({world.seconds(), ac->reason, ac->phase});
        }
        leaving_ = ac->state == AcState::Removing;
        played.category = ac->category;
        played.lastReason = ac->reason;
        if (ac->state != AcState::Live) {
            onGround_ = false;
            return;
        }
        played.shown = true;
        watchTurn(*ac);
        if (sampled && (ac->onGround || !groundOnly_)) {
            sample(*ac, world);
        }
    }

    /// A target that the buffer refuses is gone in the same pass; only the count tells why.
    void noteRefusal(Reason reason) {
        if (buffered_ && liveByHexid(played.hexid) == nullptr) {
            played.refused = reason;
            buffered_ = false;
        }
    }

    PlayedAircraft played;

private:
    void watchTurn(const LiveAc& ac) {
        if (ac.onGround && onGround_) {
            turn_ = std::max(turn_, std::abs(gf_angleDiff(heading_, ac.simState.heading)));
        }
        heading_ = ac.simState.heading;
        onGround_ = ac.onGround;
    }

    void sample(const LiveAc& ac, test::ScenarioWorld& world) {
        const standin::Aircraft* object = world.simulator().find(ac.objectId);
        if (object == nullptr) {
            return;
        }
        if (ac.objectId != objectId_) {
            objectId_ = ac.objectId;
            settled_ = world.seconds() + appearingS;
        }
        const double turnDegS = std::exchange(turn_, 0.0) * degPerRad * ticksPerSecond;
        if (world.seconds() < settled_) {
            return;
        }
        Sample now;
        now.at = world.seconds();
        now.position = {object->place.lat, object->place.lon};
        now.altFt = object->place.altFt;
        now.pitch = object->place.pitchRad;
        now.bank = object->place.bankRad;
        now.heading = object->place.headingRad;
        now.wheelsFt =
            standin::aboveGroundFt(*object, world.simulator().terrain()) - object->sizes.cgToGroundFt;
        now.speedKt = object->airspeedKt;
        now.objectId = ac.objectId;
        now.stage = stageOf(ac);
        now.onGround = world.simulator().onGround(*object);
        now.coasting = ac.reckonLeft > 0;
        now.reason = ac.reason;
        now.phase = ac.phase;
        now.sid = ac.sid;
        now.turnShare = static_cast<float>(turnDegS / fastestGroundTurn(ac.category));
        legs_.describe(now);
        played.flown.push_back(now);
        if (!groundOnly_) {
            played.ideal.push_back(legs_.ideal(now));
        }
    }

    bool groundOnly_;
    LegWatch legs_;
    std::uint32_t objectId_ = 0;
    double settled_ = 0.0;
    double heading_ = 0.0;
    double turn_ = 0.0; ///< radians, the largest in one tick since the last sample
    bool onGround_ = false;
    bool leaving_ = false;
    bool buffered_ = false;
};

/// What the operator and the scenery would have set for this recording.
class RecordingWorld {
public:
    /// A scene with stands, a flight without.
    RecordingWorld(const Recording& recording, const std::filesystem::path& stands)
        : recording_(recording), scene_(!stands.empty()),
          world_({.user = scene_ ? recording.airports.front().position : recording.reports.front().position,
                  .userAltFt = userAltFt,
                  .rangeNm = scene_ ? sceneRangeNm : flightRangeNm,
                  .keepHistory = false}) {
        LIGHT_AIRCRAFT.set(true);
        HELICOPTERS.set(true);
        HIGH_PERF_AIRCRAFT.set(true);
        qnh = recording.qnh;
        if (scene_) {
            const Airport& airport = recording.airports.front();
            world_.openAirport(airport.code, airport.position, airport.elevationFt);
            world_.loadStands(airport.code, stands);
        } else {
            prepareFlight();
        }
        for (const standin::TrafficReport& report : recording.reports) {
            watches_.try_emplace(report.hexid, report.hexid, scene_);
        }
        world_.feed(std::make_unique<test::DrawnTraffic>(recording.reports));
    }

    PlayedScene play() {
        const double end = recording_.reports.back().at + afterwardsS;
        while (world_.seconds() < end && !world_.exit()) {
            world_.play(chunkS, [this] { look(); });
            const std::vector<Sample>& flown = watches_.begin()->second.played.flown;
            if (!scene_ && !flown.empty()) {
                followAirport(flown.back().position);
            }
        }
        for (const standin::TrafficReport& report : world_.sent()) {
            PlayedAircraft& aircraft = watches_.at(report.hexid).played;
            aircraft.callsign = report.callsign.empty() ? report.registration : report.callsign;
            aircraft.type = report.type;
            aircraft.halfSpanM = gf_halfWingSpan(report.type) * metresPerNm;
            aircraft.line.push_back({report.at, report.position, report.altFt, report.gsKt, report.onGround});
        }
        PlayedScene played{{}, parkPositions(), world_.seconds()};
        for (auto& [hexid, watch] : watches_) {
            played.aircraft.push_back(std::move(watch.played));
        }
        return played;
    }

private:
    void prepareFlight() {
        // The user follows the flight: nothing keeps clear of one who is not there.
        COLLISION_USER_AIR.set(false);
        double lowestFt = 0.0;
        standin::Terrain& terrain = world_.simulator().terrain();
        for (const Airport& airport : recording_.airports) {
            terrain.addAirport(airport.position.lat, airport.position.lon, airport.elevationFt);
            lowestFt = std::min(lowestFt, airport.elevationFt);
        }
        // Away from its airports the recording does not tell how high the ground is.
        terrain.setHills(lowestFt, 0.0);
        followAirport(recording_.reports.front().position);
        letUserFollow();
    }

    void followAirport(LatLon place) {
        const Airport* airport = nearestAirport(recording_.airports, place);
        const auto open = parkAirport();
        // The user follows high above: out of the airport's sight, were it not for this.
        AIRPORT_HEIGHT.set(AIRPORT_HEIGHT.maximum());
        AIRPORT_RANGE.set(AIRPORT_RANGE.maximum());
        if (airport != nullptr && (!open || airport->code != open->code)) {
            setParkAirport(
                ParkAirportFacts{airport->code, airport->code, airport->position, airport->elevationFt});
            setFieldElevation(airport->elevationFt);
        }
    }

    /// The user flies high above the flight, so that it stays within range of the simulator's reports.
    void letUserFollow() {
        std::vector<standin::UserPoint> way;
        for (const standin::TrafficReport& report : recording_.reports) {
            const double at = report.at + tool::playDelaySeconds;
            const LatLon last = way.empty() ? report.position : LatLon{way.back().lat, way.back().lon};
            const double hours = way.empty() ? 1.0 : (at - way.back().atSeconds) / tool::secondsPerHour;
            if (tool::metresBetween(last, report.position) <= fastestUserKt * metresPerNm * hours) {
                way.push_back({at, report.position.lat, report.position.lon, userAltFt, false});
            }
        }
        world_.simulator().userMotion().follow(std::move(way));
    }

    void look() {
        ++passes_;
        noteRefusals();
        const bool sampled = passes_ % (scene_ ? passesPerSceneSample : passesPerFrame) == 0;
        for (auto& [hexid, watch] : watches_) {
            watch.pass(liveByHexid(hexid), world_, sampled);
        }
    }

    void noteRefusals() {
        Reason risen = Reason::None;
        for (std::size_t i = 0; i < refusals_.size(); ++i) {
            const auto reason = static_cast<Reason>(static_cast<int>(firstRefusal) + static_cast<int>(i));
            const std::uint64_t total = reasonTotal(reason);
            risen = total > refusals_[i] ? reason : risen;
            refusals_[i] = total;
        }
        if (risen != Reason::None) {
            for (auto& [hexid, watch] : watches_) {
                watch.noteRefusal(risen);
            }
        }
    }

    const Recording& recording_;
    bool scene_;
    test::ScenarioWorld world_;
    std::map<std::uint32_t, AircraftWatch> watches_;
    std::array<std::uint64_t, refusalCount> refusals_ = {};
    std::int64_t passes_ = 0;
};

} // namespace

PlayedAircraft playFlight(const Recording& flight) {
    return std::move(RecordingWorld(flight, {}).play().aircraft.front());
}

PlayedScene playScene(const Recording& scene, const std::filesystem::path& stands) {
    return RecordingWorld(scene, stands).play();
}

double fastestGroundTurn(Category category) {
    return categoryRates(category).baseTurnRateDeg * ticksPerSecond * fastestTurnInRates;
}

} // namespace kst::bench
