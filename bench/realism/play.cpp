#include "bench/realism/play.h"

#include "bench/realism/legwatch.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/prediction.h"
#include "engine/tables.h"
#include "feed/readers.h"
#include "scenario/scenarioworld.h"

#include <algorithm>
#include <cmath>

namespace kst::bench {

namespace {

constexpr double userAltFt = 45000.0;
constexpr double rangeNm = 100.0;
constexpr double fastestUserKt = 800.0;
constexpr double afterwardsS = 130.0; ///< the delay and the time that an aircraft coasts
constexpr double chunkS = 1.0;
/// The simulator itself moves a new object until it is taken over; the step back to its place is not flown.
constexpr double appearingS = 0.2;

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

/// What the operator and the scenery would have set for this flight.
class FlightWorld {
public:
    explicit FlightWorld(const RecordedFlight& flight)
        : flight_(flight), world_({.user = flight.reports.front().position,
                                   .userAltFt = userAltFt,
                                   .rangeNm = rangeNm,
                                   .keepHistory = false}) {
        LIGHT_AIRCRAFT.set(true);
        HELICOPTERS.set(true);
        // The user follows the flight: nothing keeps clear of one who is not there.
        COLLISION_USER_AIR.set(false);
        HIGH_PERF_AIRCRAFT.set(true);
        qnh = flight.qnh;
        double lowestFt = 0.0;
        for (const Airport& airport : flight.airports) {
            world_.simulator().terrain().addAirport(airport.position.lat, airport.position.lon,
                                                    airport.elevationFt);
            lowestFt = std::min(lowestFt, airport.elevationFt);
        }
        // Away from its airports the recording does not tell how high the ground is.
        world_.simulator().terrain().setHills(lowestFt, 0.0);
        followAirport(flight.reports.front().position);
        letUserFollow();
        world_.feed(std::make_unique<test::DrawnTraffic>(flight.reports));
    }

    PlayedFlight play() {
        began_ = world_.seconds();
        const std::uint64_t silent = reasonTotal(Reason::FellSilentInBuffer);
        PlayedFlight played;
        const double end = flight_.reports.back().at + afterwardsS;
        while (world_.seconds() - began_ < end && !world_.exit()) {
            world_.play(chunkS, [&] { sample(played); });
            if (!played.flown.empty()) {
                followAirport(played.flown.back().position);
            }
        }
        for (const standin::TrafficReport& report : world_.sent()) {
            played.line.push_back({report.at, report.position, report.altFt, report.gsKt, report.onGround});
        }
        if (!played.shown && played.lastReason == Reason::None &&
            reasonTotal(Reason::FellSilentInBuffer) != silent) {
            played.lastReason = Reason::FellSilentInBuffer;
        }
        playNaively(played);
        return played;
    }

private:
    void followAirport(LatLon place) {
        const Airport* airport = nearestAirport(flight_.airports, place);
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
        for (const standin::TrafficReport& report : flight_.reports) {
            const double at = report.at + tool::playDelaySeconds;
            const LatLon last = way.empty() ? report.position : LatLon{way.back().lat, way.back().lon};
            const double hours = way.empty() ? 1.0 : (at - way.back().atSeconds) / tool::secondsPerHour;
            if (tool::metresBetween(last, report.position) <= fastestUserKt * metresPerNm * hours) {
                way.push_back({at, report.position.lat, report.position.lon, userAltFt, false});
            }
        }
        world_.simulator().userMotion().follow(std::move(way));
    }

    void sample(PlayedFlight& played) {
        legs_.pass(liveAcs.empty() ? nullptr : &liveAcs.front(), world_.seconds());
        secondPass_ = !secondPass_;
        if (secondPass_ || liveAcs.empty()) {
            return;
        }
        const LiveAc& ac = liveAcs.front();
        played.lastReason = ac.reason;
        played.category = ac.category;
        if (ac.state != AcState::Live) {
            return;
        }
        const standin::Aircraft* object = world_.simulator().find(ac.objectId);
        if (object == nullptr) {
            return;
        }
        played.shown = true;
        if (ac.objectId != objectId_) {
            objectId_ = ac.objectId;
            settled_ = world_.seconds() + appearingS;
        }
        if (world_.seconds() < settled_) {
            return;
        }
        cgFt_ = object->sizes.cgToGroundFt;
        Sample now;
        now.at = world_.seconds();
        now.position = {object->place.lat, object->place.lon};
        now.altFt = object->place.altFt;
        now.pitch = object->place.pitchRad;
        now.bank = object->place.bankRad;
        now.heading = object->place.headingRad;
        now.wheelsFt = standin::aboveGroundFt(*object, world_.simulator().terrain()) - cgFt_;
        now.speedKt = object->airspeedKt;
        now.objectId = ac.objectId;
        now.stage = stageOf(ac);
        now.onGround = world_.simulator().onGround(*object);
        now.coasting = ac.reckonLeft > 0;
        now.reason = ac.reason;
        legs_.describe(now);
        played.flown.push_back(now);
        played.timed.push_back(legs_.timed(now));
    }

    /// Straight lines between the points, on the ground on the wheels, the nose along the line.
    void playNaively(PlayedFlight& played) {
        if (played.line.empty()) {
            return;
        }
        const standin::Terrain& terrain = world_.simulator().terrain();
        std::vector<tool::TrackPoint> line = played.line;
        for (tool::TrackPoint& point : line) {
            if (point.onGround) {
                point.altFt = terrain.heightFt(point.position.lat, point.position.lon) + cgFt_;
            }
        }
        std::size_t next = 1;
        double heading = played.flown.empty() ? 0.0 : played.flown.front().heading;
        played.naive.reserve(played.flown.size());
        for (const Sample& flown : played.flown) {
            const double time = flown.at - tool::playDelaySeconds;
            while (next + 1 < line.size() && line[next].time <= time) {
                ++next;
            }
            const tool::TrackPoint place = tool::pointAt(line, time);
            Sample naive = flown;
            naive.position = place.position;
            naive.altFt = place.altFt;
            naive.speedKt = place.gsKt;
            naive.bank = 0.0;
            if (next < line.size()) {
                const tool::TrackPoint& a = line[next - 1];
                const tool::TrackPoint& b = line[next];
                const double minutes = std::max(b.time - a.time, 1.0) / 60.0;
                naive.pitch = climbLawPitch((b.altFt - a.altFt) / minutes);
                if (a.position != b.position) {
                    heading = gf_bearing(a.position, b.position);
                }
            }
            naive.heading = heading;
            naive.wheelsFt = naive.altFt - terrain.heightFt(place.position.lat, place.position.lon) - cgFt_;
            naive.onGround = naive.wheelsFt <= standin::wheelPlayFt;
            played.naive.push_back(naive);
        }
    }

    const RecordedFlight& flight_;
    test::ScenarioWorld world_;
    double began_ = 0.0;
    std::uint32_t objectId_ = 0;
    double settled_ = 0.0;
    double cgFt_ = 0.0;
    LegWatch legs_;
    bool secondPass_ = false;
};

} // namespace

PlayedFlight playFlight(const RecordedFlight& flight) {
    return FlightWorld(flight).play();
}

} // namespace kst::bench
